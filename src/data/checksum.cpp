#include "data/checksum.h"

#include <array>
#include <cstddef>
#include <cstring>

// The CRC is the remainder of a polynomial over the bits by x^16 + x^12 + x^5 + 1. One byte b takes
// the remainder r to r * x^8 + b: b enters at the low end, not above the remainder as in the more
// common form. Eight bytes at once are r * x^64 + b0 * x^56 + ... + b7, where every product of a
// byte and a power of x stands in a table.

namespace {

constexpr uint32_t kPolynomial = 0x11021;

// remainder * x^8
constexpr uint16_t timesByte(uint16_t remainder) {
    uint32_t value = remainder;
    for (int bit = 0; bit < 8; ++bit) {
        value <<= 1;
        value ^= (value & 0x10000) != 0 ? kPolynomial : 0;
    }
    return static_cast<uint16_t>(value);
}

constexpr size_t kStep = 8; // bytes at once
using ByteTable = std::array<uint16_t, 256>;

// kProducts[k][b] = b * x^(8k); a byte times 1 or x^8 is its own remainder.
constexpr std::array<ByteTable, kStep + 2> kProducts = [] {
    std::array<ByteTable, kStep + 2> tables{};
    for (size_t byte = 0; byte < 256; ++byte) {
        auto value = static_cast<uint16_t>(byte);
        for (ByteTable& table : tables) {
            table[byte] = value;
            value = timesByte(value);
        }
    }
    return tables;
}();

uint16_t crcOfStep(uint16_t crc, const uint8_t* bytes) {
    uint16_t next = kProducts[kStep + 1][crc >> 8] ^ kProducts[kStep][crc & 0xFF];
    for (size_t i = 0; i < kStep; ++i) {
        next ^= kProducts[kStep - 1 - i][bytes[i]];
    }
    return next;
}

// The product of two remainders.
uint16_t times(uint16_t a, uint16_t b) {
    uint32_t product = 0;
    for (int bit = 15; bit >= 0; --bit) {
        product <<= 1;
        product ^= (product & 0x10000) != 0 ? kPolynomial : 0;
        product ^= (a >> bit & 1) != 0 ? b : 0;
    }
    return static_cast<uint16_t>(product);
}

// What n equal bytes do to a remainder r: r * factor + fill * sum, where factor is x^(8n) and sum
// is x^(8(n-1)) + ... + 1.
struct Repetition {
    uint16_t factor = 1;
    uint16_t sum = 0;
};

Repetition followedBy(const Repetition& first, const Repetition& second) {
    return {times(first.factor, second.factor),
            static_cast<uint16_t>(times(first.sum, second.factor) ^ second.sum)};
}

} // namespace

uint16_t CHECKSUM_Sum(uint16_t sum, std::span<const uint8_t> bytes) {
    uint32_t total = sum; // wraps at a multiple of 65536
    for (const uint8_t byte : bytes) {
        total += byte;
    }
    return static_cast<uint16_t>(total);
}

uint16_t CHECKSUM_Crc(uint16_t crc, std::span<const uint8_t> bytes) {
    size_t at = 0;
    for (; at + kStep <= bytes.size(); at += kStep) {
        crc = crcOfStep(crc, bytes.data() + at);
    }
    for (; at < bytes.size(); ++at) {
        crc = static_cast<uint16_t>(kProducts[2][crc >> 8] ^ (crc << 8) ^ bytes[at]);
    }
    return crc;
}

uint16_t CHECKSUM_SumOfFill(uint16_t sum, uint8_t fill, uint64_t count) {
    return static_cast<uint16_t>(sum + fill * count);
}

uint16_t CHECKSUM_CrcOfFill(uint16_t crc, uint8_t fill, uint64_t count) {
    std::array<uint8_t, 256> bytes;
    if (count <= bytes.size()) { // going through so few is quicker than the powers
        std::memset(bytes.data(), fill, static_cast<size_t>(count));
        return CHECKSUM_Crc(crc, std::span(bytes).first(static_cast<size_t>(count)));
    }
    Repetition all;
    Repetition power{kProducts[1][1], 1}; // one byte, then 2, 4, 8 ...
    for (; count > 0; count >>= 1) {
        if ((count & 1) != 0) {
            all = followedBy(all, power);
        }
        power = followedBy(power, power);
    }
    return static_cast<uint16_t>(times(crc, all.factor) ^ times(fill, all.sum));
}
