#include "shell/program_files.h"

#include "data/hexdata.h"
#include "data/program_file.h"
#include "data/program_format.h"
#include "notice/error.h"
#include "notice/log.h"
#include "persist/mru.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/front_end.h"
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

std::optional<FileChoice> askForProgramFile() {
    return FRONTEND_Get().chooseFile(
        {false, "Open file", openFilters(), SESSION_Get().programPath});
}

// With the dump open meanwhile: closing the last view of the data would unload it.
void reopenHexList() {
    FrontEnd& frontEnd = FRONTEND_Get();
    if (frontEnd.isViewOpen(View::hexList)) {
        frontEnd.closeView(View::hexList);
    }
    if (SESSION_Get().showHexListView != 0) {
        frontEnd.openView(View::hexList);
    }
}

} // namespace

void PROGRAM_Open(const std::string& path) {
    LOG_Add(formatText("Opening %s", path.c_str()));
    if (!PROGRAMFILE_Load(path)) {
        SUMMARY_Refresh();
        FRONTEND_Get().updateMenu();
        return;
    }
    Session& session = SESSION_Get();
    session.loaded = true;
    session.programPath = fullPath(path);
    session.fileType = HEXDATA_GetFileType();
    SUMMARY_Refresh();
    FRONTEND_Get().openView(View::hexDump);
    reopenHexList();
    FRONTEND_Get().openView(View::hexDump); // in front
    session.programTime = FILES_WriteTime(path);
    session.merged = false;
    FRONTEND_Get().updateMenu();
}

void PROGRAM_Merge(const std::string& path) {
    LOG_Add(formatText("Merging %s", path.c_str()));
    Session& session = SESSION_Get();
    session.programPath = fullPath(path);
    session.loaded = PROGRAMFILE_Merge(path);
    SUMMARY_Refresh();
    session.merged = true;
    FRONTEND_Get().updateMenu();
}

void PROGRAM_Save(const std::string& path, int type) {
    LOG_Add(formatText("Saving %s", path.c_str()));
    Session& session = SESSION_Get();
    session.fileType = type;
    session.programPath = fullPath(path);
    static_cast<void>(PROGRAMFILE_Save(path, type)); // which reports
    session.programTime = FILES_WriteTime(path);
}

void PROGRAM_Close() {
    FRONTEND_Get().closeView(View::hexList);
    FRONTEND_Get().closeView(View::hexDump);
    PROGRAM_Unload();
}

void PROGRAM_Unload() {
    HEXDATA_Clear();
    SESSION_Get().loaded = false;
    SUMMARY_Refresh();
    FRONTEND_Get().updateMenu();
}

void PROGRAM_OpenDialog() {
    if (const auto choice = askForProgramFile()) {
        MRU_Add(MRU_PROGRAMS, choice->path);
        PROGRAM_Open(choice->path);
    }
}

void PROGRAM_MergeDialog() {
    if (const auto choice = askForProgramFile()) {
        MRU_Add(MRU_PROGRAMS, choice->path);
        PROGRAM_Merge(choice->path);
    }
}

void PROGRAM_SaveCurrent() {
    const Session& session = SESSION_Get();
    if (session.programPath.empty()) {
        PROGRAM_SaveAsDialog();
    } else {
        PROGRAM_Save(session.programPath, session.fileType);
    }
}

void PROGRAM_SaveAsDialog() {
    const auto choice =
        FRONTEND_Get().chooseFile({true, "Save file", saveFilters(), SESSION_Get().programPath});
    if (choice) {
        MRU_Add(MRU_PROGRAMS, choice->path);
        PROGRAM_Save(choice->path, PROGRAMFORMAT_All()[choice->filter].type);
    }
}

void PROGRAM_CheckChanged() {
    Session& session = SESSION_Get();
    if (!session.loaded || session.merged) {
        return;
    }
    const auto time = FILES_WriteTime(session.programPath);
    if (!time || time == session.programTime) {
        return;
    }
    session.programTime = time; // the question comes once a change, whatever the answer
    const int answer =
        ERROR_Ask(nullptr, "File has changed. Reload?", "Reload request", BOX_YES_NO);
    if (answer == ANSWER_YES) {
        PROGRAM_Open(session.programPath);
    }
}
