// Get CRC and Get SUM: one command with two sets of words.

#include "bootrom/connect.h"
#include "device/device.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/status.h"
#include "platform/format.h"
#include "target/commands.h"
#include "target/operation.h"
#include "target/worker.h"

#include <string>

namespace {

// `name`: "CRC" or "SUM". The checksum, 0 when there is no connection.
uint16_t getChecksum(const std::string& name, int operation, const uint16_t& value, bool showBox) {
    TARGET_BeginCommand("Calculating " + name);
    if (TARGET_Connect() == 0) {
        PROGRESS_Close();
        return 0;
    }
    LOG_Add("Get " + name + " started");
    if (!TARGET_RunOperation(operation, "Calculating " + name + "...")) {
        LOG_Add("Get " + name + " failed");
        STATUS_SetText("Target " + name + ": ----", STATUS_CHECKSUM);
        return value;
    }
    const std::string digits = formatText("%04X", value);
    LOG_Add("Get " + name + " finished: " + digits);
    if (showBox) {
        ERROR_Ask(nullptr, name + " = " + digits, "Get " + name, BOX_OK);
    }
    STATUS_SetText("Target " + name + ": " + digits, STATUS_CHECKSUM);
    return value;
}

} // namespace

uint16_t TARGET_GetCrc(bool showBox) {
    return DEVICE_GetSprtCRC() != 0
               ? getChecksum("CRC", OP_GET_CRC, TARGET_State().TargetCrc, showBox)
               : TARGET_GetSum(showBox);
}

uint16_t TARGET_GetSum(bool showBox) {
    return getChecksum("SUM", OP_GET_SUM, TARGET_State().TargetSum, showBox);
}
