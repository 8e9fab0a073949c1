// The areas of a memory image: an ordered index of runs of bytes that neither overlap nor touch.
// Plain data without a lock; every operation costs the logarithm of the number of areas, plus the
// areas and bytes that it really changes.
#pragma once

#include "data/byte_run.h"

#include <cstdint>
#include <map>
#include <span>

// The number of 32-bit addresses. Ends of ranges are 64-bit, so that they may equal it.
inline constexpr uint64_t kAddressSpace = uint64_t{1} << 32;

class AreaMap {
public:
    using Index = std::map<uint32_t, ByteRun>; // by the first address
    using Position = Index::const_iterator;

    AreaMap() = default;
    AreaMap(const AreaMap&) = delete;
    AreaMap& operator=(const AreaMap&) = delete;

    const Index& index() const { return index_; }
    uint64_t numBytes() const { return numBytes_; }

    // The first area that ends behind `address`: the one that holds it, else the next one.
    Position findFrom(uint32_t address) const;
    // Whether any address from `address` up to, not including, `end` is held.
    bool holdsAny(uint32_t address, uint64_t end) const;
    // Puts bytes in place of what is held at their addresses; the range ends within the address
    // space.
    void put(uint32_t address, std::span<const uint8_t> bytes);
    void erase(uint32_t address, uint64_t end);
    void clear();
    // Adds the offset to every start; false when the order of the areas would not survive.
    [[nodiscard]] bool relocate(int32_t offset);

    static uint64_t endOf(Position area) { return uint64_t{area->first} + area->second.size(); }

private:
    using Iterator = Index::iterator;

    Iterator locate(uint32_t address); // findFrom, to change what it finds
    void insertBefore(Iterator next, uint32_t address, std::span<const uint8_t> bytes);
    Iterator join(Iterator left, Iterator right);
    Iterator moveStart(Iterator area, uint32_t start);
    Iterator cutOut(Iterator area, uint32_t address, uint64_t end);

    Index index_;
    uint64_t numBytes_ = 0;
    Iterator last_ = index_.end(); // the area of the last insertion, mostly the next one's too
};
