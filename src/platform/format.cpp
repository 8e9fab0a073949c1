#include "platform/format.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

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
