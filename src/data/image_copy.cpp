#include "data/image_copy.h"

#include "data/image_store.h"

#include <algorithm>
#include <cstring>

namespace {

// Lists differences in ascending order, joining what lies close together.
class DifferenceList {
public:
    explicit DifferenceList(uint32_t join) : join_(join) {}

    void add(uint64_t start, uint64_t end) {
        if (!list_.empty() && start - list_.back().end <= join_) {
            list_.back().end = end;
        } else {
            list_.push_back({static_cast<uint32_t>(start), end});
        }
    }
    std::vector<AddressRange> take() { return std::move(list_); }

private:
    uint32_t join_;
    std::vector<AddressRange> list_;
};

// Goes through a copy from address to address.
class CopyReader {
public:
    explicit CopyReader(const ImageCopy& copy) : copy_(copy), bytes_(copy.bytes.data()) {}

    // The bytes at `at`, or null where the copy holds none; `end` becomes where that ends, if that
    // comes before. Addresses only rise from call to call.
    const uint8_t* look(uint64_t at, uint64_t& end) {
        while (index_ < copy_.areas.size() && copy_.areas[index_].end <= at) {
            bytes_ += copy_.areas[index_++].size();
        }
        if (index_ == copy_.areas.size()) {
            return nullptr;
        }
        const AddressRange& area = copy_.areas[index_];
        const bool held = area.start <= at;
        end = std::min<uint64_t>(end, held ? area.end : area.start);
        return held ? bytes_ + (at - area.start) : nullptr;
    }

private:
    const ImageCopy& copy_;
    const uint8_t* bytes_; // of the area at index_
    size_t index_ = 0;
};

void listUnequal(const uint8_t* left, const uint8_t* right, uint64_t at, size_t count,
                 DifferenceList& list) {
    constexpr size_t kBlock = 256; // equal ones are passed at once
    for (size_t i = 0; i < count;) {
        const size_t step = std::min(kBlock, count - i);
        if (std::memcmp(left + i, right + i, step) == 0) {
            i += step;
            continue;
        }
        for (const size_t stop = i + step; i < stop; ++i) {
            if (left[i] != right[i]) {
                list.add(at + i, at + i + 1);
            }
        }
    }
}

void appendPiece(ImageCopy& copy, uint64_t at, const uint8_t* bytes, uint64_t count) {
    copy.areas.push_back(AddressRange::of(static_cast<uint32_t>(at), count));
    copy.bytes.insert(copy.bytes.end(), bytes, bytes + count);
}

ImageCopy copyOf(const AreaMap& areas, const std::vector<AddressRange>& ranges) {
    ImageCopy copy;
    copy.ranges = ranges;
    for (const AddressRange& range : ranges) {
        IMAGESTORE_Walk(
            areas, range,
            [&](uint64_t at, std::span<const uint8_t> run) {
                appendPiece(copy, at, run.data(), run.size());
            },
            [](uint64_t, uint64_t) {});
    }
    return copy;
}

} // namespace

size_t ImageCopy::footprint() const {
    return bytes.capacity() + (areas.capacity() + ranges.capacity()) * sizeof(AddressRange);
}

AddressRange IMAGECOPY_Everything() {
    return AddressRange::upTo(0, UINT32_MAX);
}

ImageCopy HEXDATA_TakeCopy(const std::vector<AddressRange>& ranges) {
    const ImageLock image;
    return copyOf(image.areas(), ranges);
}

ImageBeside::ImageBeside() : areas_(std::make_unique<AreaMap>()) {
    IMAGESTORE_FillBeside(areas_.get());
}

ImageBeside::~ImageBeside() {
    IMAGESTORE_FillBeside(nullptr);
}

ImageCopy ImageBeside::copy() const {
    return copyOf(*areas_, {IMAGECOPY_Everything()});
}

void HEXDATA_Exchange(ImageCopy& copy) {
    const ImageLock image;
    AreaMap& areas = image.areas();
    ImageCopy before = copyOf(areas, copy.ranges);
    for (const AddressRange& range : copy.ranges) {
        areas.erase(range.start, range.end);
    }
    std::span<const uint8_t> rest(copy.bytes);
    for (const AddressRange& area : copy.areas) {
        areas.put(area.start, rest.first(static_cast<size_t>(area.size())));
        rest = rest.subspan(static_cast<size_t>(area.size()));
    }
    copy = std::move(before);
}

std::vector<AddressRange> HEXDATA_Differences(const ImageCopy& copy, uint32_t join) {
    const ImageLock image;
    DifferenceList list(join);
    CopyReader reader(copy);
    // Both pieces are walked along; `held` is null in the image's gaps.
    const auto compare = [&](uint64_t at, uint64_t end, const uint8_t* held) {
        for (uint64_t stop = end; at < end; at = stop, stop = end) {
            const uint8_t* old = reader.look(at, stop);
            if (held != nullptr && old != nullptr) {
                listUnequal(old, held, at, static_cast<size_t>(stop - at), list);
            } else if (held != nullptr || old != nullptr) {
                list.add(at, stop);
            }
            held += held != nullptr ? stop - at : 0;
        }
    };
    for (const AddressRange& range : copy.ranges) {
        IMAGESTORE_Walk(
            image.areas(), range,
            [&](uint64_t at, std::span<const uint8_t> run) {
                compare(at, at + run.size(), run.data());
            },
            [&](uint64_t at, uint64_t end) { compare(at, end, nullptr); });
    }
    return list.take();
}

ImageCopy IMAGECOPY_Reduce(const ImageCopy& copy, const std::vector<AddressRange>& ranges) {
    ImageCopy reduced;
    reduced.ranges = ranges;
    CopyReader reader(copy);
    for (const AddressRange& range : ranges) {
        uint64_t stop = range.end;
        for (uint64_t at = range.start; at < range.end; at = stop, stop = range.end) {
            if (const uint8_t* bytes = reader.look(at, stop)) {
                appendPiece(reduced, at, bytes, stop - at);
            }
        }
    }
    return reduced;
}
