#include "sim/flash.h"

#include <algorithm>

namespace {

constexpr uint8_t kErased = 0xFF;

bool covers(const FlashArea& area, uint32_t address) {
    return address >= area.start && address - area.start < area.bytes.size();
}

uint8_t applyBadBits(const Flash& flash, uint32_t address, uint8_t value) {
    for (const BadBits& bad : flash.badBits) {
        if (bad.address == address) {
            value = static_cast<uint8_t>((value | bad.ones) & ~bad.zeros);
        }
    }
    return value;
}

void addArea(Flash& flash, const FlashBlock& block) {
    if (block.Len == 0) {
        return;
    }
    FlashArea area;
    area.imageStart = block.Start;
    area.start = SIMFLASH_ToChip(flash, block.Start);
    area.bytes.assign(block.Len, kErased);
    flash.areas.push_back(std::move(area));
}

// One byte on: the high byte is divided out bit by bit, then the new byte comes in from below.
uint16_t crcStep(uint16_t crc, uint8_t byte) {
    for (int bit = 0; bit < 8; bit++) {
        const bool carry = (crc & 0x8000) != 0;
        crc = static_cast<uint16_t>(crc << 1);
        if (carry) {
            crc ^= 0x1021;
        }
    }
    return crc ^ byte;
}

} // namespace

Flash SIMFLASH_Create(const DeviceRecord& device) {
    Flash flash;
    flash.relocateFrom = device.RelocateFrom;
    flash.relocateTo = device.RelocateTo;
    flash.relocateLen = device.RelocateLen;
    // A loader without an erase command erases by filling, so its writes must replace.
    flash.overwritable = device.FLASHIsEE != 0 || device.SprtErase == 0;
    for (const FlashBlock& block : device.aBlock) {
        addArea(flash, block);
    }
    return flash;
}

uint32_t SIMFLASH_ToChip(const Flash& flash, uint32_t imageAddress) {
    const uint32_t offset = imageAddress - flash.relocateTo;
    if (imageAddress >= flash.relocateTo && offset < flash.relocateLen) {
        return flash.relocateFrom + offset;
    }
    return imageAddress;
}

const FlashArea* SIMFLASH_AreaOf(const Flash& flash, uint32_t address) {
    const auto found = std::ranges::find_if(
        flash.areas, [address](const FlashArea& area) { return covers(area, address); });
    return found == flash.areas.end() ? nullptr : &*found;
}

bool SIMFLASH_Holds(const Flash& flash, uint32_t address, uint64_t count) {
    uint64_t at = address;
    const uint64_t end = at + count;
    while (at < end) {
        const FlashArea* area =
            at > UINT32_MAX ? nullptr : SIMFLASH_AreaOf(flash, static_cast<uint32_t>(at));
        if (area == nullptr) {
            return false;
        }
        at = uint64_t{area->start} + area->bytes.size();
    }
    return true;
}

uint8_t SIMFLASH_Get(const Flash& flash, uint32_t address) {
    const FlashArea* area = SIMFLASH_AreaOf(flash, address);
    if (area == nullptr) {
        return kErased;
    }
    const uint8_t value = area->bytes[address - area->start];
    return flash.badBits.empty() ? value : applyBadBits(flash, address, value);
}

void SIMFLASH_Put(Flash& flash, uint32_t address, uint8_t value) {
    for (FlashArea& area : flash.areas) {
        if (covers(area, address)) {
            area.bytes[address - area.start] = value;
        }
    }
}

FlashArea* SIMFLASH_FindArea(Flash& flash, uint32_t start, uint32_t size) {
    const auto found = std::ranges::find_if(flash.areas, [&](const FlashArea& area) {
        return area.start == start && area.bytes.size() == size;
    });
    return found == flash.areas.end() ? nullptr : &*found;
}

void SIMFLASH_Erase(FlashArea& area, size_t keep) {
    const size_t count = area.bytes.size() - std::min(keep, area.bytes.size());
    std::fill_n(area.bytes.begin(), count, kErased);
}

std::optional<uint32_t> SIMFLASH_FindUnerased(const Flash& flash, uint32_t address,
                                              std::span<const uint8_t> data) {
    if (flash.overwritable) {
        return std::nullopt;
    }
    for (const uint8_t byte : data) {
        // An 0xFF leaves its cell as it is: that is how a page's unused bytes are filled up.
        if (byte != kErased && SIMFLASH_Get(flash, address) != kErased) {
            return address;
        }
        address++;
    }
    return std::nullopt;
}

void SIMFLASH_Program(Flash& flash, uint32_t address, std::span<const uint8_t> data) {
    for (const uint8_t byte : data) {
        const uint8_t old = flash.overwritable ? kErased : SIMFLASH_Get(flash, address);
        SIMFLASH_Put(flash, address, old & byte);
        address++;
    }
}

std::optional<uint32_t> SIMFLASH_FindNotBlank(const Flash& flash, uint32_t start, uint64_t size) {
    for (uint64_t i = 0; i < size; i++) {
        const auto address = static_cast<uint32_t>(start + i);
        if (SIMFLASH_Get(flash, address) != kErased) {
            return address;
        }
    }
    return std::nullopt;
}

bool SIMFLASH_IsBlank(const Flash& flash) {
    return std::ranges::all_of(flash.areas, [&flash](const FlashArea& area) {
        return !SIMFLASH_FindNotBlank(flash, area.start, area.bytes.size());
    });
}

uint16_t SIMFLASH_BootSum(const Flash& flash) {
    if (flash.areas.empty()) {
        return 0;
    }
    uint32_t sum = 0;
    uint32_t held = 0;
    for (const FlashArea& area : flash.areas) {
        sum += SIMFLASH_AddSum(flash, area.start, area.bytes.size(), 0);
        held += static_cast<uint32_t>(area.bytes.size());
    }
    const FlashArea& last = flash.areas.back();
    const uint32_t span =
        last.imageStart + static_cast<uint32_t>(last.bytes.size()) - flash.areas.front().imageStart;
    return static_cast<uint16_t>(sum + (span - held) * kErased);
}

uint16_t SIMFLASH_AddSum(const Flash& flash, uint32_t start, uint64_t size, uint16_t sum) {
    for (uint64_t i = 0; i < size; i++) {
        sum = static_cast<uint16_t>(sum + SIMFLASH_Get(flash, static_cast<uint32_t>(start + i)));
    }
    return sum;
}

uint16_t SIMFLASH_AddCrc(const Flash& flash, uint32_t start, uint64_t size, uint16_t crc) {
    for (uint64_t i = 0; i < size; i++) {
        crc = crcStep(crc, SIMFLASH_Get(flash, static_cast<uint32_t>(start + i)));
    }
    return crc;
}
