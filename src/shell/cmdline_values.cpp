#include "shell/cmdline_values.h"

#include "persist/chars.h"
#include "persist/hex_text.h"
#include "platform/format.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr size_t kMostHexCharacters = 10;

std::string argument;
size_t cursor = 0;
bool valueError = false;
int64_t trueValue = 0;

struct Fault {
    std::string text;
    bool isDoubt = false;
};
std::vector<Fault> faults;

void failValue(std::string_view text) {
    valueError = true;
    CMDLINE_Fault(text);
}

// Keeps what the text says; a text without any digit counts as 0 for those who may guess.
void noteTrueValue(const std::string& text, int base, const char* noNumber) {
    trueValue = std::strtoll(text.c_str(), nullptr, base);
    if (!std::ranges::any_of(text, [](char c) { return hexDigitValue(c) >= 0; }) ||
        text.starts_with(',')) {
        CMDLINE_Doubt(noNumber);
    }
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
    valueError = false;
    faults.clear();
}

int32_t CMDLINE_GetHexValue() {
    constexpr const char* noNumber = "CMDLINE_GetHexValue: Not a hex value";
    valueError = false;
    std::string text;
    if (!readValueText("0123456789abcdefABCDEF-,", text) || text.size() > kMostHexCharacters) {
        failValue(noNumber);
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
    noteTrueValue(text, 16, noNumber);
    return value;
}

int64_t CMDLINE_GetTrueValue() {
    return trueValue;
}

int32_t CMDLINE_GetDecValue() {
    constexpr const char* noNumber = "CMDLINE_GetDecValue: Not a decimal value";
    valueError = false;
    std::string text;
    if (!readValueText("0123456789-,", text)) {
        failValue(noNumber);
        return -1;
    }
    if (text.empty()) {
        failValue("CMDLINE_GetHexValue: Missing value"); // the same text for both
        return 0;
    }
    noteTrueValue(text, 10, noNumber);
    return static_cast<int32_t>(trueValue);
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

std::string CMDLINE_TakeRest() {
    std::string rest = argument.substr(cursor);
    cursor = argument.size();
    return rest;
}

std::string CMDLINE_PeekRest() {
    return argument.substr(cursor);
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

void CMDLINE_Fault(std::string_view text) {
    faults.push_back({std::string(text)});
}

void CMDLINE_Doubt(std::string_view text) {
    faults.push_back({std::string(text), true});
}

void CMDLINE_DoubtRest() {
    if (faults.empty() && cursor < argument.size()) {
        CMDLINE_Doubt(formatText("\"%s\" behind the value is too much", argument.c_str() + cursor));
    }
}

std::vector<std::string> CMDLINE_Faults(bool doubtsToo) {
    std::vector<std::string> texts;
    for (const Fault& fault : faults) {
        if (doubtsToo || !fault.isDoubt) {
            texts.push_back(fault.text);
        }
    }
    return texts;
}
