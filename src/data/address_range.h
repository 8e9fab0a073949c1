// A range of addresses, half open: the end is one past the last byte, up to 2^32.
#pragma once

#include <cstdint>

struct AddressRange {
    uint32_t start = 0;
    uint64_t end = 0;

    bool empty() const { return end <= start; }
    uint64_t size() const { return empty() ? 0 : end - start; }
    // The last address; of an empty range the one before its start.
    uint32_t last() const { return static_cast<uint32_t>(end - 1); }
    bool contains(uint32_t address) const { return address >= start && address < end; }
    bool contains(const AddressRange& other) const {
        return other.start >= start && other.end <= end;
    }

    bool operator==(const AddressRange&) const = default;

    static AddressRange of(uint32_t start, uint64_t size) { return {start, start + size}; }
    // From an inclusive last address, as commands and dialogs give it.
    static AddressRange upTo(uint32_t start, uint32_t last) { return {start, uint64_t{last} + 1}; }
};
