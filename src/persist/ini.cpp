#include "persist/ini.h"

#include "notice/error.h"
#include "notice/log.h"
#include "persist/chars.h"
#include "persist/hex_text.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>

namespace {

constexpr char kHeader[] = "//\r\n// Calvorin ini file\r\n//\r\n\r\n";
constexpr size_t kStringLength = 2000; // characters of a quoted string
constexpr int32_t kMaxNumber = std::numeric_limits<int32_t>::max();

std::string text;
// What could not be read is not overwritten either: the user may want to repair it.
bool savingAllowed = true;

void report(const std::string& message) {
    ERROR_Out(nullptr, message, 1);
}

int lineNumber(size_t position) {
    const auto end = text.begin() + static_cast<ptrdiff_t>(position);
    return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

// The message, and in the log where it belongs to.
void reportLine(size_t position, const std::string& message) {
    LOG_Add(formatText("%s is faulty in line %d", FILES_BesideProgram("ini").c_str(),
                       lineNumber(position)));
    report(message);
}

void save() {
    if (savingAllowed) {
        static_cast<void>(FILES_Replace(FILES_BesideProgram("ini"), text));
    }
}

size_t afterLine(size_t position) {
    const char* cursor = text.c_str() + position;
    PARSE_SkipLine(cursor);
    return static_cast<size_t>(cursor - text.c_str());
}

size_t afterBlanks(size_t position) {
    const char* cursor = text.c_str() + position;
    PARSE_SkipBlanks(cursor);
    return static_cast<size_t>(cursor - text.c_str());
}

bool standsAt(size_t position, std::string_view expected) {
    return std::string_view(text).substr(position).starts_with(expected);
}

// Behind one line break of any kind, where files written by hand may have another one than ours.
size_t afterOneBreak(size_t position) {
    if (standsAt(position, "\r\n")) {
        return position + 2;
    }
    return position < text.size() && isLineBreak(text[position]) ? position + 1 : position;
}

// The position of the section's body, none when there is no such section.
std::optional<size_t> findSection(std::string_view section) {
    const std::string line = formatText("[%.*s]", static_cast<int>(section.size()), section.data());
    for (size_t at = 0; at < text.size(); at = afterLine(at)) {
        if (standsAt(at, line)) {
            const size_t end = text.find_first_of("\r\n", at);
            return end == std::string::npos ? text.size() : afterOneBreak(end);
        }
    }
    return std::nullopt;
}

bool fits(size_t additional) {
    return text.size() + additional < kIniCapacity;
}

std::optional<size_t> findOrCreateSection(std::string_view section) {
    std::optional<size_t> body = findSection(section);
    const bool lineIsOpen = !text.empty() && !isLineBreak(text.back());
    std::string addition = lineIsOpen && body.value_or(text.size()) == text.size() ? "\r\n" : "";
    if (!body) {
        addition += formatText("[%.*s]\r\n", static_cast<int>(section.size()), section.data());
    }
    if (addition.empty()) {
        return body;
    }
    if (!fits(addition.size())) {
        return std::nullopt;
    }
    text += addition;
    return text.size();
}

// The position of the key's first character in the section whose body begins at `body`.
std::optional<size_t> findKey(size_t body, std::string_view key) {
    for (size_t at = body; at < text.size() && text[at] != '['; at = afterLine(at)) {
        const size_t begin = afterBlanks(at);
        if (standsAt(begin, key)) {
            return begin;
        }
    }
    return std::nullopt;
}

void eraseKey(std::string_view section, std::string_view key) {
    const std::optional<size_t> body = findSection(section);
    const std::optional<size_t> at = body ? findKey(*body, key) : std::nullopt;
    if (at) {
        text.erase(*at, afterLine(*at) - *at);
    }
}

// Puts the key's new line directly under the section line.
void writeLine(std::string_view section, std::string_view key, const std::string& value) {
    std::string before = text;
    eraseKey(section, key);
    const std::string line = std::string(key) + value + "\r\n";
    const std::optional<size_t> body = findOrCreateSection(section);
    if (!body || !fits(line.size())) {
        text = std::move(before);
        report(formatText("%s: no room for \"%s\", a settings file holds fewer than %zu bytes",
                          FILES_BesideProgram("ini").c_str(), std::string(key).c_str(),
                          kIniCapacity));
        return;
    }
    text.insert(*body, line);
    save();
}

std::string joined(std::span<const int32_t> values) {
    std::string list;
    for (const int32_t value : values) {
        list += formatText(list.empty() ? "%d" : ", %d", value);
    }
    return list;
}

using ValueReader = std::function<void(std::string& error, const char*& cursor)>;

// Runs `read` on the text behind the key's characters and reports what it could not read.
void readValue(size_t keyAt, std::string_view key, const ValueReader& read) {
    const char* cursor = text.c_str() + keyAt + key.size();
    std::string error;
    read(error, cursor);
    if (!error.empty()) {
        reportLine(keyAt, PARSE_ErrorWords(error));
    }
}

void readKey(std::string_view section, std::string_view key, const ValueReader& read) {
    const std::optional<size_t> body = findOrCreateSection(section);
    const std::optional<size_t> at = body ? findKey(*body, key) : std::nullopt;
    if (at) {
        readValue(*at, key, read);
    }
}

void expect(std::string& error, const char*& cursor, char separator) {
    PARSE_SkipBlanks(cursor);
    PARSE_Expect(error, cursor, separator);
}

void readNumber(std::string& error, const char*& cursor, int32_t& value) {
    PARSE_GetDec(error, cursor, value, 0, kMaxNumber);
}

// Reads `count` numbers separated by commas; those beyond the room for them are not stored.
void readNumbers(std::string& error, const char*& cursor, int32_t count,
                 std::span<int32_t> values) {
    for (size_t i = 0; i < static_cast<size_t>(count) && error.empty(); ++i) {
        if (i > 0) {
            expect(error, cursor, ',');
        }
        int32_t ignored = 0;
        readNumber(error, cursor, i < values.size() ? values[i] : ignored);
    }
}

// NUL bytes would end the text for the tokenizer. The settings around them are still good.
void removeNulBytes() {
    const size_t first = text.find('\0');
    if (first != std::string::npos) {
        reportLine(first, "NUL byte, left out");
        std::erase(text, '\0');
    }
}

// Reads as much as a settings file may hold; what is larger is no settings file.
bool readFile(FileReader& file, const std::string& path) {
    std::string content(kIniCapacity, '\0');
    size_t length = 0;
    ptrdiff_t count = 1;
    while (count > 0 && length < content.size()) {
        count = file.read(std::span(content).subspan(length));
        length += count > 0 ? static_cast<size_t>(count) : 0;
    }
    content.resize(length);
    if (length == kIniCapacity) {
        report(formatText("%s: a settings file holds fewer than %zu bytes; it is not used",
                          path.c_str(), kIniCapacity));
        return false;
    }
    text = std::move(content);
    if (count < 0) {
        report("Read file failed");
        return false;
    }
    return true;
}

} // namespace

void INI_Load() {
    text.clear();
    savingAllowed = true;
    const std::string path = FILES_BesideProgram("ini");
    FileReader file;
    const FileResult opened = file.open(path);
    if (opened.status == FileStatus::notFound) {
        return;
    }
    if (!opened.ok()) {
        report(formatText("%s: %s", path.c_str(), opened.reason.c_str()));
    }
    savingAllowed = opened.ok() && readFile(file, path);
    if (savingAllowed && text.empty()) {
        text = kHeader;
    }
    removeNulBytes();
}

void INI_WriteInt(std::string_view section, std::string_view key, int32_t value) {
    writeLine(section, key, formatText(" = %d", value));
}

void INI_WriteRect(std::string_view section, std::string_view key, const int32_t (&values)[4]) {
    writeLine(section, key, " = " + joined(values));
}

void INI_WriteIntArray(std::string_view section, std::string_view key,
                       std::span<const int32_t> values) {
    writeLine(section, key, formatText("[%zu] = ", values.size()) + joined(values));
}

void INI_WriteString(std::string_view section, std::string_view key,
                     std::span<const uint8_t> bytes) {
    writeLine(section, key, "=\"" + HEXTEXT_FromBytes(bytes) + '"');
}

void INI_ReadInt(std::string_view section, std::string_view key, int32_t& value) {
    readKey(section, key, [&](std::string& error, const char*& cursor) {
        expect(error, cursor, '=');
        readNumber(error, cursor, value);
    });
}

void INI_ReadRect(std::string_view section, std::string_view key, int32_t (&values)[4]) {
    readKey(section, key, [&](std::string& error, const char*& cursor) {
        expect(error, cursor, '=');
        readNumbers(error, cursor, 4, values);
    });
}

void INI_ReadIntArray(std::string_view section, std::string_view key, std::span<int32_t> values) {
    readKey(section, key, [&](std::string& error, const char*& cursor) {
        int32_t count = 0;
        expect(error, cursor, '[');
        readNumber(error, cursor, count);
        expect(error, cursor, ']');
        expect(error, cursor, '=');
        readNumbers(error, cursor, count, values);
    });
}

void INI_ReadString(std::string_view section, std::string_view key, std::span<uint8_t> bytes) {
    std::ranges::fill(bytes, uint8_t{0});
    readKey(section, key, [&](std::string& error, const char*& cursor) {
        std::string quoted;
        expect(error, cursor, '=');
        PARSE_GetString(error, cursor, quoted, kStringLength);
        if (error.empty()) {
            HEXTEXT_Decode(quoted, bytes, error);
        }
    });
}

void INI_ReadText(std::string_view section, std::string_view key, std::string& value) {
    const std::optional<size_t> body = findSection(section);
    for (std::optional<size_t> at = body ? findKey(*body, key) : std::nullopt; at;
         at = findKey(afterLine(*at), key)) {
        const char* const behind = text.c_str() + *at + key.size();
        if (!isBlank(*behind) && *behind != '=') {
            continue; // a longer key that begins with these characters
        }
        readValue(*at, key, [&](std::string& error, const char*& cursor) {
            std::string quoted;
            expect(error, cursor, '=');
            PARSE_GetString(error, cursor, quoted, kStringLength);
            if (error.empty()) {
                value = quoted;
            }
        });
        return;
    }
}

void INI_DeleteKey(std::string_view section, std::string_view key) {
    eraseKey(section, key);
    save();
}
