#include "shell/cmdline_commands.h"

#include "data/hexdata.h"
#include "data/program_format.h"
#include "notice/error.h"
#include "notice/run.h"
#include "shell/cmdline.h"
#include "shell/cmdline_values.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
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

struct EnteredRange {
    uint32_t start = 0;
    uint32_t end = 0; // inclusive
};

// Two hex numbers with `separator` between them; none when something is wrong, reported.
std::optional<EnteredRange> readRange(char separator, const char* wrongSeparator,
                                      const char* wrongOrder) {
    EnteredRange range;
    range.start = static_cast<uint32_t>(CMDLINE_GetHexValue());
    if (CMDLINE_ValueError()) {
        return std::nullopt;
    }
    if (CMDLINE_GetChar() != separator) {
        fail(wrongSeparator);
        return std::nullopt;
    }
    range.end = static_cast<uint32_t>(CMDLINE_GetHexValue());
    if (CMDLINE_ValueError()) {
        return std::nullopt;
    }
    if (range.end < range.start) {
        fail(wrongOrder);
        return std::nullopt;
    }
    return range;
}

} // namespace

void CMDLINE_MergeFile() {
    if (hasData("No file currently loaded")) {
        PROGRAM_Merge(CMDLINE_GetArgument());
    }
}

void CMDLINE_SaveAs() {
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

void CMDLINE_DeleteRange() {
    if (!hasData("Nothing to delete")) {
        return;
    }
    if (const auto range =
            readRange('-', "Separator has to be -", "Start address has to be <= End address !")) {
        EDIT_DeleteRange(range->start, range->end);
    }
}

void CMDLINE_Relocate() {
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

void CMDLINE_ReadBack() {
    if (const auto range =
            readRange(',', "Separator has to be ,", "End Address < Start Address!")) {
        EDIT_ReadBack(range->start, range->end);
    }
}

void CMDLINE_RunCommand(int command) {
    if (RUN_GetExitCode() == 0 || command == CMD_EXIT) {
        const Command* row = COMMAND_Find(command);
        if (row != nullptr && row->line.run != nullptr) {
            row->line.run();
        } else {
            MAINFRAME_Command(command);
        }
    }
    CMDLINE_Next();
}
