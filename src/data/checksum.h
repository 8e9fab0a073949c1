// The two checksums that targets report, over bytes and over repeated fill bytes.
#pragma once

#include <cstdint>
#include <span>

inline constexpr uint16_t kSumStart = 0;
inline constexpr uint16_t kCrcStart = 0xFFFF;

// The running value carried over further bytes.
uint16_t CHECKSUM_Sum(uint16_t sum, std::span<const uint8_t> bytes);
uint16_t CHECKSUM_Crc(uint16_t crc, std::span<const uint8_t> bytes);
// The same for `count` bytes that all have the value `fill`; a long repetition costs no more than a
// short one.
uint16_t CHECKSUM_SumOfFill(uint16_t sum, uint8_t fill, uint64_t count);
uint16_t CHECKSUM_CrcOfFill(uint16_t crc, uint8_t fill, uint64_t count);
