// The held bytes of the memory image, cut into what one record takes. For operations of the
// user-interface thread while nobody changes the image.
#pragma once

#include "data/hexdata.h"

#include <algorithm>
#include <cstdint>
#include <span>

// Calls `piece`(address, bytes) for every piece of at most `length` bytes, in ascending order; a
// piece never spans a gap.
template <class Piece>
void forEachPiece(uint32_t length, const Piece& piece) {
    uint32_t address = 0;
    const uint8_t* data = nullptr;
    uint32_t count = HEXDATA_GetData(address, data);
    while (count > 0) {
        const std::span run(data, count);
        for (uint32_t at = 0; at < count;) {
            const uint32_t size = std::min(length, count - at);
            piece(address + at, run.subspan(at, size));
            at += size;
        }
        if (address > UINT32_MAX - count) { // the area ends with the address space
            return;
        }
        address += count;
        count = HEXDATA_GetData(address, data);
    }
}
