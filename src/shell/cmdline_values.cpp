#include "shell/cmdline_values.h"

#include "notice/error.h"
#include "persist/hex_text.h"

#include <cstdlib>

namespace {

constexpr size_t kMostHexCharacters = 10;

std::string argument;
size_t cursor = 0;
bool valueError = false;

void failValue(std::string_view text) {
    valueError = true;
    ERROR_Out(nullptr, text, 1);
}

// The characters of `accepted` from the cursor on; none when another character stands among them.
bool readValueText(std::string_view accepted, std::string& text) {
    while (cursor < argument.size()) {
        const char character = argument[cursor];
        if (accepted.find(character) == std::string_view::npos) {
            return false;
        }
        if (!text.empty() && (character == '-' || character == ',')) {
            break;
        }
        text += character;
        ++cursor;
    }
    return true;
}

} // namespace

void CMDLINE_SetArgument(std::string_view text) {
    argument = text;
    cursor = 0;
}

const std::string& CMDLINE_GetArgument() {
    return argument;
}

int32_t CMDLINE_GetHexValue() {
    valueError = false;
    std::string text;
    if (!readValueText("0123456789abcdefABCDEF-,", text) || text.size() > kMostHexCharacters) {
        failValue("CMDLINE_GetHexValue: Not a hex value");
        return -1;
    }
    if (text.empty()) {
        failValue("CMDLINE_GetHexValue: Missing value");
        return 0;
    }
    std::string error;
    const int32_t value = HEXTEXT_ToValue(text, error);
    if (!error.empty()) {
        failValue(error);
        return 0;
    }
    return value;
}

int32_t CMDLINE_GetDecValue() {
    valueError = false;
    std::string text;
    if (!readValueText("0123456789-,", text)) {
        failValue("CMDLINE_GetDecValue: Not a decimal value");
        return -1;
    }
    if (text.empty()) {
        failValue("CMDLINE_GetHexValue: Missing value"); // the same text for both
        return 0;
    }
    return static_cast<int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

std::string CMDLINE_GetString(size_t maximum) {
    valueError = false;
    std::string text;
    while (cursor < argument.size() && (text.empty() || argument[cursor] != ',')) {
        if (text.size() == maximum) {
            failValue("CMDLINE_GetString: String to long");
            break;
        }
        text += argument[cursor++];
    }
    if (text.empty()) {
        failValue("CMDLINE_GetString: Missing string");
    }
    return text;
}

char CMDLINE_GetChar() {
    return cursor < argument.size() ? argument[cursor++] : '\0';
}

char CMDLINE_PeekBehindNumber() {
    constexpr std::string_view kDigits = "0123456789";
    const size_t first = argument.find_first_of("0123456789-", cursor);
    if (first != cursor) {
        return '\0';
    }
    const size_t behind = argument.find_first_not_of(kDigits, cursor + 1);
    return behind != std::string::npos ? argument[behind] : '\0';
}

bool CMDLINE_ValueError() {
    return valueError;
}
