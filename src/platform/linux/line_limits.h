// What the ports of this system have in common: limits of a line, and the system's own words.
#pragma once

#include <cstdint>
#include <string>
#include <system_error>

constexpr int64_t kWriteStallMs = 10'000; // a device that takes nothing for so long is stuck
constexpr int64_t kBitsPerByte = 10;      // start, eight data, stop

// The system's text for an error number.
inline std::string systemText(int error) {
    return std::system_category().message(error);
}
