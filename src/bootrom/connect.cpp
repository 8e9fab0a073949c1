#include "bootrom/connect.h"

#include "bootrom/boot_wire.h"
#include "bootrom/download.h"
#include "device/device.h"
#include "link/chip_record.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"

namespace {

constexpr int kConnectPauseMs = 500;
constexpr int kCommandPauseMs = 100;

// Without a loader of its own a device cannot be connected, whatever the family.
Result<> downloadLoader(const BootRomProtocol& family) {
    if (DEVICE_GetRamcodeFile().empty()) {
        return Failure{.reason = "The device description names no RAM-Image"};
    }
    const std::string path = FILES_SharedFile("RamImage/" + DEVICE_GetRamcodeFile());
    return _DownloadRamImage(family, path, false);
}

// What a failed connect ends in, unless what was said of it says all: the password has nothing to
// do with a Cancel or a lost port.
void summarize(const Failure& failure) {
    const bool isFirst = failure.code != TERR_REPORTED && failure.reason.empty();
    const bool saysAll = failure.code == TERR_SAYS_ALL || failure.code == TERR_CANCELLED ||
                         RUN_IsInterrupted() || (SIO_IsLost() && !isFirst);
    if (saysAll) {
        return;
    }
    if (isFirst) {
        TARGET_ReportError(ERROR_WithReason(downloadFailure(), SIO_GetLoss()), 1,
                           failureHint(failure));
    } else {
        TARGET_ReportError(downloadFailure(), 1);
    }
}

bool confirmReadProtect() {
    return RUN_IsConfirmed() ||
           ERROR_Ask(
               nullptr,
               "AFTER THIS COMMAND THE CHIP CAN NOT BE READ ANY MORE\nUNTIL IT IS ERASED.\n\nARE "
               "YOU SURE YOU WANT TO EXECUTE THE READ PROTECT COMMAND?",
               "WARNING", BOX_OK_CANCEL) == ANSWER_OK;
}

} // namespace

int TARGET_Connect() {
    if (SIO_IsLost()) {
        CHIPRECORD_Forget(); // it was unplugged, who knows from what
    }
    const BootRomProtocol* family = _SelectProtocol();
    if (family == nullptr) {
        return 0;
    }
    TargetState& state = TARGET_State();
    state.Cancel = 0;
    if (state.LinkState == LINK_RAMCODE) {
        return 1;
    }
    TARGET_SetLinkState(LINK_BOOTROM);
    EVENTS_Sleep(kConnectPauseMs);
    Result<> downloaded = downloadLoader(*family);
    if (downloaded) { // a Cancel from here on ends the operation that follows
        state.PageLen = DEVICE_GetFLASHPageLen();
        LOG_Add("Connected with target");
        TARGET_SetLinkState(LINK_RAMCODE);
        EVENTS_Sleep(kConnectPauseMs);
        return 1;
    }
    const Failure& failure = downloaded.error();
    if (failure.code != TERR_CANCELLED) {
        CHIPRECORD_Forget();
    }
    _BootFail(failure);
    TARGET_Disconnect();
    summarize(failure);
    EVENTS_Sleep(kConnectPauseMs);
    return 0;
}

int runBootCommand(Result<> (*BootRomProtocol::*slot)(), const char* name) {
    const BootRomProtocol* family = _SelectProtocol();
    if (family == nullptr) {
        return 1;
    }
    const auto operation = family->*slot;
    if (operation == nullptr) {
        ERROR_Out(nullptr, formatText("%s is not supported by the boot ROM of this device", name),
                  1);
        return 1;
    }
    TARGET_State().Cancel = 0;
    if (TARGET_State().LinkState != LINK_IDLE) {
        TARGET_Disconnect();
    }
    TARGET_SetLinkState(LINK_BOOTROM);
    CLOCK_Sleep(kCommandPauseMs);
    Result<> done = operation();
    if (!done) {
        _BootFail(done.error(), formatText("%s failed", name));
    }
    TARGET_SetLinkState(LINK_IDLE);
    return done ? 0 : 1;
}

int TARGET_ReadProtect() {
    const BootRomProtocol* family = currentProtocol();
    if (family != nullptr && family->ReadProtect != nullptr && !confirmReadProtect()) {
        return 1;
    }
    return runBootCommand(&BootRomProtocol::ReadProtect, "Read Protect Chip");
}
