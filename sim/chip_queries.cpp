// What a test or a user asks a virtual chip.
#include "sim/chip.h"
#include "sim/chip_state.h"

ChipMode CHIP_GetMode(const Chip& chip) {
    return chip.mode;
}

const std::vector<ChipViolation>& CHIP_GetViolations(const Chip& chip) {
    return chip.violations;
}

const ChipCounts& CHIP_GetCounts(const Chip& chip) {
    return chip.counts;
}

const std::vector<uint8_t>& CHIP_GetApplicationInput(const Chip& chip) {
    return chip.applicationInput;
}

bool CHIP_IsReadProtected(const Chip& chip) {
    return chip.flash.readProtected;
}

bool CHIP_IsBlockProtected(const Chip& chip, size_t block) {
    return block < chip.flash.areas.size() && chip.flash.areas[block].isProtected;
}

bool CHIP_IsBlank(const Chip& chip) {
    return SIMFLASH_IsBlank(chip.flash);
}

std::vector<uint8_t> CHIP_GetFlash(const Chip& chip, uint32_t address, uint32_t count) {
    std::vector<uint8_t> bytes(count);
    for (uint32_t i = 0; i < count; i++) {
        bytes[i] = SIMFLASH_Get(chip.flash, SIMFLASH_ToChip(chip.flash, address + i));
    }
    return bytes;
}

bool CHIP_PutFlash(Chip& chip, uint32_t address, std::span<const uint8_t> bytes) {
    bool inside = true;
    for (const uint8_t byte : bytes) {
        const uint32_t at = SIMFLASH_ToChip(chip.flash, address++);
        inside = SIMFLASH_AreaOf(chip.flash, at) != nullptr && inside;
        SIMFLASH_Put(chip.flash, at, byte);
    }
    return inside;
}

uint32_t CHIP_FlashStart(const Chip& chip) {
    return chip.flash.areas.empty() ? 0 : chip.flash.areas.front().imageStart;
}

uint64_t CHIP_FlashSpan(const Chip& chip) {
    if (chip.flash.areas.empty()) {
        return 0;
    }
    const FlashArea& last = chip.flash.areas.back();
    return static_cast<uint32_t>(last.imageStart + static_cast<uint32_t>(last.bytes.size()) -
                                 CHIP_FlashStart(chip));
}

void CHIP_SetFaults(Chip& chip, const std::vector<ChipFault>& faults) {
    chip.options.faults = faults;
    chip.replies.fill(0);
    chip.flashOperations = 0;
    chip.programOperations = 0;
    chip.eraseOperations = 0;
    SIM_PlaceBadBits(chip);
}
