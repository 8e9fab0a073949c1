// Copies of parts of the memory image, to put them back, and lists of where two states of it
// differ. A copy costs its bytes and a few more an area; nothing is kept a byte. Any thread.
#pragma once

#include "data/address_range.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// What the image held in some ranges. All lists ascend and do not overlap.
struct ImageCopy {
    std::vector<AddressRange> ranges; // what it is a copy of, gaps included
    std::vector<AddressRange> areas;  // what of them was held
    std::vector<uint8_t> bytes;       // that of the areas, one behind the other

    size_t footprint() const; // in bytes of memory
};

// All addresses.
AddressRange IMAGECOPY_Everything();

ImageCopy HEXDATA_TakeCopy(const std::vector<AddressRange>& ranges);
// While it lives, what is read from files becomes an image beside the one of the process, which
// stays as it is and is what everybody else sees. User-interface thread, one at a time, while no
// operation runs on the target.
class ImageBeside {
public:
    ImageBeside();
    ~ImageBeside();
    ImageBeside(const ImageBeside&) = delete;
    ImageBeside& operator=(const ImageBeside&) = delete;

    ImageCopy copy() const; // of all addresses

private:
    std::unique_ptr<class AreaMap> areas_;
};

// Puts the copy in place of what the image holds in its ranges, which becomes the copy. Nobody sees
// the image in between.
void HEXDATA_Exchange(ImageCopy& copy);

// Where the image differs from the copy within its ranges: another byte, or held by one alone.
// Differences that lie no more than `join` addresses apart are listed as one.
std::vector<AddressRange> HEXDATA_Differences(const ImageCopy& copy, uint32_t join);
// The same copy, of these ranges alone; they lie within its own.
ImageCopy IMAGECOPY_Reduce(const ImageCopy& copy, const std::vector<AddressRange>& ranges);
