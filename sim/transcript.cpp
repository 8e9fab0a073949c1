// The transcript: a line for every run of bytes in one direction, and a line for every note.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <utility>

namespace {

constexpr size_t kBytesPerLine = 32;

std::string stamp(Moment at) {
    return formatText("%10lld.%03lld ", static_cast<long long>(at.us / 1000),
                      static_cast<long long>(at.us % 1000));
}

} // namespace

void CHIP_FlushTranscript(Chip& chip) {
    TranscriptState& state = chip.transcript;
    if (state.line.empty()) {
        return;
    }
    const std::string line =
        stamp(state.start) + (state.received ? "host:" : "chip:") + std::exchange(state.line, {});
    chip.options.transcript(line);
}

void SIM_TranscriptByte(Chip& chip, bool received, uint8_t value, Moment at) {
    if (!chip.options.transcript) {
        return;
    }
    TranscriptState& state = chip.transcript;
    if (state.received != received || state.line.size() >= 3 * kBytesPerLine) {
        CHIP_FlushTranscript(chip);
    }
    if (state.line.empty()) {
        state.start = at;
    }
    state.received = received;
    state.line += formatText(" %02X", value);
}

void SIM_TranscriptNote(Chip& chip, const std::string& text, Moment at) {
    if (!chip.options.transcript) {
        return;
    }
    CHIP_FlushTranscript(chip);
    chip.options.transcript(stamp(at) + "note: " + text);
}
