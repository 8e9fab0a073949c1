// Program files made for a test.
#pragma once

#include "persist/hex_text.h"
#include "support/seed.h"

#include <cstdint>
#include <numeric>
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
    for (size_t at = 0; at < bytes.size(); at += 32) {
        const size_t count = std::min<size_t>(32, bytes.size() - at);
        Bytes record = {static_cast<uint8_t>(count + 5)};
        for (const int shift : {24, 16, 8, 0}) {
            record.push_back(static_cast<uint8_t>((address + at) >> shift));
        }
        const auto first = bytes.begin() + static_cast<ptrdiff_t>(at);
        record.insert(record.end(), first, first + static_cast<ptrdiff_t>(count));
        record.push_back(static_cast<uint8_t>(~std::accumulate(record.begin(), record.end(), 0U)));
        text += "S3" + HEXTEXT_FromBytes(record) + "\r\n";
    }
    return text;
}
