#include "device/image_fit.h"

#include "data/hexdata.h"

#include <algorithm>

std::vector<AddressRange> DEVICE_JoinedRanges(const std::vector<DeviceBlock>& blocks) {
    std::vector<AddressRange> ranges;
    for (const DeviceBlock& block : blocks) {
        if (!block.range.empty()) {
            ranges.push_back(block.range);
        }
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

bool DEVICE_ImageFits() {
    const std::vector<AddressRange> selected = DEVICE_JoinedRanges(DEVICE_SelectedBlocks());
    return std::ranges::all_of(HEXDATA_GetAreas(), [&selected](const AddressRange& area) {
        return std::ranges::any_of(
            selected, [&area](const AddressRange& range) { return range.contains(area); });
    });
}
