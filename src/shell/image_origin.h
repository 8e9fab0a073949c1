// Where the loaded image comes from: the one value that the titles show, that decides whether Save
// needs to ask for a name, and what a project names as its program file. User-interface thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

enum class ImageKind { none, file, files, readBack, begun }; // the last: by an edit of an empty one

struct ImageOrigin {
    ImageKind kind = ImageKind::none;
    bool changed = false; // since it was loaded, saved or read
    std::string path;     // in full: of the file, or of the first of several
    int merged = 0;       // how many files were added to it
    int fileType = 0;     // with which Save writes
    // Last-write time of the file when it was opened or saved. Kept with the path when the file
    // could not be loaded again, so that its next change is noticed.
    std::optional<int64_t> time;
};

// Makes it the session's and shows it.
void ORIGIN_Set(const ImageOrigin& origin);
// The image was edited.
void ORIGIN_MarkChanged();
// Bytes came into an image that was that of nothing: changed, and Save asks for a name.
void ORIGIN_Begin();
// "/bench/app.hex", "/bench/app.hex + 1", "Read back", "New program", with " *" behind it when it
// was changed; empty when nothing is loaded.
std::string ORIGIN_Text();
// The file that a project names, empty when the image is that of none or holds nothing.
std::string ORIGIN_ProgramFile();
// Sets the title of the frame: program, project, origin of the image.
void ORIGIN_ShowTitle();
