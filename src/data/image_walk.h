// The held bytes of a range of the memory image, cut into what one record takes. For operations of
// the user-interface thread while nobody changes the image.
#pragma once

#include "data/hexdata.h"

#include <algorithm>
#include <cstdint>
#include <span>

// Calls `piece`(address, bytes) for every piece of at most `length` bytes, in ascending order; a
// piece never spans a gap.
template <class Piece>
void forEachPiece(uint32_t length, const AddressRange& range, const Piece& piece) {
    for (uint64_t next = range.start; next < range.end;) {
        auto address = static_cast<uint32_t>(next);
        const uint8_t* data = nullptr;
        const uint64_t held = HEXDATA_GetData(address, data);
        if (held == 0 || address >= range.end) {
            return;
        }
        const auto count = static_cast<uint32_t>(std::min(held, range.end - address));
        const std::span run(data, count);
        for (uint32_t at = 0; at < count;) {
            const uint32_t size = std::min(length, count - at);
            piece(address + at, run.subspan(at, size));
            at += size;
        }
        next = uint64_t{address} + count;
    }
}
