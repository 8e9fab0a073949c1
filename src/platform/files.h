// Files as the program uses them: read whole or in pieces, replaced in one step, found beside the
// program. Failures come back with the system's reason; nothing here reports to the user.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct stat;
class SecondBuffer;

enum class FileStatus { ok, notFound, failed };

struct FileResult {
    FileStatus status = FileStatus::ok;
    std::string reason; // the system's text for a failure, e.g. "Permission denied"
    bool ok() const { return status == FileStatus::ok; }
};

// The texts that are read whole (descriptions, projects, settings) are a few kB; anything beyond
// this is another file, taken for one by mistake.
inline constexpr size_t kLargestText = 1 << 20; // bytes

// What changes when a file gets other contents, whether it is written to or replaced.
struct FileStamp {
    uint64_t size = 0; // bytes
    int64_t modifiedNs = 0;
    uint64_t number = 0; // of the file in its file system
    bool operator==(const FileStamp&) const = default;
};
// None where there is no regular file.
std::optional<FileStamp> FILES_Stamp(const std::filesystem::path& path);

// A file open for reading in pieces. Move-only; closes itself. A directory counts as a failure. A
// pipe whose writer is silent is waited for until the program is to end (PROCESS_IsEnding).
class FileReader {
public:
    FileReader() = default;
    FileReader(FileReader&& other) noexcept;
    FileReader& operator=(FileReader&& other) noexcept;
    ~FileReader();
    [[nodiscard]] FileResult open(const std::filesystem::path& path);
    // Bytes read, 0 at the end of the file, -1 on a failure(), which is that of the last read.
    [[nodiscard]] ptrdiff_t read(std::span<char> buffer);
    FileResult failure() const;
    uint64_t size() const; // bytes, as the system reported it at open

private:
    int descriptor_ = -1;
    int error_ = 0;
    uint64_t size_ = 0;
};

// Who may read and write what a file replacer leaves: as before, or the owner alone, where the file
// system has such permissions.
enum class FileAccess { usual, ownerOnly };

// A file that replaces `path` when it is complete: commit() puts it in the old one's place (the
// target of a symbolic link is what is replaced), on the disk when it returns. Without a commit
// nothing changes at `path` and nothing is left. Owner and permissions are kept; a file with
// further hard links, one whose owner cannot be kept and one in a folder that may not be written
// are written over at the commit instead, with the room for it made before. A file that may not be
// written is not replaced either. A device, a pipe and what standard output leads to are written to
// directly, as they take it; a pipe without a reader is waited for until the program is to end.
class FileReplacer {
public:
    FileReplacer();
    FileReplacer(const FileReplacer&) = delete;
    FileReplacer& operator=(const FileReplacer&) = delete;
    ~FileReplacer();
    [[nodiscard]] FileResult open(const std::filesystem::path& path,
                                  FileAccess access = FileAccess::usual);
    [[nodiscard]] FileResult write(std::string_view text);
    // The same for the pieces of a text that may be long: a thread of its own writes it while the
    // next one is made. `text` is left with other contents, and a failure may come with a later
    // piece or the commit.
    [[nodiscard]] FileResult pass(std::string& text);
    [[nodiscard]] FileResult commit();

private:
    int openTemporary();
    FileResult openInPlace();
    bool passesFor(const struct stat& old) const;
    FileResult takePlace();
    void beginWriteBack(size_t count);

    uint64_t written_ = 0;
    uint64_t onItsWay_ = 0;           // to the disk
    int descriptor_ = -1;             // what is written to
    int inPlace_ = -1;                // the file that gets it all at the commit
    bool direct_ = false;             // there is no commit
    std::filesystem::path temporary_; // empty: what is written has no name
    std::filesystem::path target_;
    unsigned permissions_ = 0;
    FileResult passed_;                        // of the pieces so far
    std::unique_ptr<SecondBuffer> background_; // uses all of the above
};

// A log: created empty or opened as it stands, appended to line by line, readable by others
// meanwhile. A pipe that takes no more is a failure, not a wait. Not open: writes do nothing. Its
// results may be ignored: what cannot be logged can be told nowhere. Closing is left to the
// destructor.
class AppendFile {
public:
    AppendFile() = default;
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;
    ~AppendFile();
    FileResult create(const std::filesystem::path& path);
    FileResult open(const std::filesystem::path& path); // keeps what it holds
    FileResult write(std::string_view text);            // one write call
    FileResult flush();                                 // to the disk
    void close();
    bool isOpen() const { return descriptor_ >= 0; }

private:
    FileResult openWith(const std::filesystem::path& path, int flag);

    int descriptor_ = -1;
};

// Reads the whole file into `text`, NUL bytes included; one of more than `most` bytes is refused,
// at once where the system knows its size.
[[nodiscard]] FileResult FILES_ReadAll(const std::filesystem::path& path, std::string& text,
                                       size_t most = kLargestText);
// Replaces the file at `path` by `text` in one step (FileReplacer); one that holds it already is
// left alone, as replacing a file makes the system wait for the disk.
[[nodiscard]] FileResult FILES_Replace(const std::filesystem::path& path, std::string_view text,
                                       FileAccess access = FileAccess::usual);
bool FILES_Exists(const std::filesystem::path& path);
// Whether there is a device or a pipe, which has no contents that would be there another time.
bool FILES_IsStream(const std::filesystem::path& path);
// Keeps a file under another name, replacing what has that name.
[[nodiscard]] FileResult FILES_Rename(const std::filesystem::path& from,
                                      const std::filesystem::path& to);
// The last-write time in nanoseconds; none when the file cannot be looked at.
std::optional<int64_t> FILES_WriteTime(const std::filesystem::path& path);
// The entries of a folder whose name ends in `extension` (".dev"), sorted by name; empty when
// the folder is missing or holds none.
std::vector<std::filesystem::path> FILES_List(const std::filesystem::path& folder,
                                              std::string_view extension);

// The folder of the program's own file, ending in a separator.
std::string FILES_ProgramFolder();
// The program's own file name without folder and extension ("calvorin").
std::string FILES_ProgramBaseName();
// The path of a file beside the program, named like it, e.g. "ini" gives .../calvorin.ini.
std::string FILES_BesideProgram(std::string_view extension);
// Lets tests put the program's own file elsewhere; an empty path restores the true one.
void FILES_SetProgramPath(const std::filesystem::path& path);
// Lets tests have a say in front of every call to the system on a file: what `hook` returns other
// than 0 is the errno that the call fails with. Set while no other thread uses files.
void FILES_SetCallHook(std::function<int()> hook);
// The user's configuration folder of the program (created on demand by whoever writes there).
std::filesystem::path FILES_UserConfigFolder();

// Where the program keeps what it writes, and looks for what the user adds to it: all of it in the
// program's folder where that can be written and is no installation (a folder lib/calvorin with a
// link to the program in bin/), else in the user's folders for such things.
enum class Kept {
    settings, // calvorin.ini
    state,    // default project and logs
    data,     // Device/ and RamImage/ of the user's own
};
bool FILES_IsPortable();
// Ends in a separator; the folder need not be there.
std::string FILES_KeptFolder(Kept what);
// Makes the folders of settings and state where they are missing. Failures show when files are
// written there.
void FILES_MakeKeptFolders();
// The path of a settings file or log: in the folder of its kind, named like the program.
std::string FILES_KeptFile(Kept what, std::string_view extension);
// The path of a file of the folders Device/ and RamImage/: the user's own where there is one, else
// the program's.
std::string FILES_SharedFile(const std::string& name);
// Those of a folder whose name ends in `extension`, the user's in place of the program's of the
// same name; sorted by name.
std::vector<std::filesystem::path> FILES_ListShared(const std::string& folder,
                                                    std::string_view extension);
