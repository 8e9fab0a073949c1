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
#include "serial/idle_rate.h"
#include "serial/sio.h"
#include "serial/sio_line.h"
#include "serial/terminal_buffer.h"
#include "serial/terminal_history.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

constexpr int kMatchAttempts = 10;
constexpr size_t kMaxProductInfo = 255; // bytes
constexpr size_t kMaxExpectedInfo = 500;
constexpr size_t kBytesPerLogLine = 16;

constexpr uint32_t kLateMs = 1000; // after that an echo would not be told from anything else

uint32_t bootSum = 0;
bool linesDriven = false; // by the last reset
std::atomic<bool> bootSumForgotten{false};

// Asks the user to press reset where the program does not do it; whether to go on.
bool resetIsDone() {
    if (DEVPROPS_GetResetByPC()) {
        return true;
    }
    PROGRESS_HideClock();
    if (!RUN_IsQuiet() && ERROR_Ask(nullptr, "Please reset target\nand then press enter...",
                                    "Target", BOX_OK_CANCEL) != ANSWER_OK) {
        return false;
    }
    PROGRESS_StartClock();
    return true;
}

// Whether the port could drive the lines.
bool resetIntoBootRom() {
    bool driven = SIO_SetLines(SETDTR);
    CLOCK_Sleep(50);
    driven = SIO_SetLines(SETRTS) && driven;
    CLOCK_Sleep(250);
    driven = SIO_SetLines(CLRDTR) && driven;
    CLOCK_Sleep(250);
    return driven;
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
std::vector<uint8_t> productText(const std::vector<uint8_t>& reply, size_t length,
                                 size_t position) {
    const size_t offset = std::min(position, reply.size());
    const auto start = reply.begin() + static_cast<ptrdiff_t>(offset);
    return {start, start + static_cast<ptrdiff_t>(std::min(length, reply.size() - offset))};
}

std::string fittingDevices(const std::vector<uint8_t>& reply) {
    std::string names;
    for (int i = 0; i < DEVICE_GetNumDevices(); ++i) {
        const DeviceRecord& device = DEVICE_At(i);
        std::string error;
        const auto expected = HEXTEXT_ToBytes(device.PIText, kMaxExpectedInfo, error);
        if (device.PICode == DEVICE_GetPICode() && !expected.empty() &&
            productText(reply, expected.size(), device.PIValue2) == expected) {
            names += (names.empty() ? "" : ", ") + device.Device;
        }
    }
    return names.empty() ? "none of the devices that there are" : names;
}

Result<> compareProduct(const std::vector<uint8_t>& reply) {
    std::string error; // a text that cannot be read expects nothing
    const auto expected = HEXTEXT_ToBytes(DEVICE_GetPIText(), kMaxExpectedInfo, error);
    const std::vector<uint8_t> found = productText(reply, expected.size(), DEVICE_GetPIValue2());
    if (found == expected) {
        return {};
    }
    return Failure{.code = TERR_SAYS_ALL,
                   .reason =
                       formatText("The chip is no %s (product info: expected %s, found %s)",
                                  DEVICE_GetName().c_str(), HEXTEXT_FromBytes(expected).c_str(),
                                  HEXTEXT_FromBytes(found).c_str()),
                   .hint = {Cause::productDiffers, fittingDevices(reply)}};
}

// What arrives before the reset has finished is the application's; over a port server it may still
// be on its way.
void passOnWhatCameBefore() {
    const Moment deadline = CLOCK_After(SIO_RoundTripMs());
    uint8_t byte = 0;
    while (SIO_ReadUntil(&byte, 1, deadline, bootIsHopeless) == 1) {
        TERMHISTORY_Add(TerminalSource::received, {&byte, 1});
        TERMINAL_ReceiveByte(byte);
    }
}

// Why the echo did not come, for which what comes now is looked at as well.
Hint matchHint(uint8_t value, std::string& others) {
    constexpr const char* failure = "";
    const Moment given = CLOCK_Now();
    if (bootAwaitAmong(value, failure, kLateMs, &others)) {
        const auto lateMs = static_cast<int>((CLOCK_Now().us - given.us) / 1000);
        return {Cause::lateAnswer, formatText("%d ms after %d tries", lateMs, kMatchAttempts)};
    }
    if (Hint shared = SIO_SharedHint(); shared.cause != Cause::none) {
        return shared;
    }
    const std::string sent = formatText("%02X was sent %d times", value, kMatchAttempts);
    if (!others.empty()) {
        return {Cause::otherAnswer, sent + ", what came is " + HINT_Bytes(others)};
    }
    return {Cause::noAnswer, sent + (linesDriven ? "; the reset was DTR on, RTS on, DTR off"
                                                 : "; DTR and RTS could not be driven")};
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
        SIO_SetRate(baudrate, true);
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
        if (Result<> done = bootSilence(step.run(), step.silence); !done) {
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
    if (done || !wasSynced || bootIsHopeless() || TARGET_State().Cancel != 0) {
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
        return IDLERATE_End() ? Result<>{} : Failure{TERR_REPORTED};
    }
    if (!resetIsDone()) {
        return Failure{TERR_CANCELLED};
    }
    BOOT_SetChipInRom(true);
    linesDriven = resetIntoBootRom();
    passOnWhatCameBefore();
    if (!IDLERATE_End()) {
        return Failure{TERR_REPORTED};
    }
    return matchAtItsRate(family);
}

// A stray byte costs nothing but its time: the echo may stand behind it, or answer the next try.
Result<> familyMatchByte(uint8_t value) {
    constexpr const char* failure = "Matching data failed";
    std::string others;
    for (int attempt = 0; attempt < kMatchAttempts; ++attempt) {
        if (RUN_IsInterrupted()) {
            return Failure{TERR_CANCELLED};
        }
        SIO_WriteByte(value);
        if (bootAwaitAmong(value, failure, kMatchMs, &others)) {
            return {};
        }
    }
    return Failure{.reason = failure, .hint = matchHint(value, others)};
}

Result<> _ProductInfo() {
    if (DEVICE_GetPICode() == 0) {
        return {};
    }
    SIO_WriteByte(DEVICE_GetPICode());
    std::vector<uint8_t> reply(std::min<size_t>(DEVICE_GetPIValue1(), kMaxProductInfo));
    if (Result<> read = bootRead(reply, kReplyMs); !read) {
        return read;
    }
    LOG_Add("Product info:");
    logBytes(reply);
    Result<> matched = compareProduct(reply);
    LOG_Add(matched ? "Product info comparison successful" : "Product info comparison failed");
    return matched;
}

uint32_t getBootSum() {
    return bootSum;
}

void setBootSum(uint32_t sum) {
    bootSum = sum;
    bootSumForgotten = false;
}

void forgetBootSum() {
    bootSumForgotten = true;
}

bool bootSumIsForgotten() {
    return bootSumForgotten;
}

void showDownload(bool isAskedFor) {
    PROGRESS_SetText(isAskedFor ? "Downloading RAM Image..."
                                : "Downloading internal used RAM image...");
}

Result<> loaderAnswer(const Result<>& answered) {
    return DEVICE_GetTimeoutGetSUM() != 0
               ? answered
               : withHint(bootSilence(answered, "The device description gives the chip no time to "
                                                "answer the download (TimeoutGetSUM)"),
                          {});
}

Result<> readBootSum(uint32_t timeoutMs) {
    uint8_t sum[2] = {};
    Result<> read = bootRead(sum, timeoutMs);
    if (read) {
        setBootSum(sum[0] * 256U + sum[1]);
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
