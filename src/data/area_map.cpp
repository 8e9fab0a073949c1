#include "data/area_map.h"

#include <algorithm>
#include <cstring>
#include <utility>

AreaMap::Position AreaMap::findFrom(uint32_t address) const {
    // Files list their bytes in ascending order nearly always: the new ones continue or follow the
    // area of the last ones, and nothing lies in between.
    const Position last = last_;
    if (last != index_.end() && endOf(last) <= address) {
        const Position next = std::next(last);
        if (next == index_.end() || next->first > address) {
            return next;
        }
    }
    Position area = index_.upper_bound(address);
    if (area != index_.begin()) {
        const Position before = std::prev(area);
        area = endOf(before) > address ? before : area;
    }
    return area;
}

AreaMap::Iterator AreaMap::locate(uint32_t address) {
    const Position found = findFrom(address);
    return index_.erase(found, found); // erases nothing, gives the writable position
}

bool AreaMap::holdsAny(uint32_t address, uint64_t end) const {
    const Position area = findFrom(address);
    return area != index_.end() && area->first < end;
}

void AreaMap::put(uint32_t address, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const Iterator area = locate(address);
        size_t count = bytes.size();
        if (area == index_.end() || area->first > address) {
            if (area != index_.end()) {
                count = std::min<size_t>(count, area->first - address);
            }
            insertBefore(area, address, bytes.first(count));
        } else {
            const size_t offset = address - area->first;
            count = std::min(count, area->second.size() - offset);
            std::memcpy(area->second.data() + offset, bytes.data(), count);
        }
        bytes = bytes.subspan(count);
        address += static_cast<uint32_t>(count);
    }
}

// The bytes lie in the gap before `next` and join the areas that they touch.
void AreaMap::insertBefore(Iterator next, uint32_t address, std::span<const uint8_t> bytes) {
    numBytes_ += bytes.size();
    const uint64_t end = address + bytes.size();
    const bool touchesNext = next != index_.end() && next->first == end;
    const Iterator before = next == index_.begin() ? index_.end() : std::prev(next);
    if (before != index_.end() && endOf(before) == address) {
        before->second.append(bytes);
        last_ = touchesNext ? join(before, next) : before;
    } else if (touchesNext) {
        next->second.prepend(bytes);
        last_ = moveStart(next, address);
    } else {
        last_ = index_.emplace_hint(next, address, ByteRun(bytes));
    }
}

// The smaller of two touching areas goes into the larger, so that no order of additions makes the
// same bytes move again and again.
AreaMap::Iterator AreaMap::join(Iterator left, Iterator right) {
    if (left->second.size() >= right->second.size()) {
        left->second.append(right->second.bytes());
        index_.erase(right);
        return left;
    }
    right->second.prepend(left->second.bytes());
    const uint32_t start = left->first;
    index_.erase(left);
    return moveStart(right, start);
}

AreaMap::Iterator AreaMap::moveStart(Iterator area, uint32_t start) {
    const Iterator next = std::next(area);
    Index::node_type node = index_.extract(area);
    node.key() = start;
    return index_.insert(next, std::move(node));
}

void AreaMap::erase(uint32_t address, uint64_t end) {
    last_ = index_.end();
    for (Iterator area = locate(address); area != index_.end() && area->first < end;) {
        area = cutOut(area, address, end);
    }
}

// Removes the area's bytes from `address` up to `end`; at least one of them lies there. Result: the
// area behind what was removed.
AreaMap::Iterator AreaMap::cutOut(Iterator area, uint32_t address, uint64_t end) {
    ByteRun& run = area->second;
    const size_t before = address > area->first ? address - area->first : 0;
    const size_t behind = endOf(area) > end ? static_cast<size_t>(endOf(area) - end) : 0;
    numBytes_ -= run.size() - before - behind;
    if (before == 0 && behind == 0) {
        return index_.erase(area);
    }
    if (behind == 0) {
        run.dropBack(run.size() - before);
        return std::next(area);
    }
    const auto tailStart = static_cast<uint32_t>(end);
    if (before == 0) {
        run.dropFront(run.size() - behind);
        return moveStart(area, tailStart);
    }
    if (behind <= before) { // the smaller half moves to a room of its own
        ByteRun tail(run.bytes().last(behind));
        run.dropBack(run.size() - before);
        return index_.emplace_hint(std::next(area), tailStart, std::move(tail));
    }
    ByteRun head(run.bytes().first(before));
    const uint32_t start = area->first;
    run.dropFront(run.size() - behind);
    const Iterator tail = moveStart(area, tailStart);
    index_.emplace_hint(tail, start, std::move(head));
    return tail;
}

void AreaMap::clear() {
    index_.clear();
    numBytes_ = 0;
    last_ = index_.end();
}

bool AreaMap::relocate(int32_t offset) {
    if (index_.empty()) {
        return true;
    }
    // All areas must move by the same number of turns around the address space, which the outermost
    // addresses tell (a shift right by 32 divides, rounding down).
    const int64_t first = int64_t{index_.begin()->first} + offset;
    const int64_t last = static_cast<int64_t>(endOf(std::prev(index_.cend()))) - 1 + offset;
    if (first >> 32 != last >> 32) {
        return false;
    }
    Index moved;
    while (!index_.empty()) {
        Index::node_type node = index_.extract(index_.begin());
        node.key() += static_cast<uint32_t>(offset);
        moved.insert(moved.end(), std::move(node));
    }
    index_ = std::move(moved);
    last_ = index_.end();
    return true;
}
