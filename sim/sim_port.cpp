#include "sim/sim_port.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <map>
#include <utility>

struct SimLine {
    std::mutex mutex; // of everything but the atomics, the chip included
    ChipPtr chip;
    bool dtr = false;
    bool rts = true;
    bool isOpen = false;
    std::string lostReason;
    uint64_t toChip = 0;
    uint64_t writes = 0;
    std::vector<LineCall> calls;
    int64_t delayUs = 0;              // from the chip to the host
    std::deque<ChipOutput> underWay;  // with the moments at which they arrive
    std::atomic<uint64_t> changes{0}; // wakes whoever waits for the chip's next byte
};

namespace {

constexpr std::string_view kPrefix = "sim://";

std::mutex offersMutex;
// Never destroyed: a port may outlive every other object of the program.
std::map<std::string, SimLinePtr, std::less<>>& offers() {
    static auto* const map = new std::map<std::string, SimLinePtr, std::less<>>;
    return *map;
}

void noteCall(SimLine& line, LineCall::Kind kind, uint32_t value = 0) {
    line.calls.push_back({kind, CLOCK_Now(), value});
}

// Something changed that a reader may wait for.
void stir(SimLine& line) {
    line.changes++;
    CLOCK_Notify();
}

bool isLost(SimLine& line) {
    const std::lock_guard lock(line.mutex);
    return !line.lostReason.empty();
}

// What the chip has sent by now is on its way.
void takeFromChip(SimLine& line, Moment now) {
    while (const auto output = CHIP_TakeOutput(*line.chip, now)) {
        line.underWay.push_back({Moment{output->at.us + line.delayUs}, output->value});
    }
}

bool hasArrived(SimLine& line, Moment now) {
    takeFromChip(line, now);
    return !line.underWay.empty() && line.underWay.front().at <= now;
}

// Takes what has arrived, behind the `got` bytes that the buffer holds; how many it holds then.
size_t takeBytes(SimLine& line, std::span<uint8_t> buffer, size_t got, Moment now) {
    while (got < buffer.size() && hasArrived(line, now)) {
        buffer[got++] = line.underWay.front().value;
        line.underWay.pop_front();
    }
    return got;
}

// Waits for the chip's next byte, a change of the line, `stop` or the deadline.
void waitForChange(SimLine& line, Moment deadline, const Condition& stop) {
    uint64_t seen = 0;
    Moment next = deadline;
    {
        const std::lock_guard lock(line.mutex);
        seen = line.changes;
        next = CHIP_NextOutput(*line.chip, deadline).value_or(deadline);
        if (!line.underWay.empty()) {
            next = std::min(next, line.underWay.front().at);
        }
    }
    CLOCK_Wait(next, [&line, &stop, seen] { return line.changes != seen || (stop && stop()); });
}

size_t readBytes(SimLine& line, std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
    size_t got = 0;
    while (true) {
        const Moment now = CLOCK_Now();
        {
            const std::lock_guard lock(line.mutex);
            if (line.lostReason.empty()) {
                got = takeBytes(line, buffer, got, now);
            }
        }
        if (got == buffer.size() || now >= deadline || isLost(line) || (stop && stop())) {
            return got;
        }
        waitForChange(line, deadline, stop);
    }
}

bool waitReadable(SimLine& line, Moment deadline, const Condition& stop) {
    while (true) {
        const Moment now = CLOCK_Now();
        {
            const std::lock_guard lock(line.mutex);
            if (!line.lostReason.empty()) {
                return false;
            }
            if (hasArrived(line, now)) {
                return true;
            }
        }
        if (now >= deadline || (stop && stop())) {
            return false;
        }
        waitForChange(line, deadline, stop);
    }
}

bool writeBytes(SimLine& line, std::span<const uint8_t> bytes) {
    {
        const std::lock_guard lock(line.mutex);
        if (!line.lostReason.empty()) {
            return false;
        }
        CHIP_Receive(*line.chip, bytes, CLOCK_Now());
        line.toChip += bytes.size();
        line.writes++;
    }
    stir(line);
    return true;
}

bool setLines(SimLine& line, bool dtr, bool rts) {
    {
        const std::lock_guard lock(line.mutex);
        if (!line.lostReason.empty()) {
            return false;
        }
        if (dtr != line.dtr || rts != line.rts) {
            CHIP_SetLines(*line.chip, dtr, rts, CLOCK_Now());
        }
        line.dtr = dtr;
        line.rts = rts;
    }
    stir(line);
    return true;
}

struct PortState {
    SimLinePtr line;
    uint32_t rate = 0;
    ~PortState() {
        const std::lock_guard lock(line->mutex);
        line->isOpen = false;
        noteCall(*line, LineCall::Kind::close);
    }
};

std::optional<uint32_t> configure(PortState& state, const LineSettings& settings) {
    SimLine& line = *state.line;
    Moment sent;
    {
        const std::lock_guard lock(line.mutex);
        if (!line.lostReason.empty()) {
            return std::nullopt;
        }
        sent = CHIP_InputDone(*line.chip);
    }
    // What was written leaves at the old rate.
    CLOCK_Wait(sent, [] { return false; });
    {
        const std::lock_guard lock(line.mutex);
        noteCall(line, LineCall::Kind::configure, settings.baudrate);
        takeFromChip(line, CLOCK_Now());
        CHIP_Run(*line.chip, CLOCK_Now());
        CHIP_SetHostRate(*line.chip, settings.baudrate);
    }
    if (!settings.keepLines) {
        setLines(line, false, true);
    }
    return std::exchange(state.rate, settings.baudrate);
}

bool setLine(PortState& state, LineCall::Kind kind, bool on) {
    SimLine& line = *state.line;
    bool dtr = false;
    bool rts = false;
    {
        const std::lock_guard lock(line.mutex);
        noteCall(line, kind, on ? 1 : 0);
        dtr = kind == LineCall::Kind::setDtr ? on : line.dtr;
        rts = kind == LineCall::Kind::setRts ? on : line.rts;
    }
    return setLines(line, dtr, rts);
}

SerialPortPtr makePort(const SimLinePtr& line, const std::string& device) {
    auto state = std::make_shared<PortState>();
    state->line = line;
    auto port = std::make_shared<SerialPort>();
    port->read = [state](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
        return readBytes(*state->line, buffer, deadline, stop);
    };
    port->waitReadable = [state](Moment deadline, const Condition& stop) {
        return waitReadable(*state->line, deadline, stop);
    };
    port->write = [state](std::span<const uint8_t> bytes) {
        return writeBytes(*state->line, bytes);
    };
    port->configure = [state](const LineSettings& settings) { return configure(*state, settings); };
    port->setDtr = [state](bool on) { return setLine(*state, LineCall::Kind::setDtr, on); };
    port->setRts = [state](bool on) { return setLine(*state, LineCall::Kind::setRts, on); };
    port->roundTripMs = [state] {
        const std::lock_guard lock(state->line->mutex);
        return state->line->delayUs / 1000;
    };
    port->lostReason = [state] {
        const std::lock_guard lock(state->line->mutex);
        return state->line->lostReason;
    };
    port->description = device;
    return port;
}

SerialPortPtr openPort(const std::string& device, std::string& error) {
    SimLinePtr line;
    {
        const std::lock_guard lock(offersMutex);
        const auto found = offers().find(std::string_view(device).substr(kPrefix.size()));
        if (found != offers().end()) {
            line = found->second;
        }
    }
    if (!line) {
        error = "No such file or directory";
        return nullptr;
    }
    const std::lock_guard lock(line->mutex);
    if (!line->lostReason.empty() || line->isOpen) {
        error = line->isOpen ? "in use by another program" : line->lostReason;
        return nullptr;
    }
    line->isOpen = true;
    line->underWay.clear();
    CHIP_DropOutput(*line->chip, CLOCK_Now()); // as a device drops what came while it was closed
    noteCall(*line, LineCall::Kind::open);
    return makePort(line, device);
}

} // namespace

SimLinePtr SIMPORT_Offer(std::string_view name, ChipPtr chip) {
    auto line = std::make_shared<SimLine>();
    line->chip = std::move(chip);
    const std::lock_guard lock(offersMutex);
    static const bool added = [] {
        SERIALPORT_AddKind(kPrefix, openPort);
        return true;
    }();
    static_cast<void>(added);
    offers()[std::string(name)] = line;
    return line;
}

void SIMPORT_Withdraw(std::string_view name) {
    const std::lock_guard lock(offersMutex);
    const auto found = offers().find(name);
    if (found != offers().end()) {
        offers().erase(found);
    }
}

void SIMPORT_SetDelay(const SimLinePtr& line, int64_t ms) {
    const std::lock_guard lock(line->mutex);
    line->delayUs = ms * 1000;
}

void SIMPORT_Unplug(const SimLinePtr& line, const std::string& reason) {
    {
        const std::lock_guard lock(line->mutex);
        line->lostReason = reason;
    }
    stir(*line);
}

void SIMPORT_Plug(const SimLinePtr& line) {
    const std::lock_guard lock(line->mutex);
    line->lostReason.clear();
}

uint64_t SIMPORT_BytesToChip(const SimLinePtr& line) {
    const std::lock_guard lock(line->mutex);
    return line->toChip;
}

uint64_t SIMPORT_Writes(const SimLinePtr& line) {
    const std::lock_guard lock(line->mutex);
    return line->writes;
}

std::vector<LineCall> SIMPORT_Calls(const SimLinePtr& line) {
    const std::lock_guard lock(line->mutex);
    return line->calls;
}

void SIMPORT_WithChip(const SimLinePtr& line, const std::function<void(Chip&)>& look) {
    {
        const std::lock_guard lock(line->mutex);
        look(*line->chip);
    }
    stir(*line);
}
