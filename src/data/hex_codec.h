// Pairs of hex digits to bytes and back, sixteen bytes at a time: most of the time that a program
// file takes goes by here.
#pragma once

#include <cstdint>
#include <span>

// Fills `bytes` from twice as many characters and adds them to `sum`. False when any of the
// characters is not a hex digit.
[[nodiscard]] bool decodeHex(const char* text, std::span<uint8_t> bytes, uint8_t& sum);
// Writes twice as many upper-case digits and adds the bytes to `sum`. Result: behind the last
// digit.
char* encodeHex(char* text, std::span<const uint8_t> bytes, uint8_t& sum);
