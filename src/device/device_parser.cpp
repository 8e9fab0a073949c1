#include "device/device_parser.h"

#include "device/description_check.h"
#include "device/device_statement.h"
#include "persist/parse.h"
#include "platform/format.h"

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
        statement.lines[statement.key] = line;
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

std::string faultTexts(const DeviceParseResult& result) {
    std::string texts;
    for (const DeviceFault& fault : result.faults) {
        texts += formatText("Line %d: %s\n", fault.line, PARSE_ErrorWords(fault.text).c_str());
    }
    return result.missing.empty() ? texts : "Missing parameter: " + result.missing + "\n";
}

DeviceParseResult DEVICE_ParseText(const std::string& text) {
    DeviceParseResult result;
    if (const size_t nul = findHidingNul(text); nul != std::string::npos) {
        result.faults = {{lineOf(text, nul), "NUL byte in the text"}};
        return result;
    }
    Statement statement;
    statement.cursor = text.c_str();
    statement.longest = text.size();
    const int line = readStatements(statement);
    if (!statement.ok()) {
        result.faults = {{line, statement.error}};
        return result;
    }
    result.missing = findMissing(statement.record);
    if (!result.missing.empty()) {
        return result;
    }
    for (const DescriptionFault& fault : checkDescription(statement.record)) {
        // A key that is not there stands for the end of the description.
        const auto found = statement.lines.find(fault.key);
        result.faults.push_back(
            {found == statement.lines.end() ? line : found->second, fault.text});
    }
    if (result.faults.empty()) {
        result.record = std::move(statement.record);
    }
    return result;
}
