// Pairs of hex digits to bytes, sixteen bytes at a time: most of the time that reading a program
// file takes goes by here.
#pragma once

#include <cstdint>
#include <span>

// Fills `bytes` from twice as many characters and adds them to `sum`. False when any of the
// characters is not a hex digit.
bool decodeHex(const char* text, std::span<uint8_t> bytes, uint8_t& sum);
