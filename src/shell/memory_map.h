// Where everything is in the flash of the selected device: its blocks, the data of the image, the
// areas of password and vectors, and what became of the chip. Once as texts, a row a block, and
// once as facts a pixel of a picture to scale, whose cost does not depend on how many there are.
// User-interface thread.
#pragma once

#include "data/address_range.h"

#include <cstdint>
#include <string>
#include <vector>

struct MapRow {
    int block = -1; // -1: what of the image lies outside of the blocks
    AddressRange range;
    bool selected = false;
    uint64_t dataBytes = 0; // of the image
    std::string contents;   // "120 bytes, password, vectors"
    std::string result;     // what became of it on the chip, the worst first
};

// The blocks in their order, and behind them one row more for data outside of them.
std::vector<MapRow> MEMORYMAP_Rows();

// What there is in some stretch of the flash, as bits of a MapFacts.
using MapFacts = uint32_t;
inline constexpr MapFacts kMapSelected = 1U << 0;
inline constexpr MapFacts kMapData = 1U << 1;
inline constexpr MapFacts kMapGap = 1U << 2; // a byte that the image does not hold
inline constexpr MapFacts kMapPassword = 1U << 3;
inline constexpr MapFacts kMapVectors = 1U << 4;
inline constexpr MapFacts kMapErased = 1U << 5;
inline constexpr MapFacts kMapWritten = 1U << 6;
inline constexpr MapFacts kMapVerified = 1U << 7;
inline constexpr MapFacts kMapUnknown = 1U << 8; // begun and not acknowledged
inline constexpr MapFacts kMapDiffers = 1U << 9;
inline constexpr MapFacts kMapProtected = 1U << 10;

// The flash laid out along a line of pixels: the blocks to scale, what no block covers left out.
class MapScale {
public:
    explicit MapScale(int pixels);

    struct Part { // blocks without a space between
        AddressRange range;
        uint64_t offset = 0; // of its first byte along the line
    };
    const std::vector<Part>& parts() const { return parts_; }
    // As many as asked for, but not more than the flash has bytes.
    int pixels() const { return pixels_; }
    // The pixels that a range takes, at least one where it lies in the flash: half open, empty
    // where it does not.
    struct Span {
        int first = 0;
        int end = 0;
    };
    Span spanOf(const AddressRange& range) const;
    // The addresses that a pixel stands for; empty without blocks.
    AddressRange rangeAt(int pixel) const;

private:
    Span spanIn(const Part& part, const AddressRange& range) const;
    int pixelOf(uint64_t offset) const;

    std::vector<Part> parts_;
    uint64_t total_ = 0; // bytes
    int pixels_ = 0;
};

// The facts of each pixel.
std::vector<MapFacts> MEMORYMAP_Pixels(const MapScale& scale);
// Address range of a pixel and what is there, in words.
std::string MEMORYMAP_Describe(const MapScale& scale, int pixel);
