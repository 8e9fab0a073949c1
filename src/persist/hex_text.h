// Conversions between hex text and values, shared by the command line, the settings file, the
// project file, the value dialog and the password settings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// All of these set `error` only when they fail.

// An optional leading "-", then hex digits in 32-bit arithmetic. "Not a hex value" in `error` and 0
// for any other character; an empty text gives 0.
int32_t HEXTEXT_ToValue(std::string_view text, std::string& error);
// Pairs of hex digits to bytes, at most `maximum`. Errors: "Odd length is illegal", "HexString too
// long", "Not a hex value"; the result is then empty.
std::vector<uint8_t> HEXTEXT_ToBytes(std::string_view text, size_t maximum, std::string& error);
// The same into the caller's bytes, at most all of them. Result: the number of bytes, 0 on an
// error; the bytes before a pair that fails are stored.
size_t HEXTEXT_Decode(std::string_view text, std::span<uint8_t> bytes, std::string& error);
// Two upper-case hex digits a byte, nothing between them.
std::string HEXTEXT_FromBytes(std::span<const uint8_t> bytes);
