// The loader's frames: EB ED, length, payload, sum, EC.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>

namespace {

constexpr uint8_t kFrameStart = 0xEB;
constexpr uint8_t kFrameSecond = 0xED;
constexpr uint8_t kFrameEnd = 0xEC;
constexpr size_t kHeader = 4;
constexpr size_t kMaxPayload = 2048;
constexpr int64_t kFrameSilenceUs = 500000; // an unfinished frame is forgotten after it

uint8_t frameSum(std::span<const uint8_t> bytes) {
    uint8_t sum = 0;
    for (const uint8_t byte : bytes) {
        sum = static_cast<uint8_t>(sum + byte);
    }
    return sum;
}

void dropFrame(Chip& chip, const std::string& why) {
    SIM_Violation(chip, why);
    chip.loader.frame.clear();
}

size_t payloadLength(const std::vector<uint8_t>& frame) {
    return frame[2] | static_cast<size_t>(frame[3]) << 8;
}

void finishFrame(Chip& chip, Moment at) {
    const std::vector<uint8_t> frame = std::exchange(chip.loader.frame, {});
    const std::span<const uint8_t> bytes = frame;
    const size_t length = payloadLength(frame);
    const bool good = frame.back() == kFrameEnd &&
                      frameSum(bytes.subspan(2, length + 2)) == frame[frame.size() - 2];
    if (!good) {
        SIM_Violation(chip, "frame with a wrong checksum or end");
        SIM_FrameReply(chip, ChipStep::any, {0xF1}, at);
        return;
    }
    chip.counts.frames++;
    if (length == 0) {
        SIM_Violation(chip, "frame without a command");
        SIM_FrameReply(chip, ChipStep::any, {0xF1}, at);
        return;
    }
    SIM_LoaderCommand(chip, bytes.subspan(kHeader, length), at);
}

// What a fault makes of the payload, before the frame is built around it.
void spoilPayload(const Chip& chip, ChipStep step, uint32_t number, std::vector<uint8_t>& payload) {
    if (SIM_FaultAt(chip, FaultKind::nak, step, number)) {
        payload = {0xF1};
    }
    if (const ChipFault* fault = SIM_FaultAt(chip, FaultKind::errorReply, step, number)) {
        payload = {0xF3, static_cast<uint8_t>(fault->value)};
        for (unsigned shift = 0; shift < 32; shift += 8) {
            payload.push_back(static_cast<uint8_t>(fault->address >> shift));
        }
        payload.push_back(SIMFLASH_Get(chip.flash, fault->address));
    }
    if (const ChipFault* fault = SIM_FaultAt(chip, FaultKind::longReply, step, number)) {
        payload.insert(payload.end(), fault->value, 0x00);
    }
}

} // namespace

void SIM_LoaderByte(Chip& chip, uint8_t value, Moment at) {
    std::vector<uint8_t>& frame = chip.loader.frame;
    if (!frame.empty() && at.us - chip.lastTraffic.us > kFrameSilenceUs) {
        dropFrame(chip, "frame left unfinished");
    }
    if (frame.empty() && value != kFrameStart) {
        SIM_Violation(chip, formatText("byte %02X where a frame begins", unsigned{value}));
        return;
    }
    frame.push_back(value);
    if (frame.size() == 2 && value != kFrameSecond) {
        dropFrame(chip, formatText("byte %02X as second byte of a frame", unsigned{value}));
    } else if (frame.size() == kHeader && payloadLength(frame) > kMaxPayload) {
        dropFrame(chip, formatText("frame of %zu bytes", payloadLength(frame)));
    } else if (frame.size() >= kHeader && frame.size() == kHeader + payloadLength(frame) + 2) {
        finishFrame(chip, at);
    }
}

void SIM_FrameReply(Chip& chip, ChipStep step, std::vector<uint8_t> payload, Moment at) {
    if (chip.silent) {
        return;
    }
    chip.replies[0]++;
    const uint32_t number = step == ChipStep::any ? 0 : ++chip.replies[static_cast<size_t>(step)];
    spoilPayload(chip, step, number, payload);
    std::vector<uint8_t> frame = {kFrameStart, kFrameSecond, static_cast<uint8_t>(payload.size()),
                                  static_cast<uint8_t>(payload.size() >> 8)};
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(frameSum(std::span(frame).subspan(2)));
    frame.push_back(kFrameEnd);
    ReplyPlan plan{std::move(frame), at};
    // The frame's own replies count as frame steps; those to a spoilt frame belong to none.
    if (SIM_SpoilReply(chip, step == ChipStep::any ? ChipStep::identify : step, number, plan)) {
        SIM_Send(chip, plan.bytes, plan.at);
    }
}
