// Texts over an open serial line.
#pragma once

#include "platform/serial_port.h"

#include <string>

inline std::span<const uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

inline std::string readText(SerialPort& port, size_t count, int64_t ms) {
    std::string text(count, '\0');
    text.resize(port.read({reinterpret_cast<uint8_t*>(text.data()), count}, CLOCK_After(ms), {}));
    return text;
}

inline bool writeText(SerialPort& port, std::string_view text) {
    return port.write(bytesOf(text));
}
