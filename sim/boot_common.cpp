// What the boot ROMs of both families have in common.
#include "platform/format.h"
#include "sim/chip_state.h"

#include <algorithm>

namespace {

// The reply to the product information command: a count, with the described bytes in their place.
std::vector<uint8_t> productReply(const DeviceRecord& device) {
    std::vector<uint8_t> reply(device.PIValue1);
    for (size_t i = 0; i < reply.size(); i++) {
        reply[i] = static_cast<uint8_t>(0x40 + i);
    }
    const std::string& text = device.PIText;
    for (size_t i = 0; 2 * i + 1 < text.size() && device.PIValue2 + i < reply.size(); i++) {
        const std::string pair = text.substr(2 * i, 2);
        reply[device.PIValue2 + i] = static_cast<uint8_t>(std::strtoul(pair.c_str(), nullptr, 16));
    }
    return reply;
}

void takeMatch(Chip& chip, Moment at) {
    const uint8_t value = chip.boot.bytes.front();
    const BootFamily& family = *chip.family;
    SIM_WantMatch(chip);
    if (value != family.matchByte) {
        SIM_Violation(chip, formatText("byte %02X where the boot ROM is matched", unsigned{value}));
        chip.rate = family.matchRate;
        return;
    }
    const ChipFault* late = SIM_FaultOf(chip, FaultKind::lateMatch);
    if (late && ++chip.boot.matchAttempts < late->n) {
        return;
    }
    SIM_BootReply(chip, ChipStep::match, {family.matchByte}, at);
    family.matched(chip, at);
}

void takeCommand(Chip& chip, Moment at) {
    chip.counts.bootCommands++;
    if (!SIM_ProductInfo(chip, chip.boot.bytes.front(), at)) {
        chip.family->command(chip, at);
    }
}

} // namespace

void SIM_Want(Chip& chip, size_t count, BootStep step) {
    chip.boot.bytes.clear();
    chip.boot.wanted = count;
    chip.boot.step = step;
    chip.boot.each = nullptr;
}

void SIM_PieceBegins(Chip& chip) {
    BootRom& boot = chip.boot;
    const PendingByte& byte = chip.byte;
    const int64_t pause = byte.handed.us - boot.piece.us;
    if (chip.options.strict && boot.pieceBytes > 0 && pause < kPieceUs) {
        SIM_Violation(chip,
                      formatText("loader data sent %lld.%lld ms after the piece before, 10 are due",
                                 static_cast<long long>(pause / 1000),
                                 static_cast<long long>(pause / 100 % 10)));
    }
    boot.piece = byte.earliest;
    boot.pieceBytes = 0;
}

void SIM_WantMatch(Chip& chip) {
    SIM_Want(chip, 1, takeMatch);
}

void SIM_WantCommand(Chip& chip) {
    chip.boot.matching = false;
    SIM_Want(chip, 1, takeCommand);
}

void SIM_BootByte(Chip& chip, uint8_t value, Moment at) {
    BootRom& boot = chip.boot;
    if (boot.refused) {
        return;
    }
    boot.bytes.push_back(value);
    if (boot.each != nullptr) {
        boot.each(chip, at);
    }
    if (boot.bytes.size() == boot.wanted) {
        boot.step(chip, at);
    }
}

void SIM_BootReply(Chip& chip, ChipStep step, std::vector<uint8_t> bytes, Moment at) {
    if (chip.silent) {
        return;
    }
    chip.replies[0]++;
    const uint32_t number = ++chip.replies[static_cast<size_t>(step)];
    ReplyPlan plan{std::move(bytes), at};
    if (SIM_SpoilReply(chip, step, number, plan)) {
        SIM_Send(chip, plan.bytes, plan.at);
    }
}

void SIM_UnknownCommand(Chip& chip, uint8_t command) {
    const bool repeatedMatch = chip.options.resyncByMatch && command == chip.family->matchByte;
    // A host that was answered late has sent more matching bytes than it needed.
    if (!repeatedMatch) {
        SIM_Violation(chip, formatText("boot ROM command %02X, which the chip does not have",
                                       static_cast<unsigned>(command)));
    }
    SIM_WantCommand(chip);
}

bool SIM_ProductInfo(Chip& chip, uint8_t command, Moment at) {
    if (chip.device.PICode == 0 || command != chip.device.PICode) {
        return false;
    }
    SIM_BootReply(chip, ChipStep::product, productReply(chip.device), at);
    SIM_WantCommand(chip);
    return true;
}

Moment SIM_EraseChip(Chip& chip, Moment at) {
    chip.counts.erases++;
    const ChipFault* shortErase =
        SIM_FaultNumber(chip, FaultKind::shortErase, ++chip.eraseOperations);
    const bool powerFails = SIM_PowerFails(chip);
    for (FlashArea& area : chip.flash.areas) {
        size_t keep = powerFails ? area.bytes.size() / 2 : 0;
        if (shortErase && &area == &chip.flash.areas.back()) {
            keep = std::max<size_t>(shortErase->value, 1);
        }
        SIMFLASH_Erase(area, keep);
        area.isProtected = false;
    }
    chip.flash.readProtected = false;
    return Moment{at.us + chip.options.eraseChipUs};
}

Moment SIM_AfterChecksum(const Chip& chip, uint64_t bytes, Moment at) {
    return Moment{at.us + static_cast<int64_t>(bytes * chip.options.checksumUsPerKiB / 1024)};
}

uint64_t SIM_FlashBytes(const Chip& chip) {
    uint64_t bytes = 0;
    for (const FlashArea& area : chip.flash.areas) {
        bytes += area.bytes.size();
    }
    return bytes;
}

bool SIM_PasswordRefused(Chip& chip, std::span<const uint8_t> sent,
                         std::span<const uint8_t> expected) {
    const bool right = std::ranges::equal(sent, expected);
    const uint32_t number = chip.replies[static_cast<size_t>(ChipStep::password)] + 1;
    const bool refused =
        !right || SIM_FaultAt(chip, FaultKind::refusePassword, ChipStep::password, number);
    SIM_TranscriptNote(chip, refused ? "password refused" : "password accepted", chip.now);
    return refused;
}

uint8_t SIM_TwosComplement(std::span<const uint8_t> bytes) {
    uint8_t sum = 0;
    for (const uint8_t byte : bytes) {
        sum = static_cast<uint8_t>(sum + byte);
    }
    return static_cast<uint8_t>(-sum);
}
