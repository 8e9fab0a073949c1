// The one image's areas and their lock, for the modules of this folder that work on it in one go.
// Everybody else uses hexdata.h.
#pragma once

#include "data/address_range.h"
#include "data/area_map.h"

#include <algorithm>
#include <mutex>
#include <span>

// Holds the image's lock while it lives.
class ImageLock {
public:
    ImageLock();
    AreaMap& areas() const;

private:
    std::unique_lock<std::mutex> lock_;
};

// What HEXDATA_AddData, _GetRoom and _Clear work on from here on, with a consent of its own;
// nullptr: the one image again.
void IMAGESTORE_FillBeside(AreaMap* beside);

// Calls `held`(address, bytes) and `gap`(address, end) for the pieces of a range in ascending
// order.
template <class Held, class Gap>
void IMAGESTORE_Walk(const AreaMap& areas, const AddressRange& range, const Held& held,
                     const Gap& gap) {
    uint64_t at = range.start;
    const AreaMap::Index& index = areas.index();
    for (auto area = areas.findFrom(range.start); area != index.end() && area->first < range.end;
         ++area) {
        if (area->first > at) {
            gap(at, uint64_t{area->first});
            at = area->first;
        }
        const uint64_t stop = std::min(range.end, AreaMap::endOf(area));
        held(at, area->second.bytes().subspan(static_cast<size_t>(at - area->first),
                                              static_cast<size_t>(stop - at)));
        at = stop;
    }
    if (at < range.end) {
        gap(at, range.end);
    }
}
