#include "data/data_find.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint64_t kPieceLength = 262144; // bytes looked through at a time

// The addresses of one area where a match may begin.
AddressRange startsIn(const AddressRange& area, size_t length) {
    return area.size() < length ? AddressRange() : AddressRange{area.start, area.end - length + 1};
}

// The bytes from the first of some starts to the end of the last one's match.
std::vector<uint8_t> readPiece(uint64_t begin, uint64_t end, size_t length) {
    std::vector<uint8_t> bytes(static_cast<size_t>(end - begin) + length - 1);
    HEXDATA_Copy(static_cast<uint32_t>(begin), bytes, {});
    return bytes;
}

std::optional<uint32_t> findFirst(AddressRange starts, std::span<const uint8_t> pattern) {
    for (uint64_t begin = starts.start; begin < starts.end; begin += kPieceLength) {
        const auto piece =
            readPiece(begin, std::min(begin + kPieceLength, starts.end), pattern.size());
        const auto found = std::search(piece.begin(), piece.end(), pattern.begin(), pattern.end());
        if (found != piece.end()) {
            return static_cast<uint32_t>(begin + static_cast<uint64_t>(found - piece.begin()));
        }
    }
    return std::nullopt;
}

std::optional<uint32_t> findLast(AddressRange starts, std::span<const uint8_t> pattern) {
    for (uint64_t end = starts.end; end > starts.start;) {
        const uint64_t begin = end - std::min(kPieceLength, end - starts.start);
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

std::optional<uint32_t> DATAFIND_Next(std::span<const AddressRange> areas,
                                      std::span<const uint8_t> pattern, uint32_t from) {
    if (pattern.empty()) {
        return std::nullopt;
    }
    for (const AddressRange& area : areas) {
        AddressRange starts = startsIn(area, pattern.size());
        starts.start = std::max(starts.start, from);
        if (const auto found = findFirst(starts, pattern)) {
            return found;
        }
    }
    return std::nullopt;
}

std::optional<uint32_t> DATAFIND_Previous(std::span<const AddressRange> areas,
                                          std::span<const uint8_t> pattern, uint64_t before) {
    if (pattern.empty()) {
        return std::nullopt;
    }
    for (size_t index = areas.size(); index-- > 0;) {
        AddressRange starts = startsIn(areas[index], pattern.size());
        starts.end = std::min(starts.end, before);
        if (const auto found = findLast(starts, pattern)) {
            return found;
        }
    }
    return std::nullopt;
}
