#include "serial/sio_line.h"

#include "notice/error.h"
#include "notice/log.h"
#include "platform/format.h"
#include "serial/open_port.h"
#include "serial/sio.h"
#include "serial/sio_log.h"

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace {

std::atomic<uint64_t> bytesWritten{0};

// What the calling thread holds back while it builds a frame.
struct HeldFrame {
    int depth = 0;
    std::vector<uint8_t> bytes;
};
thread_local HeldFrame held;

int64_t lineTimeUs(const PortUse& use, size_t bytes) {
    constexpr int64_t kBitsPerByte = 10; // with start and stop bit
    const uint32_t rate = use.port().rate;
    return rate == 0 ? 0 : static_cast<int64_t>(bytes) * kBitsPerByte * 1'000'000 / rate;
}

uint32_t roundTripMs(const PortUse& use) {
    return use.line().roundTripMs ? static_cast<uint32_t>(use.line().roundTripMs()) : 0;
}

bool writeNow(std::span<const uint8_t> bytes) {
    PortUse use;
    if (!use.usable()) {
        return false;
    }
    const bool written = use.line().write(bytes);
    const int64_t begins = std::max(use.port().lineFreeUs.load(), CLOCK_Now().us);
    use.port().lineFreeUs = begins + lineTimeUs(use, bytes.size());
    use.port().writeFailed = !written;
    bytesWritten += written ? bytes.size() : 0;
    if (!written) {
        use.noteLoss();
    }
    return written;
}

void sendHeld() {
    if (!held.bytes.empty()) {
        writeNow(std::exchange(held.bytes, {}));
    }
}

// Whether bytes given to the port now have a chance to be sent.
bool acceptsBytes() {
    const PortUse use;
    return use.usable() && !use.port().writeFailed;
}

std::string refusalOf(const PortUse& use) {
    return use.line().refusal ? use.line().refusal() : std::string();
}

// Why the port does not do what it is asked to; empty where nobody knows.
std::string whyNot(const PortUse& use) {
    if (!use.isOpen()) {
        return "no port is open";
    }
    const std::string refusal = refusalOf(use);
    return !use.loss().empty() || refusal.empty()
               ? use.loss()
               : OPENPORT_Reason(use.port().name, use.port().device, refusal);
}

// Says in the log which device refused something, where it gave a reason.
void logRefusal(const PortUse& use) {
    if (const std::string reason = refusalOf(use); !reason.empty()) {
        LOG_Add(OPENPORT_Named(use.port().name, use.port().device) + ": " + reason);
    }
}

// Empty when the rate is set, with the one in force before, else the error to report. The port is
// left before anything is reported: an error's message box may be where the port gets closed.
std::string setRate(uint32_t baudrate, bool keepLines, uint32_t& before) {
    sendHeld();
    PortUse use;
    if (!use.usable()) {
        return ERROR_WithReason("SIO::SIO_ChangeBaudrate: GetCommState failed", whyNot(use));
    }
    LineSettings settings = use.port().format;
    settings.baudrate = baudrate;
    settings.keepLines = keepLines;
    const std::optional<uint32_t> result = use.line().configure(settings);
    if (!result) {
        use.noteLoss();
        logRefusal(use);
        return ERROR_WithReason("SIO::SIO_ChangeBaudrate: SetCommState failed", whyNot(use));
    }
    // A device that rounds tells another rate than the one that the chip is to be told.
    const uint32_t asked = use.port().rate.exchange(baudrate);
    before = asked != 0 ? asked : *result;
    return "";
}

} // namespace

uint32_t SIO_SetRate(uint32_t baudrate, bool quiet) {
    uint32_t before = 0;
    const std::string error = setRate(baudrate, false, before);
    if (!error.empty() && !quiet) {
        const std::string loss = SIO_GetLoss();
        ERROR_Out(nullptr, error, 1, loss.empty() ? Hint{} : Hint{Cause::portGone, loss});
    }
    return before;
}

uint32_t SIO_ChangeBaudrate(uint32_t baudrate) {
    if (SIO_IsOpen()) { // what the change makes of the lines is part of how a reset goes
        _LogEvent(formatText("Rate %u Bd, DTR off, RTS on", baudrate));
    }
    const uint32_t before = SIO_SetRate(baudrate, false);
    if (before == 0) {
        _LogEvent("Rate not changed");
    }
    return before;
}

uint32_t SIO_RateInForce() {
    const PortUse use;
    return use.usable() ? use.port().rate.load() : 0;
}

bool SIO_ChangeRateAlone(uint32_t baudrate) {
    uint32_t before = 0;
    const bool changed = setRate(baudrate, true, before).empty();
    _LogEvent(changed ? formatText("Rate %u Bd", baudrate) : "Rate not changed");
    return changed;
}

uint32_t SIO_TransferMs(size_t bytes) {
    const PortUse use;
    return use.usable() ? static_cast<uint32_t>((lineTimeUs(use, bytes) + 999) / 1000) : 0;
}

Moment SIO_AnswerDeadline(uint32_t timeoutMs, size_t replyBytes) {
    const Moment deadline = CLOCK_After(timeoutMs);
    const PortUse use;
    if (!use.usable()) {
        return deadline;
    }
    const int64_t stillToLeave = std::max<int64_t>(use.port().lineFreeUs - CLOCK_Now().us, 0);
    return Moment{deadline.us + stillToLeave + lineTimeUs(use, replyBytes) +
                  roundTripMs(use) * int64_t{1000}};
}

uint32_t SIO_RoundTripMs() {
    const PortUse use;
    return use.usable() ? roundTripMs(use) : 0;
}

size_t SIO_Read(uint8_t* buffer, size_t count, uint32_t timeoutMs, const Condition& stop) {
    return SIO_ReadUntil(buffer, count, CLOCK_After(timeoutMs), stop);
}

size_t SIO_ReadUntil(uint8_t* buffer, size_t count, Moment deadline, const Condition& stop) {
    sendHeld();
    size_t arrived = 0;
    if (PortUse use; use.usable() && !(stop && stop())) {
        arrived = use.line().read({buffer, count}, deadline, use.orClosing(stop));
        if (arrived < count) {
            use.noteLoss();
        }
    }
    if (arrived > 0) {
        _LogData({buffer, arrived}, "READ ");
    }
    if (arrived < count) { // without a usable line the time is yet to pass
        CLOCK_Wait(deadline, [&stop] { return stop && stop(); });
    }
    return arrived;
}

bool SIO_WaitReadable(const Condition& stop, Moment deadline) {
    sendHeld();
    while (!stop()) {
        const uint32_t generation = OPENPORT_Generation();
        if (PortUse use; use.usable()) {
            const bool readable = use.line().waitReadable(deadline, use.orClosing(stop));
            if (stop()) {
                return false;
            }
            use.noteLoss();
            if (use.usable()) {
                if (readable || CLOCK_Now() >= deadline) {
                    return readable;
                }
                continue;
            }
        }
        if (!CLOCK_Wait(deadline, [&] { return stop() || OPENPORT_Generation() != generation; })) {
            return false;
        }
    }
    return false;
}

bool SIO_Write(std::span<const uint8_t> bytes) {
    _LogData(bytes, "WRITE");
    if (held.depth == 0) {
        return writeNow(bytes);
    }
    held.bytes.insert(held.bytes.end(), bytes.begin(), bytes.end());
    return acceptsBytes();
}

bool SIO_WriteByte(uint8_t value) {
    return SIO_Write({&value, 1});
}

bool SIO_SetLines(LineFunction function) {
    sendHeld();
    PortUse use;
    if (!use.usable()) {
        return false;
    }
    const bool on = function == SETDTR || function == SETRTS;
    const bool isDtr = function == SETDTR || function == CLRDTR;
    const std::string call = std::string(isDtr ? "DTR" : "RTS") + (on ? " on" : " off");
    _LogEvent(call); // before what the chip makes of it
    const bool done = isDtr ? use.line().setDtr(on) : use.line().setRts(on);
    if (!done) {
        _LogEvent(call + " failed");
        use.noteLoss();
        logRefusal(use);
    }
    return done;
}

SioFrame::SioFrame() {
    ++held.depth;
}

SioFrame::~SioFrame() {
    if (--held.depth == 0) {
        sendHeld();
    }
}

uint64_t SIO_BytesWritten() {
    return bytesWritten;
}

std::string SIO_GetRefusal() {
    return whyNot(PortUse());
}
