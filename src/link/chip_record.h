// What became of the chip's flash since the device was chosen: which addresses were erased,
// written, found to be equal to the image or not, and which are protected. It holds what the chip
// has acknowledged or answered, by addresses of the image, and is forgotten when nobody can tell
// any more whether the same chip is there. Any thread.
#pragma once

#include "data/address_range.h"

#include <cstdint>
#include <string>
#include <vector>

// The last that was done; a later one takes the place of an earlier one. `unknown`: it was begun
// and not acknowledged.
enum class ChipMark : uint8_t { none, erased, written, verified, differs, unknown };

struct ChipFacts {
    ChipMark mark = ChipMark::none;
    bool isProtected = false;
    bool operator==(const ChipFacts&) const = default;
};

struct ChipStretch {
    AddressRange range;
    ChipFacts facts;
};

// What was erased is not protected: the chip would have refused.
void CHIPRECORD_Note(const AddressRange& range, ChipMark mark);
void CHIPRECORD_NoteProtected(const AddressRange& range);
// The stretches of which something is known, in ascending order.
std::vector<ChipStretch> CHIPRECORD_Get();
// Another number whenever something has changed.
uint64_t CHIPRECORD_Revision();

// Nothing is known any more.
void CHIPRECORD_Forget();
// Which chip it is about, by device and port: another name than the last one forgets.
void CHIPRECORD_SetChip(const std::string& name);
