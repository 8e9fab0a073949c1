#include "bootrom/boot_wire.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "bootrom/password_frame.h"
#include "device/device.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/format.h"
#include "serial/sio.h"

#include <string>

namespace {

// An Intel HEX end record in binary: an empty program.
constexpr uint8_t kEndRecord[] = {0x3A, 0x00, 0x00, 0x00, 0x01, 0xFF};
constexpr uint8_t kFlashCleared = 0xC1;

Result<> handshake() {
    return _BootHandshake(_MatchTypeA, _GetSumTypeA, true);
}

// Runs the handshake and a command that the boot ROM echoes.
Result<> beginCommand(uint8_t command, const char* failure) {
    Result<> begun = handshake();
    return begun ? _BootCommand(command, failure) : begun;
}

// Rewriting the flash with an empty program.
Result<> eraseByRewriteCommand() {
    Result<> sent = _BootCommand(0x30, "Echoback flash memory rewrite command failed");
    if (!sent) {
        return sent;
    }
    _SetBootSum(0);
    uint8_t answer[1] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    Result<> cleared = _BootCheck(answer[0] == kFlashCleared, "Clearing flash memory failed");
    if (!cleared) {
        return cleared;
    }
    PROGRESS_SetPos(2);
    SIO_Write(kEndRecord);
    PROGRESS_SetText("Waiting for SUM...");
    Result<> summed = _ReadBootSum(kReplyMs);
    if (summed) {
        PROGRESS_Done();
    }
    return summed;
}

Result<> eraseByEraseCommand() {
    Result<> sent = _BootCommand(0xF0, "Echoback flash memory erase command failed");
    if (!sent) {
        return sent;
    }
    _SendPasswordTypeA();
    SIO_WriteByte(0xF1);
    _SetBootSum(0);
    uint8_t answer[2] = {};
    if (Result<> answered = _EraseWait(answer); !answered) {
        return answered;
    }
    _SetBootSum(answer[0] * 256U + answer[1]);
    PROGRESS_Done();
    return _IsBlank() ? Result<>() : Failure{};
}

} // namespace

Result<> _EraseChipTypeA() {
    return _RunErase(handshake, DEVICE_GetSprtFlashEraseCMD() == 1 ? eraseByEraseCommand
                                                                   : eraseByRewriteCommand);
}

Result<> _FlashStatusTypeA() {
    Result<> begun = beginCommand(0xC3, "Flash memory status output command failed");
    if (!begun) {
        return begun;
    }
    uint8_t status[7] = {};
    if (Result<> read = _BootRead(status, kReplyMs); !read) {
        return read;
    }
    std::string line;
    for (const uint8_t byte : status) {
        line += formatText("%02X ", byte);
    }
    LOG_Add("Flash memory status:");
    LOG_Add(line);
    return {};
}

Result<> _ReadProtectTypeA() {
    constexpr const char* failure = "Flash memory read protection command failed";
    if (Result<> begun = beginCommand(0xFA, failure); !begun) {
        return begun;
    }
    _SendPasswordTypeA();
    Result<> done = _BootAwait(0xFB, failure);
    if (done) {
        LOG_Add("Flash memory read protection command executed");
    }
    return done;
}
