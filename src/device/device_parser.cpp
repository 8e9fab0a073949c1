#include "device/device_parser.h"

#include "device/device_statement.h"
#include "persist/parse.h"

#include <cstring>
#include <string_view>
#include <utility>

namespace {

constexpr size_t kMaxKey = 255; // letters

bool isLineBreak(char character) {
    return character == '\r' || character == '\n';
}

// The line of a byte, counted as the statements are: a run of line breaks counts once.
int lineOf(std::string_view text, size_t position) {
    int line = 1;
    for (size_t i = 1; i <= position; ++i) {
        if (isLineBreak(text[i - 1]) && !isLineBreak(text[i])) {
            ++line;
        }
    }
    return line;
}

// Where a NUL byte would hide the text behind it; npos when there is none. NULs that end the text
// hide nothing.
size_t findHidingNul(std::string_view text) {
    const size_t nul = text.find('\0');
    if (nul == std::string_view::npos ||
        text.find_first_not_of('\0', nul) == std::string_view::npos) {
        return std::string_view::npos;
    }
    return nul;
}

// Reads all statements up to the first bad one; the result is the line it stopped at.
int readStatements(Statement& statement) {
    int line = 1;
    while (*statement.cursor != '\0') {
        PARSE_GetWord(statement.error, statement.cursor, statement.key, kMaxKey);
        if (*statement.cursor != '/') {
            readStatementValue(statement);
        }
        if (!statement.ok()) {
            break;
        }
        PARSE_SkipLine(statement.cursor);
        ++line;
    }
    return line;
}

const char* findMissing(const DeviceRecord& record) {
    if (record.Device.empty()) {
        return "Device not specified";
    }
    if (record.Manufacturer.empty()) {
        return "Manufacturer not specified";
    }
    if (record.aBlock.empty()) {
        return "Bank not specified";
    }
    return "";
}

} // namespace

DeviceParseResult DEVICE_ParseText(const std::string& text) {
    DeviceParseResult result;
    if (const size_t nul = findHidingNul(text); nul != std::string::npos) {
        result.error = "NUL byte in the text";
        result.line = lineOf(text, nul);
        return result;
    }
    Statement statement;
    statement.cursor = text.c_str();
    statement.longest = text.size();
    result.line = readStatements(statement);
    result.error = statement.error;
    if (!result.error.empty()) {
        return result;
    }
    result.missing = findMissing(statement.record);
    if (result.missing.empty()) {
        result.record = std::move(statement.record);
    }
    return result;
}
