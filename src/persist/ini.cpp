#include "persist/ini.h"

#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/chars.h"
#include "persist/hex_text.h"
#include "persist/ini_check.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace {

constexpr char kHeader[] = "//\r\n// Calvorin ini file\r\n//\r\n\r\n";
constexpr size_t kStringLength = 2000; // characters of a quoted string
constexpr int32_t kMaxNumber = std::numeric_limits<int32_t>::max();
constexpr int32_t kUnreadable = std::numeric_limits<int32_t>::min(); // its magnitude is none
constexpr char kPorts[] = "Settings PORTS";

struct Change {
    std::string section;
    std::string key;
    bool operator==(const Change&) const = default;
};

IniText settings; // as this run has read and set them
IniText known;    // as they stand in the file, as far as this run knows
IniText common;   // ports for all users of a program folder that is not written
// The keys that differ between both, in the order in which they were written.
std::vector<Change> changes;
// What could not be read is not overwritten either: the user may want to repair it.
bool savingAllowed = true;

std::string settingsPath() {
    return FILES_KeptFile(Kept::settings, "ini");
}

void report(const std::string& message) {
    ERROR_Out(nullptr, message, 1);
}

// The message, and in the log where it belongs to.
void reportLine(const std::string& path, int line, const std::string& message) {
    LOG_Add(formatText("%s is faulty in line %d", path.c_str(), line));
    report(message);
}

void reportNoRoom(const std::string& key) {
    report(formatText("%s: no room for \"%s\", a settings file holds fewer than %zu bytes",
                      settingsPath().c_str(), key.c_str(), kIniCapacity));
}

void note(std::string_view section, std::string_view key) {
    const Change change{std::string(section), std::string(key)};
    std::erase(changes, change);
    changes.push_back(change);
}

std::string withoutBlanks(std::string line) {
    std::erase_if(line, isBlank);
    return line;
}

// A line that says already what it is to say stays as it is.
void writeLine(std::string_view section, std::string_view key, const std::string& value) {
    const std::string line = std::string(key) + value;
    if (withoutBlanks(settings.lineOf(section, key).value_or("")) == withoutBlanks(line)) {
        return;
    }
    if (settings.put(section, key, line)) {
        note(section, key);
    } else {
        reportNoRoom(std::string(key));
    }
}

bool canBeRead(std::span<const int32_t> values) {
    return std::ranges::find(values, kUnreadable) == values.end();
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
    const char* cursor = settings.text().c_str() + keyAt + key.size();
    std::string error;
    read(error, cursor);
    if (!error.empty()) {
        reportLine(settingsPath(), settings.lineNumber(keyAt), PARSE_ErrorWords(error));
    }
}

void readKey(std::string_view section, std::string_view key, const ValueReader& read) {
    if (const std::optional<size_t> at = settings.findKey(section, key)) {
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
std::string withoutNulBytes(std::string text) {
    std::erase(text, '\0');
    return text;
}

// Reads as much as a settings file may hold; what is larger is no settings file.
bool readFile(FileReader& file, const std::string& path, std::string& content) {
    content.assign(kIniCapacity, '\0');
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
        content.clear();
        return false;
    }
    if (count < 0) {
        report(ERROR_WithReason("Read file failed", path + ": " + file.failure().reason));
    }
    return count >= 0;
}

// A missing file is an empty text. False when there is one that could not be read whole.
bool readSettings(std::string& content) {
    const std::string path = settingsPath();
    FileReader file;
    const FileResult opened = file.open(path);
    if (opened.status == FileStatus::notFound) {
        return true;
    }
    if (!opened.ok()) {
        report(formatText("%s: %s", path.c_str(), opened.reason.c_str()));
        return false;
    }
    const bool whole = readFile(file, path, content);
    content = whole && content.empty() ? kHeader : content;
    return whole;
}

// One that cannot be read costs its ports; it is not the user's to repair.
void readCommon() {
    std::string content;
    if (FILES_IsPortable() ||
        !FILES_ReadAll(FILES_BesideProgram("ini"), content, kIniCapacity).ok()) {
        content.clear();
    }
    common = IniText(withoutNulBytes(std::move(content)));
    common.keepOnly(kPorts);
}

void tellNearNames(const IniText& text, const std::string& path) {
    for (const std::string& note : INICHECK_Notes(text)) {
        LOG_Add(formatText("Note: %s, %s", path.c_str(), note.c_str()));
    }
}

// The position of a key that ends where its name does.
std::optional<size_t> findWholeKey(const IniText& text, std::string_view section,
                                   std::string_view key) {
    std::optional<size_t> at = text.findKey(section, key);
    while (at) {
        const char behind = text.text().c_str()[*at + key.size()];
        if (isBlank(behind) || behind == '=') {
            break;
        }
        at = text.findKeyFrom(text.afterLine(*at), key);
    }
    return at;
}

void readQuoted(const IniText& text, const std::string& path, size_t at, std::string& value) {
    const char* cursor = text.text().c_str() + at;
    std::string error;
    std::string quoted;
    expect(error, cursor, '=');
    PARSE_GetString(error, cursor, quoted, kStringLength);
    if (error.empty()) {
        value = quoted;
    } else {
        reportLine(path, text.lineNumber(at), PARSE_ErrorWords(error));
    }
}

// What somebody has edited in the file since this run read it is his.
void carryOver(const Change& change, IniText& file) {
    const auto& [section, key] = change;
    if (file.lineOf(section, key) != known.lineOf(section, key)) {
        return;
    }
    const std::optional<std::string> line = settings.lineOf(section, key);
    if (!line) {
        file.erase(section, key);
        known.erase(section, key);
    } else if (!file.put(section, key, *line) || !known.put(section, key, *line)) {
        reportNoRoom(key);
    }
}

} // namespace

void INI_Load() {
    std::string content;
    savingAllowed = readSettings(content);
    readCommon();
    const IniText whole(content);
    if (const size_t nul = content.find('\0'); nul != std::string::npos) {
        reportLine(settingsPath(), whole.lineNumber(nul), "NUL byte, left out");
    }
    changes.clear();
    settings = IniText(withoutNulBytes(std::move(content)));
    known = settings;
    if (RUN_IsIsolated()) {
        savingAllowed = false;
        settings.keepOnly(kPorts);
    }
    tellNearNames(settings, settingsPath());
    tellNearNames(common, FILES_BesideProgram("ini"));
}

void INI_Save() {
    std::string content;
    if (!savingAllowed || changes.empty() || !readSettings(content)) {
        return;
    }
    IniText file(withoutNulBytes(std::move(content)));
    for (const Change& change : changes) {
        carryOver(change, file);
    }
    changes.clear();
    static_cast<void>(FILES_Replace(settingsPath(), file.text()));
}

void INI_WriteInt(std::string_view section, std::string_view key, int32_t value) {
    if (canBeRead({&value, 1})) {
        writeLine(section, key, formatText(" = %d", value));
    }
}

void INI_WriteRect(std::string_view section, std::string_view key, const int32_t (&values)[4]) {
    if (canBeRead(values)) {
        writeLine(section, key, " = " + joined(values));
    }
}

void INI_WriteIntArray(std::string_view section, std::string_view key,
                       std::span<const int32_t> values) {
    if (canBeRead(values)) {
        writeLine(section, key, formatText("[%zu] = ", values.size()) + joined(values));
    }
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
    for (const auto& [text, path] :
         {std::pair(&settings, settingsPath()), std::pair(&common, FILES_BesideProgram("ini"))}) {
        if (const std::optional<size_t> at = findWholeKey(*text, section, key)) {
            readQuoted(*text, path, *at + key.size(), value);
            return;
        }
    }
}

void INI_DeleteKey(std::string_view section, std::string_view key) {
    if (settings.findKey(section, key)) {
        settings.erase(section, key);
        note(section, key);
    }
}
