#include "bootrom/boot_wire.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "device/device.h"
#include "link/target_link.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "serial/sio.h"

#include <string>

namespace {

// An Intel HEX end record in binary: an empty program.
constexpr uint8_t kEndRecord[] = {0x3A, 0x00, 0x00, 0x00, 0x01, 0xFF};
constexpr uint8_t kFlashCleared = 0xC1;

int handshake() {
    return _BootHandshake(_MatchTypeA, _GetSumTypeA, true);
}

// Rewriting the flash with an empty program.
int eraseByRewriteCommand() {
    if (_BootCommand(0x30, "Echoback flash memory rewrite command failed") != 0) {
        return 1;
    }
    _SetBootSum(0);
    uint8_t answer[1] = {};
    if (_EraseWait(answer) != 0 ||
        _BootCheck(answer[0] == kFlashCleared, "Clearing flash memory failed") != 0) {
        return 1;
    }
    PROGRESS_SetPos(2);
    SIO_Write(kEndRecord);
    PROGRESS_SetText("Waiting for SUM...");
    if (_ReadBootSum(kReplyMs) != 0) {
        return 1;
    }
    BOOT_SetResult(1);
    PROGRESS_Done();
    return 0;
}

int eraseByEraseCommand() {
    if (_BootCommand(0xF0, "Echoback flash memory erase command failed") != 0) {
        return 1;
    }
    _SendPasswordTypeA();
    SIO_WriteByte(0xF1);
    _SetBootSum(0);
    uint8_t answer[2] = {};
    if (_EraseWait(answer) != 0) {
        return 1;
    }
    _SetBootSum(answer[0] * 256U + answer[1]);
    BOOT_SetResult(_IsBlank() ? 1 : 0);
    PROGRESS_Done();
    return 0;
}

} // namespace

int _EraseChipTypeA() {
    return _RunErase(handshake, DEVICE_GetSprtFlashEraseCMD() == 1 ? eraseByEraseCommand
                                                                   : eraseByRewriteCommand);
}

int _FlashStatusTypeA() {
    if (handshake() != 0 || _BootCommand(0xC3, "Flash memory status output command failed") != 0) {
        return 1;
    }
    uint8_t status[7] = {};
    if (_BootRead(status, kReplyMs) != 0) {
        return 1;
    }
    std::string line;
    for (const uint8_t byte : status) {
        line += formatText("%02X ", byte);
    }
    LOG_Add("Flash memory status:");
    LOG_Add(line);
    return 0;
}

int _ReadProtectTypeA() {
    constexpr const char* failure = "Flash memory read protection command failed";
    if (handshake() != 0 || _BootCommand(0xFA, failure) != 0) {
        return 1;
    }
    _SendPasswordTypeA();
    if (_BootAwait(0xFB, failure) != 0) {
        return 1;
    }
    LOG_Add("Flash memory read protection command executed");
    return 0;
}
