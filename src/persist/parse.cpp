#include "persist/parse.h"

#include "persist/chars.h"
#include "platform/format.h"

namespace {

constexpr char kNotANumber[] = "Expecting a number";

void copyWhile(const char*& cursor, std::string& text, size_t size, bool (*accepted)(char)) {
    text.clear();
    while (text.size() < size && accepted(*cursor)) {
        text += *cursor++;
    }
}

} // namespace

std::string PARSE_ErrorWords(const std::string& error) {
    return error == kParseStringError ? "Expected a text in double quotes" : error;
}

void PARSE_SkipBlanks(const char*& cursor) {
    while (isBlank(*cursor)) {
        ++cursor;
    }
}

void PARSE_SkipLine(const char*& cursor) {
    while (*cursor != '\0' && !isLineBreak(*cursor)) {
        ++cursor;
    }
    while (isLineBreak(*cursor)) {
        ++cursor;
    }
}

void PARSE_Expect(std::string& error, const char*& cursor, char character) {
    if (!error.empty()) {
        return;
    }
    if (*cursor == character) {
        ++cursor;
        return;
    }
    error = formatText("Expected '%c', got '", character);
    if (*cursor != '\0') { // at the end of the text there is nothing to show
        error += *cursor;
        error += '\'';
    }
}

void PARSE_GetString(std::string& error, const char*& cursor, std::string& text, size_t size) {
    if (!error.empty()) {
        return;
    }
    PARSE_SkipBlanks(cursor);
    if (*cursor != '"') {
        error = std::string(kParseStringError);
        return;
    }
    const char* const begin = cursor + 1;
    const char* end = begin;
    while (*end != '\0' && *end != '"' && static_cast<size_t>(end - begin) < size) {
        ++end;
    }
    text.assign(begin, end);
    if (*end != '"') {
        error = std::string(kParseStringError);
        return;
    }
    cursor = end + 1;
}

void PARSE_GetWord(std::string& error, const char*& cursor, std::string& text, size_t size) {
    if (!error.empty()) {
        return;
    }
    PARSE_SkipBlanks(cursor);
    copyWhile(cursor, text, size, isLetter);
}

void PARSE_GetAlnum(std::string& error, const char*& cursor, std::string& text, size_t size) {
    if (!error.empty()) {
        return;
    }
    PARSE_SkipBlanks(cursor);
    copyWhile(cursor, text, size, [](char c) { return isLetter(c) || isDigit(c); });
}

void PARSE_GetDec(std::string& error, const char*& cursor, int32_t& value, int32_t min,
                  int32_t max) {
    if (!error.empty()) {
        return;
    }
    PARSE_SkipBlanks(cursor);
    const char* at = cursor;
    const bool negative = *at == '-';
    const bool hasSign = negative || *at == '+';
    at += hasSign ? 1 : 0;
    if (!hasSign && !isDigit(*at)) {
        error = kNotANumber;
        return;
    }
    uint32_t digits = 0; // unsigned, so that a number that is too long wraps
    for (; isDigit(*at); ++at) {
        digits = digits * 10 + static_cast<uint32_t>(*at - '0');
    }
    auto magnitude = static_cast<int32_t>(digits);
    if (magnitude < min) {
        error = formatText("Expected a value >= %d", min);
        return;
    }
    magnitude = magnitude > max ? max : magnitude;
    const auto bits = static_cast<uint32_t>(magnitude);
    value = static_cast<int32_t>(negative ? 0U - bits : bits);
    cursor = at;
}

void PARSE_GetHex(std::string& error, const char*& cursor, uint32_t& value, uint32_t min,
                  uint32_t max) {
    if (!error.empty()) {
        return;
    }
    PARSE_SkipBlanks(cursor);
    if (hexDigitValue(*cursor) < 0) {
        error = kNotANumber;
        return;
    }
    const char* at = cursor;
    uint32_t read = 0;
    for (; hexDigitValue(*at) >= 0; ++at) {
        read = read << 4 | static_cast<uint32_t>(hexDigitValue(*at));
    }
    if (read < min) {
        error = formatText("Expected a value >= %x", min);
        return;
    }
    value = read > max ? max : read;
    cursor = at;
}
