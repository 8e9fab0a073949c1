#include "shell/memory_map.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "device/image_fit.h"
#include "link/chip_record.h"
#include "platform/format.h"

#include <algorithm>

namespace {

// A list that ascends, each with the facts of it.
struct FactRange {
    AddressRange range;
    MapFacts facts = 0;
};

MapFacts factsOf(const ChipFacts& chip) {
    const MapFacts guarded = chip.isProtected ? kMapProtected : 0;
    switch (chip.mark) {
    case ChipMark::erased:
        return guarded | kMapErased;
    case ChipMark::written:
        return guarded | kMapWritten;
    case ChipMark::verified:
        return guarded | kMapVerified;
    case ChipMark::unknown:
        return guarded | kMapUnknown;
    case ChipMark::differs:
        return guarded | kMapDiffers;
    case ChipMark::none:
        break;
    }
    return guarded;
}

struct FactWord {
    MapFacts fact;
    const char* word;
};

constexpr FactWord kContents[] = {{kMapPassword, "password"}, {kMapVectors, "vectors"}};
constexpr FactWord kResults[] = {{kMapDiffers, "differs"},   {kMapUnknown, "unfinished"},
                                 {kMapErased, "erased"},     {kMapWritten, "written"},
                                 {kMapVerified, "verified"}, {kMapProtected, "protected"}};

template <size_t Count>
std::string mapWords(const FactWord (&words)[Count], MapFacts facts, std::string text = "") {
    for (const FactWord& row : words) {
        if ((facts & row.fact) != 0) {
            text += (text.empty() ? "" : ", ") + std::string(row.word);
        }
    }
    return text;
}

// Where the device has its password and its vectors.
std::vector<FactRange> deviceAreas() {
    const DeviceRecord& device = DEVICE_Selected();
    std::vector<FactRange> areas;
    for (const uint32_t address : device.aIDAdr) {
        areas.push_back({AddressRange::of(DEVICE_RelocateAddr(address), 1), kMapPassword});
    }
    if (areas.empty() && device.PWAreaLen != 0) {
        const uint32_t start = DEVICE_RelocateAddr(device.PWAreaStart);
        areas.push_back({AddressRange::of(start, device.PWAreaLen), kMapPassword});
    }
    for (const IVectorEntry& vector : device.aIVector) {
        const auto bytes = static_cast<uint64_t>(vector.Bits + 7) / 8;
        areas.push_back({AddressRange::of(vector.Address, bytes), kMapVectors});
    }
    return areas;
}

// All that has facts but for the data of the image.
std::vector<FactRange> factRanges() {
    std::vector<FactRange> ranges = deviceAreas();
    for (const ChipStretch& stretch : CHIPRECORD_Get()) {
        ranges.push_back({stretch.range, factsOf(stretch.facts)});
    }
    return ranges;
}

AddressRange commonRange(const AddressRange& left, const AddressRange& right) {
    return {std::max(left.start, right.start), std::min(left.end, right.end)};
}

// The areas that reach into a range; they ascend and do not overlap.
std::pair<size_t, size_t> areasIn(const std::vector<AddressRange>& areas,
                                  const AddressRange& range) {
    const auto first = std::ranges::partition_point(
        areas, [&](const AddressRange& area) { return area.end <= range.start; });
    const auto last = std::partition_point(
        first, areas.end(), [&](const AddressRange& area) { return area.start < range.end; });
    return {static_cast<size_t>(first - areas.begin()), static_cast<size_t>(last - areas.begin())};
}

uint64_t bytesIn(const std::vector<AddressRange>& areas, const AddressRange& range) {
    const auto [first, last] = areasIn(areas, range);
    uint64_t bytes = 0;
    for (size_t index = first; index < last; ++index) {
        bytes += commonRange(areas[index], range).size();
    }
    return bytes;
}

MapFacts factsIn(const std::vector<FactRange>& ranges, const AddressRange& range) {
    MapFacts facts = 0;
    for (const FactRange& part : ranges) {
        facts |= commonRange(part.range, range).empty() ? 0 : part.facts;
    }
    return facts;
}

std::string contentsText(uint64_t dataBytes, MapFacts facts) {
    return mapWords(kContents, facts,
                    dataBytes == 0 ? "" : std::to_string(dataBytes) + " bytes of data");
}

// What of the image no block covers: from its first to its last address, and how many bytes.
MapRow outsideRow(const std::vector<AddressRange>& areas) {
    MapRow row;
    const auto add = [&row](uint64_t start, uint64_t end) {
        if (start < end) {
            row.range.start = row.dataBytes == 0 ? static_cast<uint32_t>(start) : row.range.start;
            row.range.end = end;
            row.dataBytes += end - start;
        }
    };
    const std::vector<AddressRange> covered = DEVICE_JoinedRanges(DEVICE_Blocks());
    for (const AddressRange& area : areas) {
        uint64_t at = area.start;
        const auto [first, last] = areasIn(covered, area);
        for (size_t index = first; index < last; ++index) {
            add(at, std::min<uint64_t>(covered[index].start, area.end));
            at = std::max<uint64_t>(at, covered[index].end);
        }
        add(at, area.end);
    }
    row.contents = contentsText(row.dataBytes, 0);
    return row;
}

class PixelFacts {
public:
    explicit PixelFacts(const MapScale& scale)
        : scale_(scale), facts_(static_cast<size_t>(scale.pixels())) {}

    void add(const AddressRange& range, MapFacts facts) {
        const MapScale::Span span = scale_.spanOf(range);
        for (int pixel = span.first; pixel < span.end; ++pixel) {
            facts_[static_cast<size_t>(pixel)] |= facts;
        }
    }
    std::vector<MapFacts> take() { return std::move(facts_); }

private:
    const MapScale& scale_;
    std::vector<MapFacts> facts_;
};

} // namespace

std::vector<MapRow> MEMORYMAP_Rows() {
    const std::vector<AddressRange> areas = HEXDATA_GetAreas();
    const std::vector<FactRange> known = factRanges();
    std::vector<MapRow> rows;
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        const uint64_t bytes = bytesIn(areas, block.range);
        const MapFacts facts = factsIn(known, block.range);
        rows.push_back({block.index, block.range, DEVPROPS_IsBlockSelected(block.index), bytes,
                        contentsText(bytes, facts), mapWords(kResults, facts)});
    }
    if (MapRow outside = outsideRow(areas); outside.dataBytes > 0) {
        rows.push_back(std::move(outside));
    }
    return rows;
}

MapScale::MapScale(int pixels) : pixels_(std::max(pixels, 0)) {
    for (const AddressRange& range : DEVICE_JoinedRanges(DEVICE_Blocks())) {
        parts_.push_back({range, total_});
        total_ += range.size();
    }
    pixels_ = static_cast<int>(std::min<uint64_t>(static_cast<uint64_t>(pixels_), total_));
}

int MapScale::pixelOf(uint64_t offset) const {
    return static_cast<int>(offset * static_cast<uint64_t>(pixels_) / total_);
}

MapScale::Span MapScale::spanIn(const Part& part, const AddressRange& range) const {
    const AddressRange common = commonRange(part.range, range);
    if (common.empty() || pixels_ == 0) {
        return {};
    }
    const uint64_t offset = part.offset - part.range.start;
    return {pixelOf(common.start + offset), pixelOf(common.end - 1 + offset) + 1};
}

MapScale::Span MapScale::spanOf(const AddressRange& range) const {
    Span span;
    for (const Part& part : parts_) {
        const Span found = spanIn(part, range);
        if (found.end > found.first) {
            span.first = span.end == 0 ? found.first : span.first;
            span.end = found.end;
        }
    }
    return span;
}

AddressRange MapScale::rangeAt(int pixel) const {
    if (pixel < 0 || pixel >= pixels_) {
        return {};
    }
    const auto count = static_cast<uint64_t>(pixels_);
    const auto begin = [&](int at) { // the first byte whose pixel it is
        return (static_cast<uint64_t>(at) * total_ + count - 1) / count;
    };
    const uint64_t offset = begin(pixel);
    const uint64_t end = begin(pixel + 1);
    const auto part = std::prev(std::ranges::upper_bound(parts_, offset, {}, &Part::offset));
    const uint64_t start = part->range.start + (offset - part->offset);
    return {static_cast<uint32_t>(start), std::min(start + (end - offset), part->range.end)};
}

std::vector<MapFacts> MEMORYMAP_Pixels(const MapScale& scale) {
    PixelFacts pixels(scale);
    for (const DeviceBlock& block : DEVICE_SelectedBlocks()) {
        pixels.add(block.range, kMapSelected);
    }
    uint64_t at = 0;
    for (const AddressRange& area : HEXDATA_GetAreas()) {
        pixels.add({static_cast<uint32_t>(at), area.start}, kMapGap);
        pixels.add(area, kMapData);
        at = area.end;
    }
    if (at <= UINT32_MAX) {
        pixels.add({static_cast<uint32_t>(at), uint64_t{1} << 32}, kMapGap);
    }
    for (const FactRange& part : factRanges()) {
        pixels.add(part.range, part.facts);
    }
    return pixels.take();
}

std::string MEMORYMAP_Describe(const MapScale& scale, int pixel) {
    const AddressRange range = scale.rangeAt(pixel);
    if (range.empty()) {
        return "";
    }
    std::string text = formatText("%X - %X", range.start, range.last());
    for (const DeviceBlock& block : DEVICE_Blocks()) {
        if (!commonRange(block.range, range).empty()) {
            text += formatText("\nBlock %d, %s", block.index,
                               DEVPROPS_IsBlockSelected(block.index) ? "selected" : "not selected");
        }
    }
    const MapFacts facts = factsIn(factRanges(), range);
    const std::string contents = contentsText(bytesIn(HEXDATA_GetAreas(), range), facts);
    const std::string result = mapWords(kResults, facts);
    text += "\nImage: " + (contents.empty() ? std::string("nothing") : contents);
    text += "\nChip: " + (result.empty() ? std::string("nothing known") : result);
    return text;
}
