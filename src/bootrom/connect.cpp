#include "bootrom/connect.h"

#include "bootrom/boot_wire.h"
#include "bootrom/download.h"
#include "bootrom/flash_commands.h"
#include "device/device.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "platform/clock.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "platform/format.h"

namespace {

constexpr int kConnectPauseMs = 500;
constexpr int kCommandPauseMs = 100;
constexpr const char* kConnectFailure = "Could not download RAM image. Please check password";

const BootRomProtocol& typeA() {
    static const BootRomProtocol protocol = {_DownloadTypeA, _EraseChipTypeA, _FlashStatusTypeA,
                                             _ReadProtectTypeA, nullptr};
    return protocol;
}

const BootRomProtocol& typeB() {
    static const BootRomProtocol protocol = {_DownloadTypeB, _EraseChipTypeB, nullptr, nullptr,
                                             _ProtectChipTypeB};
    return protocol;
}

const BootRomProtocol* current = nullptr; // null: the first family

// Without a loader of its own a device cannot be connected, whatever the family.
int downloadLoader() {
    if (DEVICE_GetRamcodeFile().empty()) {
        _BootFail("The device description names no RAM-Image");
        return 0;
    }
    const std::string path = FILES_ProgramFolder() + "RamImage/" + DEVICE_GetRamcodeFile();
    return _CurrentProtocol().DownloadRamImage(path, false);
}

} // namespace

void _SelectProtocol() {
    switch (DEVICE_GetRamcodeType()) {
    case RAMCODE_TYPE_A:
        current = &typeA();
        break;
    case RAMCODE_TYPE_B:
        current = &typeB();
        break;
    default:
        TARGET_ReportError("Target::Unsuported RAM-Code protocoll", 0);
    }
}

const BootRomProtocol& _CurrentProtocol() {
    return current != nullptr ? *current : typeA();
}

int TARGET_Connect() {
    _SelectProtocol();
    TargetState& state = TARGET_State();
    state.Cancel = 0;
    if (state.LinkState == LINK_RAMCODE) {
        return 1;
    }
    TARGET_SetLinkState(LINK_BOOTROM);
    EVENTS_Sleep(kConnectPauseMs);
    if (downloadLoader() == 1) { // a Cancel from here on ends the operation that follows
        state.PageLen = DEVICE_GetFLASHPageLen();
        LOG_Add("Connected with target");
        TARGET_SetLinkState(LINK_RAMCODE);
        EVENTS_Sleep(kConnectPauseMs);
        return 1;
    }
    TARGET_Disconnect();
    TARGET_ReportError(kConnectFailure, 1);
    EVENTS_Sleep(kConnectPauseMs);
    return 0;
}

int _RunBootCommand(const std::function<int()> BootRomProtocol::*slot, const char* name) {
    _SelectProtocol();
    const std::function<int()>& operation = _CurrentProtocol().*slot;
    if (!operation) {
        ERROR_Out(nullptr, formatText("%s is not supported by the boot ROM of this device", name),
                  1);
        return 1;
    }
    TARGET_State().Cancel = 0;
    if (TARGET_State().LinkState != LINK_IDLE) {
        TARGET_Disconnect();
        _BootReset();
    }
    TARGET_SetLinkState(LINK_BOOTROM);
    CLOCK_Sleep(kCommandPauseMs);
    _BootForgetReports();
    const int result = operation();
    if (result != 0) {
        BOOT_SetState(BOOT_UNSYNCED); // whatever the boot ROM waits for now, a reset ends it
        if (!_BootHasReported()) {
            ERROR_Out(nullptr, formatText("%s failed", name), 1);
        }
    }
    TARGET_SetLinkState(LINK_IDLE);
    return result;
}

int TARGET_ReadProtect() {
    return _RunBootCommand(&BootRomProtocol::ReadProtect, "Read Protect Chip");
}
