// The character classes of the program's text formats. They are those of plain ASCII whatever the
// locale says, and safe for bytes above 0x7F.
#pragma once

constexpr bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

constexpr bool isLineBreak(char c) {
    return c == '\r' || c == '\n';
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// 0 to 15, or -1 when the character is not a hex digit.
constexpr int hexDigitValue(char c) {
    if (isDigit(c)) {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

constexpr char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
