#include "bootrom/handshake.h"

#include "bootrom/boot_wire.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/target_link.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "serial/sio.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint32_t kMatchBaudrate = 9600;
constexpr int kMatchAttempts = 10;
constexpr uint32_t kMatchMs = 30;
constexpr uint32_t kSumMs = 5000;
constexpr size_t kMaxProductInfo = 255; // bytes
constexpr size_t kMaxExpectedInfo = 500;
constexpr size_t kBytesPerLogLine = 16;

uint32_t savedBaudrate = 0;
uint32_t bootSum = 0;

// Asks the user to press reset where the program does not do it; whether to go on.
bool resetIsDone() {
    if (DEVPROPS_GetResetByPC()) {
        return true;
    }
    PROGRESS_HideClock();
    if (!RUN_IsUnattended() && ERROR_Ask(nullptr, "Please reset target\nand then press enter...",
                                         "Target", BOX_OK_CANCEL) != ANSWER_OK) {
        _BootNeedsNoReport();
        return false;
    }
    PROGRESS_StartClock();
    return true;
}

void resetIntoBootRom() {
    SIO_SetLines(SETDTR);
    CLOCK_Sleep(50);
    SIO_SetLines(SETRTS);
    CLOCK_Sleep(250);
    SIO_SetLines(CLRDTR);
    CLOCK_Sleep(250);
}

// Sends the byte until the boot ROM, which measures it, echoes it.
int matchByte(uint8_t value) {
    uint8_t received = 0;
    bool answered = false;
    for (int attempt = 0; attempt < kMatchAttempts && !answered; ++attempt) {
        if (RUN_IsInterrupted()) {
            return 1;
        }
        SIO_WriteByte(value);
        answered = _BootRead({&received, 1}, kMatchMs) == 0;
    }
    return _BootCheck(answered && received == value, "Matching data failed");
}

void logBytes(const std::vector<uint8_t>& bytes) {
    for (size_t start = 0; start < bytes.size(); start += kBytesPerLogLine) {
        std::string line;
        for (size_t i = start; i < std::min(start + kBytesPerLogLine, bytes.size()); ++i) {
            line += formatText("%02X ", bytes[i]);
        }
        LOG_Add(line);
    }
}

// A description that expects bytes behind the reply describes another chip.
bool productMatches(const std::vector<uint8_t>& reply) {
    std::string error; // a text that cannot be read expects nothing
    const auto expected = HEXTEXT_ToBytes(DEVICE_GetPIText(), kMaxExpectedInfo, error);
    const size_t offset = DEVICE_GetPIValue2();
    if (expected.empty()) {
        return true;
    }
    return offset + expected.size() <= reply.size() &&
           std::equal(expected.begin(), expected.end(),
                      reply.begin() + static_cast<ptrdiff_t>(offset));
}

} // namespace

int _BootHandshake(BootStep matchFn, BootStep sumFn, bool changeBaudrate) {
    if (_ResetAndMatch(matchFn, changeBaudrate) != 0 || sumFn() != 0 ||
        BOOT_GetState() == BOOT_UNSYNCED || _ProductInfo() != 0) {
        return 1;
    }
    return BOOT_GetState() == BOOT_SYNCED ? 0 : 1;
}

int _ResetAndMatch(BootStep matchFn, bool changeBaudrate) {
    if (SIO_IsLost()) {
        BOOT_SetState(BOOT_UNSYNCED);
    }
    if (!SIO_EnsureOpen()) {
        _BootNeedsNoReport(); // the port has said why
        return 1;
    }
    if (BOOT_GetState() != BOOT_UNSYNCED) {
        return 0;
    }
    if (!resetIsDone()) {
        return 1;
    }
    resetIntoBootRom();
    if (changeBaudrate) {
        savedBaudrate = SIO_ChangeBaudrate(kMatchBaudrate);
        if (savedBaudrate == 0) {
            _BootNeedsNoReport(); // the port has said why
            return 1;
        }
    }
    LOG_Add("Setting baudrate");
    if (matchFn() == 0) {
        return 0;
    }
    if (changeBaudrate && !SIO_IsLost()) { // a port that is opened again has the user's rate
        SIO_ChangeBaudrate(savedBaudrate); // else the next attempt would take 9600 for the user's
    }
    return 1;
}

int _MatchTypeA() {
    if (matchByte(0x5A) != 0) {
        return 1;
    }
    const uint8_t code = _BaudCode(savedBaudrate);
    SIO_WriteByte(code);
    if (_BootAwait(code, "Setting baudrate failed", kMatchMs) != 0) {
        return 1;
    }
    SIO_ChangeBaudrate(savedBaudrate);
    BOOT_SetState(BOOT_SYNCED);
    return 0;
}

int _MatchTypeB() {
    if (matchByte(0x86) != 0) {
        return 1;
    }
    BOOT_SetState(BOOT_SYNCED);
    return 0;
}

int _GetSumTypeA() {
    return _BootCommand(0x90, "SUM command failed") != 0 ? 1 : _ReadBootSum(kSumMs);
}

int _GetSumTypeB() {
    if (_BootCommand(0x20, "Get SUM Command failed") != 0 || _ReadBootSum(kSumMs) != 0) {
        return 1;
    }
    const uint8_t sum[] = {static_cast<uint8_t>(bootSum >> 8), static_cast<uint8_t>(bootSum)};
    return _BootAwait(_BootChecksum(sum), "Checksum of checksum failed");
}

int _ProductInfo() {
    if (DEVICE_GetPICode() == 0) {
        return 0;
    }
    SIO_WriteByte(DEVICE_GetPICode());
    std::vector<uint8_t> reply(std::min<size_t>(DEVICE_GetPIValue1(), kMaxProductInfo));
    if (_BootRead(reply, kReplyMs) != 0) {
        return 1;
    }
    LOG_Add("Product info:");
    logBytes(reply);
    if (!productMatches(reply)) {
        LOG_Add("Product info comparison failed");
        return 1;
    }
    LOG_Add("Product info comparison successful");
    return 0;
}

uint8_t _BaudCode(uint32_t rate) {
    switch (rate) {
    case 9600:
        return 0x28;
    case 19200:
        return 0x18;
    case 31250:
        return 0x0A;
    case 38400:
        return 0x07;
    case 62500:
        return 0x05;
    case 76800:
        return 0x04;
    default:
        return 0x1C;
    }
}

uint32_t _GetBootSum() {
    return bootSum;
}

void _SetBootSum(uint32_t sum) {
    bootSum = sum;
}

int _ReadBootSum(uint32_t timeoutMs) {
    uint8_t sum[2] = {};
    if (_BootRead(sum, timeoutMs) != 0) {
        return 1;
    }
    bootSum = sum[0] * 256U + sum[1];
    return 0;
}

bool _IsBlank() {
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    if (blocks.empty()) {
        return false;
    }
    const auto span = static_cast<uint32_t>(blocks.back().range.end - blocks.front().range.start);
    return bootSum == ((span * 255) & 0xFFFF);
}
