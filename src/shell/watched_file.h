// A file that somebody else writes, in whatever way: in pieces, emptied first, replaced by another
// one, behind a symbolic link. Tells once a change when it is whole. User-interface thread; nothing
// here waits or reports.
#pragma once

#include "platform/clock.h"
#include "platform/files.h"

#include <optional>
#include <string>

enum class FileLook {
    same,     // as it was told last
    changing, // it may not be whole yet
    whole,
    cutOff, // for long without the end record that it had before
    gone,   // for long, or what is there is no file
};

class WatchedFile {
public:
    // What is there now is told by the first looks.
    explicit WatchedFile(std::string path) : path_(std::move(path)) {}

    const std::string& path() const { return path_; }
    // What is there now has been read and is no change.
    void take();
    // To be called some times a second. Each of the last three once a change.
    FileLook look();
    // Whether the file is still what was told last: what was read meanwhile is of one piece.
    bool isAsTold() const;

private:
    struct Sight {
        bool isKnown = true;
        std::optional<FileStamp> stamp; // none: there is no file
        bool operator==(const Sight&) const = default;
    };

    Sight sight() const { return {true, FILES_Stamp(path_)}; }
    FileLook judge(int64_t stillMs);

    std::string path_;
    Sight told_{false, {}};
    Sight seen_{false, {}};
    Moment since_;               // it has looked like that
    std::optional<bool> hasEnd_; // what was seen, once somebody has looked
    bool hadEnd_ = false;        // what was whole last
};
