#include "persist/hex_text.h"

#include "persist/chars.h"

#include <algorithm>

int32_t HEXTEXT_ToValue(std::string_view text, std::string& error) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    uint32_t value = 0;
    for (const char c : text) {
        const int digit = hexDigitValue(c);
        if (digit < 0) {
            error = "Not a hex value";
            return 0;
        }
        value = value << 4 | static_cast<uint32_t>(digit);
    }
    return static_cast<int32_t>(negative ? 0U - value : value);
}

size_t HEXTEXT_Decode(std::string_view text, std::span<uint8_t> bytes, std::string& error) {
    if (text.size() % 2 != 0) {
        error = "Odd length is illegal";
        return 0;
    }
    const size_t count = text.size() / 2;
    if (count > bytes.size()) {
        error = "HexString too long";
        return 0;
    }
    for (size_t i = 0; i < count; ++i) {
        std::string pairError;
        const int32_t value = HEXTEXT_ToValue(text.substr(2 * i, 2), pairError);
        if (!pairError.empty()) {
            error = pairError;
            return 0;
        }
        bytes[i] = static_cast<uint8_t>(value);
    }
    return count;
}

std::vector<uint8_t> HEXTEXT_ToBytes(std::string_view text, size_t maximum, std::string& error) {
    // Never more room than the text can fill: the maximum may be any number.
    std::vector<uint8_t> bytes(std::min(maximum, text.size() / 2));
    bytes.resize(HEXTEXT_Decode(text, bytes, error));
    return bytes;
}

std::string HEXTEXT_FromBytes(std::span<const uint8_t> bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    return text;
}
