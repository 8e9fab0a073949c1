#include "shell/program_files.h"

#include "data/hexdata.h"
#include "data/program_file.h"
#include "data/program_format.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/mru.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/edit_history.h"
#include "shell/front_end.h"
#include "shell/image_origin.h"
#include "shell/session.h"
#include "shell/summary.h"

#include <filesystem>

namespace {

std::vector<FileFilter> openFilters() {
    std::string wide;
    std::string exact;
    for (const ProgramFormat& format : PROGRAMFORMAT_All()) {
        wide += format.readPattern + ";";
        exact += "*" + format.suffix + ";";
    }
    return {{"Target program files (" + wide + exact + ")", wide + exact},
            {"All files (*.*)", "*.*"}};
}

// One a format, in their order.
std::vector<FileFilter> saveFilters() {
    std::vector<FileFilter> filters;
    for (const ProgramFormat& format : PROGRAMFORMAT_All()) {
        const std::string pattern = "*" + format.suffix;
        filters.push_back({format.name + " (" + pattern + ")", pattern});
    }
    return filters;
}

// The current path is kept in full: the default project names it for a run in another folder.
std::string fullPath(const std::string& path) {
    std::error_code none;
    return std::filesystem::absolute(path, none).lexically_normal().string();
}

// With the dump open meanwhile: closing the last view of the data would unload it.
void reopenHexList() {
    FrontEnd& frontEnd = FRONTEND_Get();
    const bool wasOpen = frontEnd.isViewOpen(View::hexList);
    if (wasOpen) {
        frontEnd.closeView(View::hexList);
    }
    if (wasOpen || SESSION_Get().showHexListView != 0) {
        frontEnd.openView(View::hexList);
    }
}

void imageIsOfFile(const std::string& path, int type) {
    SESSION_Get().programPath = fullPath(path);
    ORIGIN_Set({ImageKind::file, false, fullPath(path), 0, type, FILES_WriteTime(path)});
}

// After a file that could not be read to its end; one that could not be opened leaves the image.
void forgetLostImage() {
    ImageOrigin image = SESSION_Get().image;
    if (HEXDATA_IsEmpty() && image.kind != ImageKind::none) {
        image.kind = ImageKind::none;
        ORIGIN_Set(image);
    }
}

// A file that could not be read to its end leaves an empty image: what was there before can be had
// back.
bool load(const std::string& path) {
    const EditStep step("Open");
    if (PROGRAMFILE_Load(path)) {
        return true;
    }
    forgetLostImage();
    return false;
}

} // namespace

bool PROGRAM_Open(const std::string& path) {
    LOG_Add(formatText("Opening %s", path.c_str()));
    if (!load(path)) {
        SUMMARY_Refresh();
        FRONTEND_Get().updateMenu();
        return false;
    }
    HISTORY_Clear();
    SESSION_Get().loaded = true;
    ACCOUNT_File(path);
    imageIsOfFile(path, HEXDATA_GetFileType());
    SUMMARY_Refresh();
    FRONTEND_Get().openView(View::hexDump);
    reopenHexList();
    FRONTEND_Get().openView(View::hexDump); // in front
    FRONTEND_Get().updateMenu();
    return true;
}

bool PROGRAM_Reload(const std::string& path, FileLook look) {
    if (look == FileLook::cutOff) {
        ERROR_Out(nullptr, path + " is cut off: the end record that it had before is missing", 1);
        return false;
    }
    return PROGRAM_Open(path);
}

bool PROGRAM_Merge(const std::string& path) {
    LOG_Add(formatText("Merging %s", path.c_str()));
    Session& session = SESSION_Get();
    const bool wasEmpty = HEXDATA_IsEmpty();
    const bool found = FILES_Exists(path);
    const EditStep step("Merge");
    session.loaded = PROGRAMFILE_Merge(path);
    const bool merged = session.loaded && found;
    if (merged) {
        ACCOUNT_File(path);
    }
    if (!merged) {
        forgetLostImage();
    } else if (wasEmpty) {
        imageIsOfFile(path, HEXDATA_GetFileType());
    } else {
        ImageOrigin image = session.image;
        image.kind = image.kind == ImageKind::file ? ImageKind::files : image.kind;
        image.changed = true;
        ++image.merged;
        session.programPath = fullPath(path);
        ORIGIN_Set(image);
    }
    SUMMARY_Refresh();
    FRONTEND_Get().updateMenu();
    return merged;
}

bool PROGRAM_Save(const std::string& path, int type) {
    LOG_Add(formatText("Saving %s", path.c_str()));
    if (!PROGRAMFILE_Save(path, type)) {
        return false;
    }
    const ImageOrigin before = SESSION_Get().image;
    imageIsOfFile(path, type);
    HISTORY_Saved(before);
    return true;
}

void PROGRAM_Close() {
    FRONTEND_Get().closeView(View::hexList);
    FRONTEND_Get().closeView(View::hexDump);
    PROGRAM_Unload();
}

void PROGRAM_Unload() {
    HEXDATA_Clear();
    HISTORY_Clear();
    SESSION_Get().loaded = false;
    ORIGIN_Set({});
    SUMMARY_Refresh();
    FRONTEND_Get().updateMenu();
}

bool PROGRAM_MayLoseChanges() {
    if (!SESSION_Get().image.changed || RUN_IsUnattended() || !FRONTEND_Get().hasWindows) {
        return true;
    }
    return ERROR_Ask(nullptr, "The program has changes that are not saved.\nGo on and lose them?",
                     "Unsaved changes", BOX_OK_CANCEL | BOX_DEFAULT_SECOND) == ANSWER_OK;
}

std::optional<std::string> PROGRAM_AskForFile(const std::string& title) {
    const auto choice =
        FRONTEND_Get().chooseFile({false, title, openFilters(), SESSION_Get().programPath});
    return choice ? std::optional(choice->path) : std::nullopt;
}

void PROGRAM_OpenRecent(const std::string& path) {
    if (PROGRAM_MayLoseChanges() && PROGRAM_Open(path)) {
        MRU_Add(MRU_PROGRAMS, path);
    }
}

void PROGRAM_OpenDialog() {
    if (const auto path = PROGRAM_AskForFile("Open file")) {
        PROGRAM_OpenRecent(*path);
    }
}

void PROGRAM_CloseCurrent() {
    if (PROGRAM_MayLoseChanges()) {
        PROGRAM_Close();
    }
}

void PROGRAM_MergeDialog() {
    const auto path = PROGRAM_AskForFile("Open file");
    if (path && PROGRAM_Merge(*path)) {
        MRU_Add(MRU_PROGRAMS, *path);
    }
}

void PROGRAM_SaveCurrent() {
    const ImageOrigin image = SESSION_Get().image;
    if (image.kind == ImageKind::file) {
        PROGRAM_Save(image.path, image.fileType);
    } else if (RUN_IsUnattended()) {
        ERROR_Out(nullptr, "The image is not that of one file, Save needs a name", 1);
    } else {
        PROGRAM_SaveAsDialog();
    }
}

void PROGRAM_SaveAsDialog() {
    const auto choice =
        FRONTEND_Get().chooseFile({true, "Save file", saveFilters(), SESSION_Get().programPath});
    if (choice && PROGRAM_Save(choice->path, PROGRAMFORMAT_All()[choice->filter].type)) {
        MRU_Add(MRU_PROGRAMS, choice->path);
    }
}

std::string PROGRAM_CurrentFile() {
    const ImageOrigin& image = SESSION_Get().image;
    const bool isOneFile = image.kind == ImageKind::file || image.kind == ImageKind::none;
    return SESSION_Get().loaded && isOneFile ? image.path : "";
}

void PROGRAM_CheckChanged() {
    ImageOrigin& image = SESSION_Get().image;
    if (PROGRAM_CurrentFile().empty()) {
        return;
    }
    const auto time = FILES_WriteTime(image.path);
    if (!time || time == image.time) {
        return;
    }
    image.time = time; // the question comes once a change, whatever the answer
    const int answer =
        ERROR_Ask(nullptr, "File has changed. Reload?", "Reload request", BOX_YES_NO);
    if (answer == ANSWER_YES && PROGRAM_MayLoseChanges()) {
        PROGRAM_Open(std::string(image.path));
    }
}
