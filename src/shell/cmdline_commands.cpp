#include "shell/cmdline_commands.h"

#include "data/hexdata.h"
#include "data/program_format.h"
#include "notice/error.h"
#include "notice/run.h"
#include "shell/cmdline.h"
#include "shell/cmdline_values.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/edit_operations.h"
#include "shell/program_files.h"

#include <optional>

namespace {

constexpr size_t kLongestFileName = 500; // characters

void fail(const std::string& text) {
    ERROR_Out(nullptr, text, 1);
}

bool hasData(const char* otherwise) {
    if (HEXDATA_IsEmpty()) {
        fail(otherwise);
    }
    return !HEXDATA_IsEmpty();
}

struct HexPair {
    int32_t first = 0;
    int32_t second = 0;
};

// Two hex numbers with `separator` between them; none when something is wrong, reported.
std::optional<HexPair> readPair(char separator, const char* wrongSeparator) {
    HexPair pair;
    pair.first = CMDLINE_GetHexValue();
    if (CMDLINE_ValueError()) {
        return std::nullopt;
    }
    if (CMDLINE_GetChar() != separator) {
        fail(wrongSeparator);
        return std::nullopt;
    }
    pair.second = CMDLINE_GetHexValue();
    return CMDLINE_ValueError() ? std::nullopt : std::optional(pair);
}

void mergeFile() {
    if (hasData("No file currently loaded")) {
        PROGRAM_Merge(CMDLINE_GetArgument());
    }
}

void saveAs() {
    if (!hasData("Nothing to save")) {
        return;
    }
    const std::string path = CMDLINE_GetString(kLongestFileName);
    if (CMDLINE_ValueError()) {
        return;
    }
    const ProgramFormat* format = PROGRAMFORMAT_OfName(path);
    if (format == nullptr) {
        fail("Invalid file extension, use " + PROGRAMFORMAT_Suffixes());
        return;
    }
    PROGRAM_Save(path, format->type);
}

void deleteRange() {
    if (!hasData("Nothing to delete")) {
        return;
    }
    const auto range = readPair('-', "Separator has to be -");
    if (!range) {
        return;
    }
    const auto start = static_cast<uint32_t>(range->first);
    const auto end = static_cast<uint32_t>(range->second);
    if (start > end) {
        fail("Start address has to be <= End address !");
        return;
    }
    EDIT_DeleteRange(start, end);
}

void relocate() {
    if (!hasData("Nothing to relocate")) {
        return;
    }
    const int32_t offset = CMDLINE_GetHexValue();
    if (CMDLINE_ValueError()) {
        fail("-relocate needs 1 Hex parameter");
        return;
    }
    EDIT_Relocate(offset);
}

void readBack() {
    const auto range = readPair(',', "Separator has to be ,");
    if (!range) {
        return;
    }
    const auto start = static_cast<uint32_t>(range->first);
    const auto end = static_cast<uint32_t>(range->second);
    if (end < start) {
        fail("End Address < Start Address!");
        return;
    }
    EDIT_ReadBack(start, end);
}

void run(int command) {
    switch (command) {
    case CMD_FILE_MERGE:
        return mergeFile();
    case CMD_FILE_SAVE_AS:
        return saveAs();
    case CMD_EDIT_DELETE_RANGE:
        return deleteRange();
    case CMD_EDIT_RELOCATE:
        return relocate();
    case CMD_TARGET_READ_BACK:
        return readBack();
    default:
        MAINFRAME_Command(command);
    }
}

} // namespace

void CMDLINE_RunCommand(int command) {
    if (RUN_GetExitCode() == 0 || command == CMD_EXIT) {
        run(command);
    }
    CMDLINE_Next();
}
