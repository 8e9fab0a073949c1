#include "bootrom/boot_wire.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "device/device.h"
#include "link/target_link.h"
#include "notice/progress.h"

#include <vector>

namespace {

constexpr uint8_t kErased = 0x4F;
constexpr uint8_t kEraseEnable = 0x54;

// The erase result and its check byte, which covers `covered`.
int eraseResult(const std::vector<uint8_t>& covered) {
    constexpr const char* failure = "Erase operation result failure";
    uint8_t answer[1] = {};
    if (_EraseWait(answer) != 0 || _BootCheck(answer[0] == kErased, failure) != 0 ||
        _BootAwait(_BootChecksum(covered), failure) != 0) {
        return 1;
    }
    _SetBootSum(0);
    BOOT_SetResult(1);
    PROGRESS_Done();
    return 0;
}

int eraseTypeB() {
    if (_BootCommand(0x40, "Echoback flash memory rewrite command failed") != 0) {
        return 1;
    }
    if (DEVICE_GetRewriteVersion() == 0) {
        return eraseResult({kErased});
    }
    if (_BootCommand(kEraseEnable, "Echoback erase enable command failed") != 0) {
        return 1;
    }
    return eraseResult({kErased, kEraseEnable});
}

} // namespace

int _EraseChipTypeB() {
    return _RunErase([] { return _BootHandshake(_MatchTypeB, _GetSumTypeB, false); },
                     [] { return DEVICE_GetRewriteVersion() > 1 ? 1 : eraseTypeB(); });
}

int _ProtectChipTypeB() {
    if (_ResetAndMatch(_MatchTypeB, false) != 0 ||
        _BootCommand(0x60, "Echoback protect command failed") != 0) {
        return 1;
    }
    _SendPasswordTypeB();
    return _BootAwait(0x60, "Password checksum failed");
}
