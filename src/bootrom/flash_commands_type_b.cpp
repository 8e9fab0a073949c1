#include "bootrom/boot_wire.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "device/device.h"
#include "notice/progress.h"

#include <vector>

namespace {

constexpr uint8_t kErased = 0x4F;
constexpr uint8_t kEraseEnable = 0x54;

// The erase result and its check byte, which covers `covered`.
Result<> eraseResult(const std::vector<uint8_t>& covered) {
    constexpr const char* failure = "Erase operation result failure";
    uint8_t answer[1] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    if (Result<> erased = _BootCheck(answer[0] == kErased, failure); !erased) {
        return erased;
    }
    Result<> checked = _BootAwait(_BootChecksum(covered), failure);
    if (checked) {
        _SetBootSum(0);
        PROGRESS_Done();
    }
    return checked;
}

Result<> eraseTypeB() {
    if (DEVICE_GetRewriteVersion() > 1) {
        return Failure{}; // nobody knows how
    }
    Result<> sent = _BootCommand(0x40, "Echoback flash memory rewrite command failed");
    if (!sent) {
        return sent;
    }
    if (DEVICE_GetRewriteVersion() == 0) {
        return eraseResult({kErased});
    }
    Result<> enabled = _BootCommand(kEraseEnable, "Echoback erase enable command failed");
    return enabled ? eraseResult({kErased, kEraseEnable}) : enabled;
}

} // namespace

Result<> _EraseChipTypeB() {
    return _RunErase([] { return _BootHandshake(_MatchTypeB, _GetSumTypeB, false); }, eraseTypeB);
}

Result<> _ProtectChipTypeB() {
    if (Result<> matched = _ResetAndMatch(_MatchTypeB, false); !matched) {
        return matched;
    }
    if (Result<> sent = _BootCommand(0x60, "Echoback protect command failed"); !sent) {
        return sent;
    }
    _SendPasswordTypeB();
    return _BootAwait(0x60, "Password checksum failed");
}
