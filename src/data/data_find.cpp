#include "data/data_find.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint64_t kPieceLength = 262144; // bytes looked through at a time

// The addresses of one area where a match may begin, `end` exclusive.
struct Starts {
    uint64_t begin = 0;
    uint64_t end = 0;
};

Starts startsIn(const AreaInfo& area, size_t length) {
    if (area.length < length) {
        return {};
    }
    return {area.start, uint64_t{area.start} + area.length - length + 1};
}

// The bytes from the first of some starts to the end of the last one's match.
std::vector<uint8_t> readPiece(uint64_t begin, uint64_t end, size_t length) {
    std::vector<uint8_t> bytes(static_cast<size_t>(end - begin) + length - 1);
    HEXDATA_Copy(static_cast<uint32_t>(begin), bytes, {});
    return bytes;
}

std::optional<uint32_t> findFirst(Starts starts, std::span<const uint8_t> pattern) {
    for (uint64_t begin = starts.begin; begin < starts.end; begin += kPieceLength) {
        const auto piece =
            readPiece(begin, std::min(begin + kPieceLength, starts.end), pattern.size());
        const auto found = std::search(piece.begin(), piece.end(), pattern.begin(), pattern.end());
        if (found != piece.end()) {
            return static_cast<uint32_t>(begin + static_cast<uint64_t>(found - piece.begin()));
        }
    }
    return std::nullopt;
}

std::optional<uint32_t> findLast(Starts starts, std::span<const uint8_t> pattern) {
    for (uint64_t end = starts.end; end > starts.begin;) {
        const uint64_t begin = end - std::min(kPieceLength, end - starts.begin);
        const auto piece = readPiece(begin, end, pattern.size());
        const auto found =
            std::find_end(piece.begin(), piece.end(), pattern.begin(), pattern.end());
        if (found != piece.end()) {
            return static_cast<uint32_t>(begin + static_cast<uint64_t>(found - piece.begin()));
        }
        end = begin;
    }
    return std::nullopt;
}

} // namespace

std::optional<uint32_t> DATAFIND_Next(std::span<const AreaInfo> areas,
                                      std::span<const uint8_t> pattern, uint32_t from) {
    if (pattern.empty()) {
        return std::nullopt;
    }
    for (const AreaInfo& area : areas) {
        Starts starts = startsIn(area, pattern.size());
        starts.begin = std::max<uint64_t>(starts.begin, from);
        if (const auto found = findFirst(starts, pattern)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<uint32_t> DATAFIND_Previous(std::span<const AreaInfo> areas,
                                          std::span<const uint8_t> pattern, uint64_t before) {
    if (pattern.empty()) {
        return std::nullopt;
    }
    for (size_t index = areas.size(); index-- > 0;) {
        Starts starts = startsIn(areas[index], pattern.size());
        starts.end = std::min(starts.end, before);
        if (const auto found = findLast(starts, pattern)) {
            return found;
        }
    }
    return std::nullopt;
}
