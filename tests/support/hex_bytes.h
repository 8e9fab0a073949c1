// Bytes as hex text, and the loader's frames around them.
#pragma once

#include "persist/hex_text.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

inline std::vector<uint8_t> bytesOfHex(std::string digits) {
    std::erase(digits, ' ');
    std::string error;
    auto bytes = HEXTEXT_ToBytes(digits, 100000, error);
    EXPECT_EQ(error, "") << digits;
    return bytes;
}

inline std::string repeat(const std::string& text, size_t count) {
    std::string all;
    for (; count > 0; --count) {
        all += text;
    }
    return all;
}

// A good frame around a payload.
inline std::string frame(const std::string& payload) {
    std::vector<uint8_t> bytes = bytesOfHex(payload);
    bytes.insert(bytes.begin(),
                 {static_cast<uint8_t>(bytes.size()), static_cast<uint8_t>(bytes.size() >> 8)});
    uint8_t sum = 0;
    for (const uint8_t byte : bytes) {
        sum = static_cast<uint8_t>(sum + byte);
    }
    bytes.push_back(sum);
    return "EBED" + HEXTEXT_FromBytes(bytes) + "EC";
}
