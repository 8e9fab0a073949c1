#include "shell/cmdline_commands.h"

#include "data/hexdata.h"
#include "data/program_format.h"
#include "device/device.h"
#include "notice/error.h"
#include "notice/run.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/cmdline.h"
#include "shell/cmdline_values.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/edit_operations.h"
#include "shell/program_files.h"
#include "shell/retry.h"
#include "shell/session.h"
#include "shell/verdict.h"
#include "shell/watch.h"

#include <optional>

namespace {

constexpr size_t kLongestFileName = 500; // characters

constexpr int64_t kMaxAddress = 0xFFFFFFFF;
constexpr int64_t kMaxOffset = 0x7FFFFFFF;

struct EnteredRange {
    uint32_t start = 0;
    uint32_t end = 0; // inclusive
};

// A hex number with which one may go on where the user sees what comes of it.
bool readAddress(uint32_t& address) {
    address = static_cast<uint32_t>(CMDLINE_GetHexValue());
    if (CMDLINE_ValueError()) {
        return false;
    }
    if (CMDLINE_GetTrueValue() < 0 || CMDLINE_GetTrueValue() > kMaxAddress) {
        CMDLINE_Doubt("An address has to be within 0 - FFFFFFFF");
    }
    return true;
}

// Two hex numbers with `separator` between them; none when something is wrong.
std::optional<EnteredRange> readRange(char separator, const char* wrongSeparator,
                                      const char* wrongOrder) {
    EnteredRange range;
    if (!readAddress(range.start)) {
        return std::nullopt;
    }
    if (CMDLINE_GetChar() != separator) {
        CMDLINE_Fault(wrongSeparator);
        return std::nullopt;
    }
    if (!readAddress(range.end)) {
        return std::nullopt;
    }
    if (range.end < range.start) {
        CMDLINE_Fault(wrongOrder);
        return std::nullopt;
    }
    return range;
}

// Does what the argument asks for, unless something is wrong with it.
void run(const ArgumentValue& value) {
    for (const std::string& fault : CMDLINE_Faults(false)) {
        ERROR_Out(nullptr, fault, 1);
    }
    if (value.apply) {
        value.apply();
    }
}

// A command of the menu that not every device offers.
ArgumentValue offered(int id, bool isFinal, bool (*offers)(const DeviceRecord&)) {
    const Command* row = COMMAND_Find(id);
    if (isFinal && !RUN_IsConfirmed()) {
        CMDLINE_Doubt(formatText("%s cannot be taken back and needs --yes", row->line.name));
    }
    const auto misfit = [name = row->line.name, offers](const DeviceRecord& device) {
        return offers(device) ? ""
                              : formatText("%s does not offer %s", device.Device.c_str(), name);
    };
    return {[misfit, run = row->run] {
                if (const std::string problem = misfit(DEVICE_Selected()); !problem.empty()) {
                    ERROR_Out(nullptr, problem, 1);
                } else {
                    run();
                }
            },
            misfit};
}

} // namespace

ArgumentValue CMDLINE_ProtectChip() {
    return offered(CMD_TARGET_PROTECT_CHIP, true, [](const DeviceRecord& device) {
        return device.SprtProtectBlock != 0 || device.SprtProtectChip != 0;
    });
}

ArgumentValue CMDLINE_ProtectBlocks() {
    return offered(CMD_TARGET_PROTECT_BLOCKS, true,
                   [](const DeviceRecord& device) { return device.SprtProtectBlock != 0; });
}

ArgumentValue CMDLINE_ReadProtect() {
    return offered(CMD_TARGET_READ_PROTECT, true,
                   [](const DeviceRecord& device) { return device.SprtReadProtect != 0; });
}

ArgumentValue CMDLINE_FlashStatus() {
    return offered(CMD_TARGET_FLASH_STATUS, false,
                   [](const DeviceRecord& device) { return device.SprtFlashMemStatus != 0; });
}

ArgumentValue CMDLINE_MergeFile() {
    const std::string path = CMDLINE_TakeRest();
    if (path.empty()) {
        CMDLINE_Doubt("CMDLINE_GetString: Missing string");
    }
    return {[path] { PROGRAM_Merge(path); }};
}

ArgumentValue CMDLINE_SaveAs() {
    const std::string path = CMDLINE_GetString(kLongestFileName);
    if (CMDLINE_ValueError()) {
        return {};
    }
    const ProgramFormat* format = PROGRAMFORMAT_OfName(path);
    if (format == nullptr) {
        CMDLINE_Fault("Invalid file extension, use " + PROGRAMFORMAT_Suffixes());
        return {};
    }
    return {[path, type = format->type] { PROGRAM_Save(path, type); }};
}

ArgumentValue CMDLINE_DeleteRange() {
    const auto range =
        readRange('-', "Separator has to be -", "Start address has to be <= End address !");
    return range ? ArgumentValue{[range] { EDIT_DeleteRange(range->start, range->end); }}
                 : ArgumentValue{};
}

ArgumentValue CMDLINE_Relocate() {
    const int32_t offset = CMDLINE_GetHexValue();
    if (CMDLINE_ValueError()) {
        CMDLINE_Fault("-relocate needs 1 Hex parameter");
        return {};
    }
    if (CMDLINE_GetTrueValue() < -kMaxOffset || CMDLINE_GetTrueValue() > kMaxOffset) {
        CMDLINE_Doubt("The offset has to be within -7FFFFFFF - 7FFFFFFF");
    }
    return {[offset] { EDIT_Relocate(offset); }};
}

ArgumentValue CMDLINE_ReadBack() {
    const auto range = readRange(',', "Separator has to be ,", "End Address < Start Address!");
    return range ? ArgumentValue{[range] { EDIT_ReadBack(range->start, range->end); }}
                 : ArgumentValue{};
}

void CMDLINE_RunCommand(int command) {
    const Command* row = COMMAND_Find(command);
    if (command == CMD_EXIT && ((RETRY_IsDue() && RETRY_Begin()) || WATCH_NextRound())) {
        CMDLINE_Rewind();
        return;
    }
    if (row != nullptr && (RUN_GetExitCode() == 0 || command == CMD_EXIT)) {
        VERDICT_CommandStarts(*row);
        if (command != CMD_EXIT) {
            ACCOUNT_CommandStarts(*row);
            RETRY_CommandStarts(*row);
        }
        SESSION_Get().commandBegun |= command != CMD_EXIT;
        if (row->line.read == nullptr) {
            MAINFRAME_Command(command);
        } else if (row->line.withoutData != nullptr && HEXDATA_IsEmpty()) {
            ERROR_Out(nullptr, row->line.withoutData, 1);
        } else {
            run(row->line.read());
        }
    }
    VERDICT_CommandEnds(command);
    if (row != nullptr && command != CMD_EXIT) {
        ACCOUNT_CommandEnds(*row);
    }
    CMDLINE_Next();
}
