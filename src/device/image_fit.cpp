#include "device/image_fit.h"

#include "data/hexdata.h"
#include "device/device.h"

#include <algorithm>

namespace {

// The selected blocks in ascending order, neighbours joined.
std::vector<AddressRange> selectedRanges() {
    std::vector<AddressRange> ranges;
    for (const DeviceBlock& block : DEVICE_SelectedBlocks()) {
        ranges.push_back(block.range);
    }
    std::ranges::sort(ranges, {}, &AddressRange::start);
    std::vector<AddressRange> joined;
    for (const AddressRange& range : ranges) {
        if (!joined.empty() && range.start <= joined.back().end) {
            joined.back().end = std::max(joined.back().end, range.end);
        } else {
            joined.push_back(range);
        }
    }
    return joined;
}

} // namespace

bool DEVICE_ImageFits() {
    const std::vector<AddressRange> selected = selectedRanges();
    return std::ranges::all_of(HEXDATA_GetAreas(), [&selected](const AddressRange& area) {
        return std::ranges::any_of(
            selected, [&area](const AddressRange& range) { return range.contains(area); });
    });
}
