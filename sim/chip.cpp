#include "sim/chip.h"

#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t kMaxViolations = 1000;
constexpr size_t kMaxApplicationInput = 1 << 20;
constexpr uint32_t kFallbackRate = 115200; // paces a line whose rate is unknown
constexpr int64_t kResyncSilenceUs = 400000;
constexpr int64_t kTextBacklogUs = 100000;
// What the host has to leave the chip in a reset, after it, and for its loader to begin.
constexpr int64_t kResetUs = 300000;
constexpr int64_t kLineSettledUs = 250000;
constexpr int64_t kAfterResetUs = 250000;
constexpr int64_t kLoaderStartUs = 100000;

uint32_t paceRate(uint32_t rate) {
    return rate == 0 ? kFallbackRate : rate;
}

// When `bytes` bytes have passed on the line: start bit, eight data bits, stop bit each.
Moment afterBytes(Moment at, uint32_t rate, uint32_t bytes) {
    const int64_t bits = int64_t{10} * bytes;
    return Moment{at.us + (bits * 1000000 + rate / 2) / rate};
}

bool ratesDiffer(uint32_t a, uint32_t b) {
    const uint32_t difference = a > b ? a - b : b - a;
    return uint64_t{difference} * 100 > uint64_t{b} * 3;
}

// What a receiver makes of a byte that was sent at another rate.
uint8_t garbled(uint8_t value) {
    return static_cast<uint8_t>((value << 3 | value >> 5) ^ 0xC9);
}

void sendText(Chip& chip, Moment at) {
    const std::string& text = chip.options.applicationText;
    SIM_Send(chip, std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()), at);
    const int64_t every = chip.options.applicationEveryMs;
    chip.nextText = every == 0 ? kNever : Moment{at.us + every * 1000};
}

// The next text of an application that sends it again and again, when it is due by `until`.
bool textIsDue(const Chip& chip, Moment until) {
    return chip.mode == ChipMode::application && chip.options.applicationEveryMs != 0 &&
           chip.nextText.us != 0 && chip.nextText <= until;
}

void startApplication(Chip& chip, Moment at) {
    chip.mode = ChipMode::application;
    chip.rate = 0;
    sendText(chip, at);
}

void enterReset(Chip& chip, Moment at) {
    SIM_TranscriptNote(chip, "reset", at);
    chip.mode = ChipMode::inReset;
    chip.silent = false;
    chip.pause = {};
    chip.resetBegan = at;
    std::erase_if(chip.output, [at](const SentByte& byte) { return byte.at > at; });
    chip.outputFree = at;
    chip.counts.resets++;
}

// What is wrong with a reset that ends; empty when nothing is.
std::string resetFault(const Chip& chip, Moment at) {
    const int64_t held = at.us - chip.resetBegan.us;
    const int64_t settled = at.us - chip.rtsChanged.us;
    if (held < kResetUs) {
        return formatText("reset of %lld ms where %lld are due",
                          static_cast<long long>(held / 1000),
                          static_cast<long long>(kResetUs / 1000));
    }
    return settled >= kLineSettledUs
               ? std::string()
               : formatText("RTS changed %lld ms before the end of the reset where %lld are due",
                            static_cast<long long>(settled / 1000),
                            static_cast<long long>(kLineSettledUs / 1000));
}

void leaveReset(Chip& chip, bool bootRom, Moment at) {
    chip.readyAt = Moment{at.us + chip.options.startupUs};
    if (bootRom) {
        SIM_EnterBootRom(chip, at);
        SIM_Pause(chip, "the reset", at, kAfterResetUs);
        chip.resetFault = resetFault(chip, at);
    } else {
        startApplication(chip, chip.readyAt);
    }
    SIM_TranscriptNote(chip, bootRom ? "boot ROM starts" : "application starts", at);
}

// The byte as the chip's receiver has it, which may first have to find the rate.
uint8_t heard(Chip& chip, const PendingByte& byte) {
    if (!chip.options.checkRate || byte.rate == 0) {
        chip.rate = byte.rate;
        return byte.value;
    }
    if (chip.rate == 0) {
        chip.rate = byte.rate;
    }
    if (!ratesDiffer(byte.rate, chip.rate)) {
        return byte.value;
    }
    SIM_Violation(chip, formatText("byte sent at %u Bd while the chip listens at %u Bd", byte.rate,
                                   chip.rate));
    return garbled(byte.value);
}

// On a line without reset the matching byte is what begins a conversation anew.
bool resyncs(const Chip& chip, uint8_t value, Moment at) {
    if (!chip.options.resyncByMatch || value != chip.family->matchByte) {
        return false;
    }
    const bool afterSilence = at.us - chip.lastTraffic.us > kResyncSilenceUs;
    switch (chip.mode) {
    case ChipMode::loader:
        return chip.loader.frame.empty() || afterSilence;
    case ChipMode::bootRom:
        return afterSilence;
    default:
        return true;
    }
}

void checkTurn(Chip& chip, Moment at) {
    // Matching bytes are repeated until one is answered.
    const bool matching = chip.mode == ChipMode::bootRom && chip.boot.matching;
    if (chip.output.empty() || chip.output.back().at <= at || chip.turnReported || matching) {
        return;
    }
    chip.turnReported = true;
    SIM_Violation(chip, "byte sent before the reply to the last command has arrived");
}

// What the host has begun to rely on, or should have waited for.
void checkPause(Chip& chip) {
    const DuePause pause = std::exchange(chip.pause, {});
    const std::string fault = std::exchange(chip.resetFault, {});
    if (!chip.options.strict) {
        return;
    }
    if (!fault.empty()) {
        SIM_Violation(chip, fault);
    }
    if (pause.behind != nullptr && chip.byte.handed < pause.until) {
        SIM_Violation(
            chip, formatText("byte sent %lld ms after %s where %lld are due",
                             static_cast<long long>((chip.byte.handed.us - pause.from.us) / 1000),
                             pause.behind,
                             static_cast<long long>((pause.until.us - pause.from.us) / 1000)));
    }
}

void processByte(Chip& chip, const PendingByte& byte) {
    chip.now = byte.at;
    chip.byte = byte;
    chip.counts.bytesIn++;
    if (SIM_FaultNumber(chip, FaultKind::dieAtByte, static_cast<uint32_t>(chip.counts.bytesIn))) {
        chip.silent = true;
    }
    if (SIM_FaultNumber(chip, FaultKind::resetAtByte, static_cast<uint32_t>(chip.counts.bytesIn))) {
        enterReset(chip, byte.at);
        leaveReset(chip, false, byte.at);
    }
    if (chip.mode == ChipMode::inReset || byte.at < chip.readyAt) {
        if (chip.mode != ChipMode::application) {
            SIM_Violation(chip, "byte sent while the chip is in reset or starting");
        }
        return;
    }
    if (resyncs(chip, byte.value, byte.at)) {
        SIM_TranscriptNote(chip, "boot ROM entered by the matching byte", byte.at);
        chip.silent = false;
        SIM_EnterBootRom(chip, byte.at);
    }
    const uint8_t value = chip.mode == ChipMode::application ? byte.value : heard(chip, byte);
    SIM_TranscriptByte(chip, true, value, byte.at);
    if (!chip.silent && chip.mode != ChipMode::application) {
        checkTurn(chip, byte.at);
        checkPause(chip);
    }
    if (chip.silent) {
        return;
    }
    if (chip.mode == ChipMode::bootRom) {
        SIM_BootByte(chip, value, byte.at);
    } else if (chip.mode == ChipMode::loader) {
        SIM_LoaderByte(chip, value, byte.at);
    } else {
        if (chip.applicationInput.size() < kMaxApplicationInput) {
            chip.applicationInput.push_back(value);
        }
        if (chip.options.applicationEcho) {
            SIM_Send(chip, std::span(&value, 1), byte.at);
        }
    }
    chip.lastTraffic = std::max(byte.at, chip.outputFree);
}

} // namespace

ChipPtr CHIP_Create(const DeviceRecord& device, const ChipOptions& options) {
    auto chip = std::make_shared<Chip>();
    chip->device = device;
    chip->family = &SIM_FamilyOf(device);
    chip->options = options;
    chip->flash = SIMFLASH_Create(device);
    chip->random.seed(options.seed);
    SIM_PlaceBadBits(*chip);
    if (options.startInBootRom) {
        SIM_EnterBootRom(*chip, Moment{});
    }
    return chip;
}

void SIM_Violation(Chip& chip, std::string text) {
    SIM_TranscriptNote(chip, "VIOLATION: " + text, chip.now);
    chip.counts.violations++;
    if (chip.violations.size() < kMaxViolations) {
        chip.violations.push_back({chip.now, std::move(text)});
    }
}

void SIM_EnterBootRom(Chip& chip, Moment at) {
    chip.mode = ChipMode::bootRom;
    chip.boot = BootRom{};
    chip.loader = LoaderState{};
    chip.pause = {};
    chip.resetFault.clear();
    chip.lastTraffic = at;
    chip.rate = chip.family->matchRate;
    SIM_WantMatch(chip);
}

void SIM_StartLoader(Chip& chip) {
    chip.mode = ChipMode::loader;
    chip.loader = LoaderState{};
    chip.counts.downloads++;
    SIM_Pause(chip, "the download", std::max(chip.outputFree, chip.now), kLoaderStartUs);
    SIM_TranscriptNote(chip, "loader starts", chip.now);
}

void SIM_Pause(Chip& chip, const char* behind, Moment from, int64_t us) {
    chip.pause = {Moment{from.us + us}, from, behind};
}

void SIM_Send(Chip& chip, std::span<const uint8_t> bytes, Moment at) {
    Moment t = std::max(at, chip.outputFree);
    const uint32_t rate =
        chip.options.checkRate && chip.mode != ChipMode::application ? chip.rate : 0;
    const uint32_t pace = paceRate(chip.rate != 0 ? chip.rate : chip.hostRate);
    const Moment start = t;
    uint32_t sent = 0;
    for (const uint8_t byte : bytes) {
        if (chip.options.pacing) {
            t = afterBytes(start, pace, ++sent);
        }
        chip.output.push_back({t, byte, rate});
        SIM_TranscriptByte(chip, false, byte, t);
    }
    chip.outputFree = t;
    chip.counts.bytesOut += bytes.size();
    chip.turnReported = false;
}

void CHIP_SetHostRate(Chip& chip, uint32_t rate) {
    chip.hostRate = rate;
}

void CHIP_Receive(Chip& chip, std::span<const uint8_t> bytes, Moment at) {
    CHIP_Receive(chip, bytes, at, at);
}

void CHIP_Receive(Chip& chip, std::span<const uint8_t> bytes, Moment at, Moment earliest) {
    const Moment start = std::max(at, chip.inputFree);
    Moment t = start;
    uint32_t sent = 0;
    for (const uint8_t byte : bytes) {
        if (chip.options.pacing) {
            t = afterBytes(start, paceRate(chip.hostRate), ++sent);
        }
        chip.input.push_back({t, byte, chip.hostRate, at, earliest});
    }
    chip.inputFree = t;
}

Moment CHIP_InputDone(const Chip& chip) {
    return chip.inputFree;
}

void CHIP_SetLines(Chip& chip, bool dtr, bool rts, Moment at) {
    CHIP_Run(chip, at);
    chip.now = at;
    if (chip.nextText.us == 0) { // powered before anybody listened
        chip.nextText = at;
    }
    const bool rises = dtr && !chip.dtr;
    const bool falls = !dtr && chip.dtr;
    if (chip.rts != rts) {
        chip.rtsChanged = at;
    }
    chip.dtr = dtr;
    chip.rts = rts;
    if (rises) {
        enterReset(chip, at);
    }
    if (falls) {
        leaveReset(chip, rts, at);
    }
}

std::optional<Moment> CHIP_NextOutput(Chip& chip, Moment until) {
    while (!chip.input.empty() && chip.input.front().at <= until) {
        if (!chip.output.empty() && chip.output.front().at <= chip.input.front().at) {
            break;
        }
        const PendingByte byte = chip.input.front();
        chip.input.pop_front();
        processByte(chip, byte);
    }
    if (chip.output.empty() && textIsDue(chip, until)) {
        sendText(chip, chip.nextText);
    }
    if (chip.output.empty() || chip.output.front().at > until) {
        return std::nullopt;
    }
    return chip.output.front().at;
}

std::optional<ChipOutput> CHIP_TakeOutput(Chip& chip, Moment now) {
    if (!CHIP_NextOutput(chip, now)) {
        return std::nullopt;
    }
    const SentByte byte = chip.output.front();
    chip.output.pop_front();
    if (byte.rate == 0 || chip.hostRate == 0 || !ratesDiffer(chip.hostRate, byte.rate)) {
        return ChipOutput{byte.at, byte.value};
    }
    chip.now = now;
    SIM_Violation(chip, formatText("the host listens at %u Bd to a byte sent at %u Bd",
                                   chip.hostRate, byte.rate));
    return ChipOutput{byte.at, garbled(byte.value)};
}

void CHIP_DropOutput(Chip& chip, Moment now) {
    while (CHIP_NextOutput(chip, now)) {
        chip.output.pop_front();
    }
}

void CHIP_Run(Chip& chip, Moment now) {
    while (textIsDue(chip, now)) {
        // Nobody has looked for long: what was sent meanwhile is lost.
        sendText(chip, std::max(chip.nextText, Moment{now.us - kTextBacklogUs}));
    }
    while (!chip.input.empty() && chip.input.front().at <= now) {
        const PendingByte byte = chip.input.front();
        chip.input.pop_front();
        processByte(chip, byte);
    }
}
