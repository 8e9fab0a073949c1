#include "platform/format.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace {

constexpr uint8_t kFirstPlainByte = 0x20;
constexpr uint8_t kDelete = 0x7F;

// Bytes of the UTF-8 character that `text` begins with, 0 for none: cut off, too long a form, a
// surrogate or beyond the last one. A control character counts as none.
size_t characterLength(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    if (first <= kDelete) {
        return (first >= kFirstPlainByte && first != kDelete) || first == '\t' ? 1 : 0;
    }
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    uint32_t code = first & (0xFFU >> (length + 1));
    for (const char next : text.substr(1, length - 1)) {
        if ((static_cast<uint8_t>(next) & 0xC0U) != 0x80) {
            return 0;
        }
        code = code << 6 | (static_cast<uint8_t>(next) & 0x3FU);
    }
    constexpr uint32_t kSmallest[] = {0xA0, 0x800, 0x10000}; // 80 to 9F are control characters
    const bool valid = code >= kSmallest[length - 2] && code <= 0x10FFFF && code >> 11 != 0x1B;
    return valid ? length : 0;
}

} // namespace

std::string formatPrintable(std::string_view text, LineEnds lineEnds) {
    std::string shown;
    while (!text.empty()) {
        size_t length = characterLength(text);
        if (length == 0 && lineEnds == LineEnds::stay) {
            length = text.starts_with("\r\n") ? 2 : text.starts_with('\n') ? 1 : 0;
        }
        if (length == 0) {
            length = 1;
            shown += formatText("\\x%02X", static_cast<uint8_t>(text[0]));
        } else {
            shown += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return shown;
}

std::string formatText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool endsWithIgnoringCase(std::string_view text, std::string_view ending) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return text.size() >= ending.size() &&
           std::ranges::equal(text.substr(text.size() - ending.size()), ending, {}, lower, lower);
}
