// The ways in which a chip misbehaves.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr std::array<std::string_view, static_cast<size_t>(FaultKind::count_)> kKindNames = {
    "no-reply",  "wrong-reply", "bad-checksum",    "short-reply",   "long-reply",      "garbage",
    "slow",      "nak",         "error-reply",     "wrong-product", "refuse-password", "stuck-bits",
    "dead-bits", "lost-write",  "misplaced-write", "shifted-write", "short-erase",     "power-cut",
    "die",       "die-at-byte", "reset-at-byte",   "late-match"};

constexpr std::array<std::string_view, static_cast<size_t>(ChipStep::count_)> kStepNames = {
    "any",       "match",        "baudrate",      "sum",         "product",      "ram",
    "password",  "header",       "data",          "rewrite",     "enable",       "cleared",
    "rewritten", "erase",        "erased",        "status",      "read-protect", "read-protected",
    "protect",   "protect-done", "identify",      "erase-block", "program",      "read",
    "crc",       "blank-check",  "protect-block", "frame-sum"};

template <size_t N>
std::optional<size_t> indexOf(const std::array<std::string_view, N>& names, std::string_view name) {
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<size_t>(found - names.begin());
}

template <size_t N>
std::string joined(const std::array<std::string_view, N>& names) {
    std::string text;
    for (const std::string_view name : names) {
        text.append(text.empty() ? "" : " ").append(name);
    }
    return text;
}

bool readNumber(std::string_view text, int base, uint32_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc{} && end == text.data() + text.size() && !text.empty();
}

// The part of `text` behind the last `mark`, cut off it; empty when there is none.
std::string_view cutBehind(std::string_view& text, char mark, bool& found) {
    const size_t at = text.find(mark);
    found = at != std::string_view::npos;
    if (!found) {
        return {};
    }
    const std::string_view tail = text.substr(at + 1);
    text = text.substr(0, at);
    return tail;
}

bool readAttribute(std::string_view text, ChipFault& fault) {
    if (text.starts_with("address=")) {
        return readNumber(text.substr(8), 16, fault.address);
    }
    if (text.starts_with("value=")) {
        return readNumber(text.substr(6), 16, fault.value);
    }
    return false;
}

bool readHead(std::string_view head, ChipFault& fault, std::string& error) {
    bool found = false;
    const std::string_view number = cutBehind(head, '#', found);
    if (found && !readNumber(number, 10, fault.n)) {
        error = formatText("'%s' is not a number", std::string(number).c_str());
        return false;
    }
    const std::string_view stepName = cutBehind(head, '@', found);
    const auto step = indexOf(kStepNames, found ? stepName : "any");
    if (!step) {
        error = formatText("unknown step '%s'", std::string(stepName).c_str());
        return false;
    }
    const auto kind = indexOf(kKindNames, head);
    if (!kind) {
        error = formatText("unknown fault '%s'", std::string(head).c_str());
        return false;
    }
    fault.kind = static_cast<FaultKind>(*kind);
    fault.step = static_cast<ChipStep>(*step);
    return true;
}

bool strikes(const ChipFault& fault, uint32_t number) {
    return fault.n == 0 || fault.n == number;
}

// Without a step every reply counts, whichever step it belongs to.
uint32_t countOf(const Chip& chip, const ChipFault& fault, uint32_t number) {
    return fault.step == ChipStep::any ? chip.replies[0] : number;
}

bool isFrameStep(ChipStep step) {
    return step >= ChipStep::identify;
}

void spoilBytes(Chip& chip, const ChipFault& fault, ChipStep step, ReplyPlan& plan) {
    std::vector<uint8_t>& bytes = plan.bytes;
    switch (fault.kind) {
    case FaultKind::wrongReply:
        bytes.front() ^= fault.value == 0 ? uint8_t{0x55} : static_cast<uint8_t>(fault.value);
        break;
    case FaultKind::badChecksum:
        bytes[isFrameStep(step) ? bytes.size() - 2 : bytes.size() - 1]++;
        break;
    case FaultKind::wrongProduct:
        if (step == ChipStep::product) {
            bytes[std::min<size_t>(chip.device.PIValue2, bytes.size() - 1)] ^= 0x01;
        }
        break;
    case FaultKind::shortReply:
        bytes.resize(std::min<size_t>(fault.value, bytes.size()));
        break;
    case FaultKind::longReply:
        if (!isFrameStep(step)) {
            bytes.insert(bytes.end(), fault.value, 0x00);
        }
        break;
    case FaultKind::garbage: {
        std::vector<uint8_t> noise(fault.value == 0 ? 1 : fault.value);
        std::ranges::generate(noise, [&chip] { return static_cast<uint8_t>(chip.random() >> 8); });
        bytes.insert(bytes.begin(), noise.begin(), noise.end());
        break;
    }
    case FaultKind::slow:
        plan.at.us += int64_t{fault.value} * 1000;
        break;
    default:
        break;
    }
}

} // namespace

bool CHIP_ParseFault(std::string_view text, ChipFault& fault, std::string& error) {
    fault = ChipFault{};
    error.clear();
    bool more = false;
    std::string_view rest = cutBehind(text, ',', more);
    if (!readHead(text, fault, error)) {
        return false;
    }
    while (more) {
        std::string_view attribute = rest;
        rest = cutBehind(attribute, ',', more);
        if (!readAttribute(attribute, fault)) {
            error = formatText("'%s' is neither address=HEX nor value=HEX",
                               std::string(attribute).c_str());
            return false;
        }
    }
    return true;
}

std::string CHIP_FaultKindNames() {
    return joined(kKindNames);
}

std::string CHIP_StepNames() {
    return joined(kStepNames);
}

const ChipFault* SIM_FaultAt(const Chip& chip, FaultKind kind, ChipStep step, uint32_t number) {
    for (const ChipFault& fault : chip.options.faults) {
        const bool here = fault.step == ChipStep::any || fault.step == step;
        if (fault.kind == kind && here && strikes(fault, countOf(chip, fault, number))) {
            return &fault;
        }
    }
    return nullptr;
}

const ChipFault* SIM_FaultNumber(const Chip& chip, FaultKind kind, uint32_t number) {
    for (const ChipFault& fault : chip.options.faults) {
        if (fault.kind == kind && strikes(fault, number)) {
            return &fault;
        }
    }
    return nullptr;
}

const ChipFault* SIM_FaultOf(const Chip& chip, FaultKind kind) {
    const auto found = std::ranges::find(chip.options.faults, kind, &ChipFault::kind);
    return found == chip.options.faults.end() ? nullptr : &*found;
}

bool SIM_SpoilReply(Chip& chip, ChipStep step, uint32_t number, ReplyPlan& plan) {
    if (SIM_FaultAt(chip, FaultKind::die, step, number)) {
        chip.silent = true;
        return false;
    }
    if (SIM_FaultAt(chip, FaultKind::noReply, step, number)) {
        return false;
    }
    for (const ChipFault& fault : chip.options.faults) {
        const bool here = fault.step == ChipStep::any || fault.step == step;
        if (here && strikes(fault, countOf(chip, fault, number)) && !plan.bytes.empty()) {
            spoilBytes(chip, fault, step, plan);
        }
    }
    return true;
}

bool SIM_PowerFails(Chip& chip) {
    chip.flashOperations++;
    if (!SIM_FaultNumber(chip, FaultKind::powerCut, chip.flashOperations)) {
        return false;
    }
    chip.silent = true;
    return true;
}

void SIM_PlaceBadBits(Chip& chip) {
    chip.flash.badBits.clear();
    for (const ChipFault& fault : chip.options.faults) {
        const auto bits = static_cast<uint8_t>(fault.value);
        if (fault.kind == FaultKind::stuckBits) {
            chip.flash.badBits.push_back({fault.address, bits, 0});
        }
        if (fault.kind == FaultKind::deadBits) {
            chip.flash.badBits.push_back({fault.address, 0, bits});
        }
    }
}
