// The flash of a virtual chip, by chip addresses, and the rules of handling it.
#pragma once

#include "device/device_record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

struct FlashArea {
    uint32_t start = 0;      // chip address
    uint32_t imageStart = 0; // where the program's image has it
    std::vector<uint8_t> bytes;
    bool isProtected = false;
};

// Bits of one byte that do not do what they are told.
struct BadBits {
    uint32_t address = 0;
    uint8_t ones = 0;  // always read as 1
    uint8_t zeros = 0; // always read as 0
};

struct Flash {
    std::vector<FlashArea> areas; // in the order of the device description
    std::vector<BadBits> badBits;
    bool overwritable = false; // a write erases what it writes over
    bool readProtected = false;
    uint32_t relocateFrom = 0; // chip addresses from here ...
    uint32_t relocateTo = 0;   // ... are image addresses from here
    uint32_t relocateLen = 0;
};

Flash SIMFLASH_Create(const DeviceRecord& device);
// The chip address of an image address.
uint32_t SIMFLASH_ToChip(const Flash& flash, uint32_t imageAddress);

bool SIMFLASH_Holds(const Flash& flash, uint32_t address, uint64_t count);
uint8_t SIMFLASH_Get(const Flash& flash, uint32_t address); // 0xFF outside
void SIMFLASH_Put(Flash& flash, uint32_t address, uint8_t value);
// The area with exactly that start and size; null when there is none.
FlashArea* SIMFLASH_FindArea(Flash& flash, uint32_t start, uint32_t size);
const FlashArea* SIMFLASH_AreaOf(const Flash& flash, uint32_t address);

// Erases the area but for its last `keep` bytes.
void SIMFLASH_Erase(FlashArea& area, size_t keep);
// Whether data would be programmed over a byte that is not erased; its address.
std::optional<uint32_t> SIMFLASH_FindUnerased(const Flash& flash, uint32_t address,
                                              std::span<const uint8_t> data);
// Programs as the cells do it: bits only go to 0 unless the flash is overwritable.
void SIMFLASH_Program(Flash& flash, uint32_t address, std::span<const uint8_t> data);
std::optional<uint32_t> SIMFLASH_FindNotBlank(const Flash& flash, uint32_t start, uint64_t size);
bool SIMFLASH_IsBlank(const Flash& flash);

// The sum that the boot ROM reports: from the first area's start to the last one's end, what lies
// between areas counted as erased.
uint16_t SIMFLASH_BootSum(const Flash& flash);
uint16_t SIMFLASH_AddSum(const Flash& flash, uint32_t start, uint64_t size, uint16_t sum);
uint16_t SIMFLASH_AddCrc(const Flash& flash, uint32_t start, uint64_t size, uint16_t crc);
