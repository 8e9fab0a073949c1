#include "bootrom/handshake.h"

#include "bootrom/boot_wire.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/terminal_buffer.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

constexpr int kMatchAttempts = 10;
constexpr size_t kMaxProductInfo = 255; // bytes
constexpr size_t kMaxExpectedInfo = 500;
constexpr size_t kBytesPerLogLine = 16;

uint32_t bootSum = 0;
std::atomic<bool> bootSumForgotten{false};

// Asks the user to press reset where the program does not do it; whether to go on.
bool resetIsDone() {
    if (DEVPROPS_GetResetByPC()) {
        return true;
    }
    PROGRESS_HideClock();
    if (!RUN_IsUnattended() && ERROR_Ask(nullptr, "Please reset target\nand then press enter...",
                                         "Target", BOX_OK_CANCEL) != ANSWER_OK) {
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

void logBytes(const std::vector<uint8_t>& bytes) {
    for (size_t start = 0; start < bytes.size(); start += kBytesPerLogLine) {
        std::string line;
        for (size_t i = start; i < std::min(start + kBytesPerLogLine, bytes.size()); ++i) {
            line += formatText("%02X ", bytes[i]);
        }
        LOG_Add(line);
    }
}

// What the reply holds where the device's text is expected; a description that expects bytes behind
// the reply describes another chip.
std::vector<uint8_t> productText(const std::vector<uint8_t>& reply, size_t length) {
    const size_t offset = std::min<size_t>(DEVICE_GetPIValue2(), reply.size());
    const auto start = reply.begin() + static_cast<ptrdiff_t>(offset);
    return {start, start + static_cast<ptrdiff_t>(std::min(length, reply.size() - offset))};
}

Result<> compareProduct(const std::vector<uint8_t>& reply) {
    std::string error; // a text that cannot be read expects nothing
    const auto expected = HEXTEXT_ToBytes(DEVICE_GetPIText(), kMaxExpectedInfo, error);
    const std::vector<uint8_t> found = productText(reply, expected.size());
    if (found == expected) {
        return {};
    }
    return Failure{.code = TERR_SAYS_ALL,
                   .reason =
                       formatText("The chip is no %s (product info: expected %s, found %s)",
                                  DEVICE_GetName().c_str(), HEXTEXT_FromBytes(expected).c_str(),
                                  HEXTEXT_FromBytes(found).c_str())};
}

// What arrives before the reset has finished is the application's; over a port server it may still
// be on its way.
void passOnWhatCameBefore() {
    const Moment deadline = CLOCK_After(SIO_RoundTripMs());
    uint8_t byte = 0;
    while (SIO_ReadUntil(&byte, 1, deadline, _BootIsHopeless) == 1) {
        TERMINAL_ReceiveByte(byte);
    }
}

// A failed match leaves the user's rate behind: the next attempt would take the other one for it.
Result<> matchAtItsRate(const BootRomProtocol& family) {
    uint32_t baudrate = SIO_GetBaudrate();
    const bool changes = family.matchBaudrate != 0;
    if (changes) {
        baudrate = SIO_ChangeBaudrate(family.matchBaudrate);
        if (baudrate == 0) {
            return Failure{TERR_REPORTED};
        }
    }
    LOG_Add("Setting baudrate");
    Result<> matched = family.Match(baudrate);
    if (matched) {
        BOOT_SetState(BOOT_SYNCED);
    } else if (changes && !SIO_IsLost()) { // a port that is opened again has the rate
        SIO_ChangeBaudrate(baudrate);
    }
    return matched;
}

Result<> handshakeOnce(const BootRomProtocol& family) {
    if (Result<> matched = _ResetAndMatch(family); !matched) {
        return matched;
    }
    const struct {
        Result<> (*run)();
        const char* silence;
    } steps[] = {{family.GetSum, "The chip does not send its checksum"},
                 {_ProductInfo, "The chip does not send its product info"}};
    for (const auto& step : steps) {
        if (Result<> done = _BootSilence(step.run(), step.silence); !done) {
            return done;
        }
        if (BOOT_GetState() != BOOT_SYNCED) {
            return Failure{TERR_TIMEOUT};
        }
    }
    return {};
}

} // namespace

Result<> _BootHandshake(const BootRomProtocol& family) {
    const bool wasSynced = BOOT_GetState() == BOOT_SYNCED;
    Result<> done = handshakeOnce(family);
    if (done || !wasSynced || _BootIsHopeless() || TARGET_State().Cancel != 0) {
        return done;
    }
    BOOT_SetState(BOOT_UNSYNCED); // somebody may have reset the chip by hand meanwhile
    return handshakeOnce(family);
}

Result<> _ResetAndMatch(const BootRomProtocol& family) {
    if (SIO_IsLost()) {
        BOOT_SetState(BOOT_UNSYNCED);
    }
    if (!SIO_EnsureOpen()) {
        return Failure{TERR_REPORTED};
    }
    if (BOOT_GetState() != BOOT_UNSYNCED) {
        return {};
    }
    if (!resetIsDone()) {
        return Failure{TERR_REPORTED}; // the user knows
    }
    BOOT_SetChipInRom(true);
    resetIntoBootRom();
    passOnWhatCameBefore();
    return matchAtItsRate(family);
}

// A stray byte costs nothing but its time: the echo may stand behind it, or answer the next try.
Result<> _MatchByte(uint8_t value) {
    constexpr const char* failure = "Matching data failed";
    for (int attempt = 0; attempt < kMatchAttempts; ++attempt) {
        if (RUN_IsInterrupted()) {
            return Failure{TERR_CANCELLED};
        }
        SIO_WriteByte(value);
        if (_BootAwaitAmong(value, failure, kMatchMs)) {
            return {};
        }
    }
    return Failure{.reason = failure};
}

Result<> _ProductInfo() {
    if (DEVICE_GetPICode() == 0) {
        return {};
    }
    SIO_WriteByte(DEVICE_GetPICode());
    std::vector<uint8_t> reply(std::min<size_t>(DEVICE_GetPIValue1(), kMaxProductInfo));
    if (Result<> read = _BootRead(reply, kReplyMs); !read) {
        return read;
    }
    LOG_Add("Product info:");
    logBytes(reply);
    Result<> matched = compareProduct(reply);
    LOG_Add(matched ? "Product info comparison successful" : "Product info comparison failed");
    return matched;
}

uint32_t _GetBootSum() {
    return bootSum;
}

void _SetBootSum(uint32_t sum) {
    bootSum = sum;
    bootSumForgotten = false;
}

void _ForgetBootSum() {
    bootSumForgotten = true;
}

bool _BootSumIsForgotten() {
    return bootSumForgotten;
}

Result<> _LoaderAnswer(const Result<>& answered) {
    return DEVICE_GetTimeoutGetSUM() != 0
               ? answered
               : _BootSilence(answered, "The device description gives the chip no time to answer "
                                        "the download (TimeoutGetSUM)");
}

Result<> _ReadBootSum(uint32_t timeoutMs) {
    uint8_t sum[2] = {};
    Result<> read = _BootRead(sum, timeoutMs);
    if (read) {
        _SetBootSum(sum[0] * 256U + sum[1]);
    }
    return read;
}

bool _IsBlank() {
    const std::vector<DeviceBlock> blocks = DEVICE_Blocks();
    if (blocks.empty()) {
        return false;
    }
    const auto span = static_cast<uint32_t>(blocks.back().range.end - blocks.front().range.start);
    return bootSum == ((span * 255) & 0xFFFF);
}
