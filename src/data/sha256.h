// SHA-256 after FIPS 180-4 ("Secure Hash Standard", section 6.2), to tell which bytes a run worked
// on. For identity, not for secrets. No errors; any thread, one object a thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

class Sha256 {
public:
    void add(std::span<const char> bytes);
    // The digest of all that was added, in 64 lower-case hex digits; the object is spent.
    std::string finish();

private:
    void compress();
    void put(uint8_t byte);

    std::array<uint32_t, 8> hash_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                     0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<uint8_t, 64> block_ = {};
    size_t used_ = 0; // bytes of the block
    uint64_t bits_ = 0;
};
