// A port whose line is spoilt on purpose: "faulty://FAULTS@DEVICE" wraps the port DEVICE of any
// kind. FAULTS is a list of `seed=N` and DIRECTION-FAULT=WHERE with commas between, all decided by
// the seed and the bytes that pass, so that a run can be repeated:
//
//   DIRECTION  tx what the program sends, rx what it receives
//   FAULT      lose, flip (one bit), set, add, double, insert, late, cut, hangup, fail (tx only)
//   WHERE      N the byte of that number in this direction, from 0; or N% every byte with this
//              chance. A flip may name its bit (12.3); late needs a delay (8:20ms); set, add and
//              insert need a byte in hex digits (12:EB).
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/serial_port.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace {

enum class FaultKind { lose, flip, set, add, doubled, insert, late, cut, hangup, fail };
enum Direction : size_t { kTx = 0, kRx = 1 };

struct Fault {
    FaultKind kind = FaultKind::lose;
    uint64_t index = 0; // the byte that it hits, when `chance` is 0
    double chance = 0;  // of every byte, 0 to 1
    int bit = -1;       // -1: chosen by the seed
    int64_t delayMs = 0;
    uint8_t value = 0; // what is set, added or inserted
};

// What becomes of one byte.
struct Fate {
    std::vector<uint8_t> before; // what comes in front of it
    size_t copies = 1;
    uint8_t value = 0;
    int64_t delayMs = 0;
    bool cut = false;
    bool hangup = false;
    bool fails = false;
};

// One direction of the line: its faults and how many bytes have passed.
struct Lane {
    std::vector<Fault> faults;
    uint64_t passed = 0;
    uint64_t random = 0;
};

struct FaultPlan {
    uint64_t seed = 1;
    std::array<std::vector<Fault>, 2> faults;
};

struct LateByte {
    uint8_t value;
    Moment due;
};

struct FaultyLine {
    SerialPortPtr inner;
    std::mutex mutex; // guards the lanes and the bytes under way
    std::array<Lane, 2> lanes;
    std::deque<LateByte> underWay; // received, not handed out yet
    std::atomic<bool> hungUp{false};
    std::atomic<bool> isCut{false}; // nothing passes any more, and nobody is told
};

// A small generator of well-mixed numbers (SplitMix64); the same everywhere, unlike the
// distributions of the standard library.
uint64_t nextRandom(uint64_t& state) {
    state += 0x9E3779B97F4A7C15U;
    uint64_t value = state;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

bool hits(const Fault& fault, Lane& lane) {
    if (fault.chance == 0) {
        return fault.index == lane.passed;
    }
    return static_cast<double>(nextRandom(lane.random) >> 11) * 0x1.0p-53 < fault.chance;
}

void apply(const Fault& fault, Lane& lane, Fate& fate) {
    switch (fault.kind) {
    case FaultKind::lose:
        fate.copies = 0;
        break;
    case FaultKind::flip:
        fate.value ^= static_cast<uint8_t>(
            1U << (fault.bit >= 0 ? static_cast<unsigned>(fault.bit)
                                  : static_cast<unsigned>(nextRandom(lane.random) & 7)));
        break;
    case FaultKind::set:
        fate.value = fault.value;
        break;
    case FaultKind::add:
        fate.value = static_cast<uint8_t>(fate.value + fault.value);
        break;
    case FaultKind::doubled:
        fate.copies *= 2;
        break;
    case FaultKind::insert:
        fate.before.push_back(fault.value);
        break;
    case FaultKind::late:
        fate.delayMs += fault.delayMs;
        break;
    case FaultKind::cut:
        fate.cut = true;
        break;
    case FaultKind::hangup:
        fate.hangup = true;
        break;
    case FaultKind::fail:
        fate.fails = true;
        break;
    }
}

Fate nextFate(Lane& lane, uint8_t byte) {
    Fate fate;
    fate.value = byte;
    for (const Fault& fault : lane.faults) {
        if (hits(fault, lane)) {
            apply(fault, lane, fate);
        }
    }
    ++lane.passed;
    return fate;
}

// Puts the byte behind `bytes`, with what comes in front of it and as often as it comes.
template <typename Bytes, typename Make>
void putSpoilt(Bytes& bytes, const Fate& fate, const Make& make) {
    std::transform(fate.before.begin(), fate.before.end(), std::back_inserter(bytes), make);
    bytes.insert(bytes.end(), fate.copies, make(fate.value));
}

void hangUp(FaultyLine& faulty) {
    faulty.hungUp = true;
    CLOCK_Notify();
}

// Spoils what has just arrived; false when the line is hung up at one of the bytes. A late byte
// holds up those behind it, as on a real line.
bool takeReceived(FaultyLine& faulty, std::span<const uint8_t> bytes) {
    const Moment now = CLOCK_Now();
    const std::lock_guard lock(faulty.mutex);
    for (const uint8_t byte : bytes) {
        const Fate fate = nextFate(faulty.lanes[kRx], byte);
        if (fate.hangup) {
            return false;
        }
        faulty.isCut = faulty.isCut || fate.cut;
        if (faulty.isCut) {
            return true;
        }
        Moment due{now.us + fate.delayMs * 1000};
        if (!faulty.underWay.empty()) {
            due = std::max(due, faulty.underWay.back().due);
        }
        putSpoilt(faulty.underWay, fate, [due](uint8_t value) { return LateByte{value, due}; });
    }
    return true;
}

// When the next byte under way is due; none when there is none.
std::optional<Moment> nextDue(FaultyLine& faulty) {
    const std::lock_guard lock(faulty.mutex);
    return faulty.underWay.empty() ? std::nullopt : std::optional(faulty.underWay.front().due);
}

size_t handOut(FaultyLine& faulty, std::span<uint8_t> buffer) {
    const Moment now = CLOCK_Now();
    const std::lock_guard lock(faulty.mutex);
    size_t count = 0;
    while (count < buffer.size() && !faulty.underWay.empty() &&
           faulty.underWay.front().due <= now) {
        buffer[count++] = faulty.underWay.front().value;
        faulty.underWay.pop_front();
    }
    return count;
}

// Waits until a byte may be handed out; `room` is how many are wanted. False when the wait ended
// otherwise.
bool waitForByte(FaultyLine& faulty, size_t room, Moment deadline, const Condition& stop) {
    const Condition stopOrHungUp = [&faulty, &stop] { return faulty.hungUp || (stop && stop()); };
    while (true) {
        if (const std::optional<Moment> due = nextDue(faulty)) {
            CLOCK_Wait(std::min(*due, deadline), stopOrHungUp);
            return CLOCK_Now() >= *due;
        }
        if (faulty.hungUp || !faulty.inner->waitReadable(deadline, stopOrHungUp)) {
            return false;
        }
        std::vector<uint8_t> arrived(room);
        arrived.resize(faulty.inner->read(arrived, CLOCK_Now(), {}));
        if (arrived.empty() && !faulty.inner->lostReason().empty()) {
            return false;
        }
        if (!takeReceived(faulty, arrived)) {
            hangUp(faulty);
        }
    }
}

size_t readBytes(FaultyLine& faulty, std::span<uint8_t> buffer, Moment deadline,
                 const Condition& stop) {
    size_t count = 0;
    while (count < buffer.size() && waitForByte(faulty, buffer.size() - count, deadline, stop)) {
        count += handOut(faulty, buffer.subspan(count));
    }
    return count;
}

bool writeBytes(FaultyLine& faulty, std::span<const uint8_t> bytes) {
    std::vector<uint8_t> spoilt;
    bool written = !faulty.hungUp;
    bool fails = false;
    for (size_t index = 0; index < bytes.size() && !faulty.hungUp; ++index) {
        Fate fate;
        {
            const std::lock_guard lock(faulty.mutex);
            fate = nextFate(faulty.lanes[kTx], bytes[index]);
        }
        fails = fails || fate.fails;
        faulty.isCut = faulty.isCut || fate.cut;
        if (fate.delayMs > 0) {
            written = faulty.inner->write(std::exchange(spoilt, {})) && written;
            CLOCK_Sleep(fate.delayMs);
        }
        if (fate.hangup) {
            hangUp(faulty);
            written = false;
            break;
        }
        if (!faulty.isCut) {
            putSpoilt(spoilt, fate, [](uint8_t value) { return value; });
        }
    }
    return !fails && (spoilt.empty() || faulty.inner->write(spoilt)) && written;
}

// Reads the number at the start of `text` and moves behind it.
template <typename Number, typename... Base>
bool takeNumber(std::string_view& text, Number& value, Base... base) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value, base...);
    text = std::string_view(result.ptr, static_cast<size_t>(end - result.ptr));
    return result.ec == std::errc();
}

bool takesByte(FaultKind kind) {
    return kind == FaultKind::set || kind == FaultKind::add || kind == FaultKind::insert;
}

// WHERE of the description above.
bool parseWhere(std::string_view text, Fault& fault) {
    if (text.find('%') != std::string_view::npos) {
        double percent = 0;
        if (!takeNumber(text, percent) || !(percent > 0) || percent > 100 ||
            !text.starts_with('%')) {
            return false;
        }
        fault.chance = percent / 100;
        text.remove_prefix(1);
    } else if (!takeNumber(text, fault.index)) {
        return false;
    }
    if (fault.kind == FaultKind::flip && fault.chance == 0 && text.starts_with('.')) {
        text.remove_prefix(1);
        if (!takeNumber(text, fault.bit) || fault.bit < 0 || fault.bit > 7) {
            return false;
        }
    }
    const bool isLate = fault.kind == FaultKind::late;
    if (!isLate && !takesByte(fault.kind)) {
        return text.empty();
    }
    if (!text.starts_with(':')) {
        return false;
    }
    text.remove_prefix(1);
    if (isLate) {
        constexpr int64_t kLongestDelayMs = 3'600'000;
        return takeNumber(text, fault.delayMs) && fault.delayMs >= 0 &&
               fault.delayMs <= kLongestDelayMs && text == "ms";
    }
    return takeNumber(text, fault.value, 16) && text.empty();
}

bool parseFaultName(std::string_view name, FaultKind& kind) {
    static constexpr std::pair<std::string_view, FaultKind> kNames[] = {
        {"lose", FaultKind::lose}, {"flip", FaultKind::flip},      {"set", FaultKind::set},
        {"add", FaultKind::add},   {"double", FaultKind::doubled}, {"insert", FaultKind::insert},
        {"late", FaultKind::late}, {"cut", FaultKind::cut},        {"hangup", FaultKind::hangup},
        {"fail", FaultKind::fail}};
    for (const auto& [known, value] : kNames) {
        if (name == known) {
            kind = value;
            return true;
        }
    }
    return false;
}

// One item of the list, e.g. "rx-flip=12.3".
bool parseItem(std::string_view item, FaultPlan& plan) {
    const size_t equals = item.find('=');
    if (equals == std::string_view::npos) {
        return false;
    }
    const std::string_view name = item.substr(0, equals);
    std::string_view value = item.substr(equals + 1);
    if (name == "seed") {
        return takeNumber(value, plan.seed) && value.empty();
    }
    const bool isTx = name.starts_with("tx-");
    Fault fault;
    if ((!isTx && !name.starts_with("rx-")) || !parseFaultName(name.substr(3), fault.kind) ||
        (fault.kind == FaultKind::fail && !isTx) || !parseWhere(value, fault)) {
        return false;
    }
    plan.faults[isTx ? kTx : kRx].push_back(fault);
    return true;
}

bool parsePlan(std::string_view list, FaultPlan& plan, std::string& error) {
    while (!list.empty()) {
        const std::string_view item = list.substr(0, list.find(','));
        if (!parseItem(item, plan)) {
            error = formatText("the line fault \"%.*s\" is not understood",
                               static_cast<int>(item.size()), item.data());
            return false;
        }
        list.remove_prefix(std::min(list.size(), item.size() + 1));
    }
    return true;
}

SerialPortPtr makePort(const std::shared_ptr<FaultyLine>& faulty) {
    auto port = std::make_shared<SerialPort>(*faulty->inner);
    port->read = [faulty](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
        return readBytes(*faulty, buffer, deadline, stop);
    };
    port->waitReadable = [faulty](Moment deadline, const Condition& stop) {
        return waitForByte(*faulty, 1, deadline, stop);
    };
    port->write = [faulty](std::span<const uint8_t> bytes) { return writeBytes(*faulty, bytes); };
    port->lostReason = [faulty] {
        return faulty->hungUp ? "the line was hung up on purpose" : faulty->inner->lostReason();
    };
    return port;
}

} // namespace

SerialPortPtr FAULTYPORT_Open(const std::string& device, std::string& error) {
    static constexpr std::string_view kPrefix = "faulty://";
    const size_t at = device.find('@');
    if (!device.starts_with(kPrefix) || at == std::string::npos) {
        error = "a faulty port is named faulty://FAULTS@DEVICE";
        return nullptr;
    }
    FaultPlan plan;
    const std::string_view list(device.data() + kPrefix.size(), at - kPrefix.size());
    if (!parsePlan(list, plan, error)) {
        return nullptr;
    }
    const auto faulty = std::make_shared<FaultyLine>();
    faulty->inner = SERIALPORT_Open(device.substr(at + 1), error);
    if (!faulty->inner) {
        return nullptr;
    }
    for (const Direction direction : {kTx, kRx}) {
        faulty->lanes[direction] = {std::move(plan.faults[direction]), 0, plan.seed + direction};
    }
    SerialPortPtr port = makePort(faulty);
    port->description = device;
    return port;
}
