// Get CRC and Get SUM: one command with two sets of words.

#include "target/checksum_commands.h"

#include "bootrom/connect.h"
#include "device/device.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "platform/format.h"
#include "target/commands.h"
#include "target/worker.h"

#include <string>

std::optional<uint16_t> getTargetChecksum(bool crc, bool showBox) {
    if (!TARGET_HasSelectedBlock()) {
        return {};
    }
    const std::string name = crc ? "CRC" : "SUM";
    TARGET_BeginCommand("Calculating " + name);
    if (TARGET_Connect() == 0) {
        PROGRESS_Close();
        return {};
    }
    LOG_Add("Get " + name + " started");
    const std::optional<uint16_t> value =
        TARGET_RunOperation({crc ? OP_GET_CRC : OP_GET_SUM, {}, DEVICE_SelectedBlocks()},
                            "Calculating " + name + "...");
    const std::string digits = value ? formatText("%04X", *value) : "----";
    LOG_Add("Get " + name + (value ? " finished: " + digits : " failed"));
    if (value && showBox) {
        ERROR_Ask(nullptr, name + " = " + digits, "Get " + name, BOX_OK);
    }
    STATUS_SetText("Target " + name + ": " + digits, STATUS_CHECKSUM);
    return value;
}

uint16_t TARGET_GetCrc(bool showBox) {
    return getTargetChecksum(DEVICE_GetSprtCRC() != 0, showBox).value_or(0);
}

uint16_t TARGET_GetSum(bool showBox) {
    return getTargetChecksum(false, showBox).value_or(0);
}
