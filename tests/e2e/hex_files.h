// Program files made for a test.
#pragma once

#include "support/seed.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

inline Bytes randomBytes(size_t count, uint32_t own) {
    TestRandom random(own);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    return bytes;
}

// S3 records of 32 bytes.
inline std::string srecords(uint32_t address, const Bytes& bytes) {
    std::string text;
    char buffer[16];
    for (size_t at = 0; at < bytes.size(); at += 32) {
        const size_t count = std::min<size_t>(32, bytes.size() - at);
        const uint32_t start = address + static_cast<uint32_t>(at);
        uint32_t sum = static_cast<uint32_t>(count) + 5 + (start & 0xFF) + (start >> 8 & 0xFF) +
                       (start >> 16 & 0xFF) + (start >> 24);
        std::snprintf(buffer, sizeof buffer, "S3%02X%08X", static_cast<unsigned>(count + 5), start);
        text += buffer;
        for (size_t i = 0; i < count; ++i) {
            std::snprintf(buffer, sizeof buffer, "%02X", bytes[at + i]);
            text += buffer;
            sum += bytes[at + i];
        }
        std::snprintf(buffer, sizeof buffer, "%02X\r\n", ~sum & 0xFF);
        text += buffer;
    }
    return text;
}
