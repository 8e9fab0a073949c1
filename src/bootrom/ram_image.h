// The RAM image: the loader program that comes with a device description, as a text file. Reading
// the file, and taking both of its formats apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A record of a TYPE_A image as it goes to the boot ROM: 3A, count, address, type, data, checksum.
struct RamRecord {
    std::vector<uint8_t> bytes;
    size_t consumed = 0; // characters of the text up to its end
    uint8_t count() const { return bytes[1]; }
    uint16_t address() const { return static_cast<uint16_t>(bytes[2] << 8 | bytes[3]); }
};

// The records of a TYPE_A image; `malformed` when the text goes wrong behind the last of them.
struct RamImageA {
    std::vector<RamRecord> records;
    size_t length = 0; // characters of the text
    bool malformed = false;
};

// A stretch of a TYPE_B image.
struct RamBlock {
    uint32_t address = 0;
    std::vector<uint8_t> data;
};

struct RamImageB {
    std::vector<RamBlock> blocks; // ascending, not overlapping
    uint32_t start = 0;
    uint32_t size = 0; // bytes from start to the end of the last block, gaps included
};

// Reads the file; false when that failed, reported.
bool _LoadRamImage(const std::string& path, std::string& text);

RamImageA parseRamImageA(std::string_view text);
// Whether a TYPE_A image has data and all of it lies inside the device's RAM range.
bool _RamImageFits(std::string_view text);
// The error text, or empty: a TYPE_B image that cannot be sent whole and in order is not begun.
std::string parseRamImageB(std::string_view text, RamImageB& image);
