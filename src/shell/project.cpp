#include "shell/project.h"

#include "link/password.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/run.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/console.h"
#include "shell/settings.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

namespace {

constexpr size_t kLongestKey = 255;

// Those that this run could not read to their end, as full paths.
std::set<std::string> unread;

std::string projectKey(const std::string& path) {
    std::error_code none;
    return std::filesystem::absolute(path, none).lexically_normal().string();
}

bool isProgramFile(const Setting& setting) {
    return setting.number.set == nullptr && setting.text.get == nullptr;
}

std::string textValue(const SettingText& setting, std::string& error, const char*& cursor) {
    std::string text;
    PARSE_GetString(error, cursor, text, setting.longest + 1);
    return text;
}

uint32_t numberValue(const SettingNumber& setting, std::string& error, const char*& cursor) {
    int32_t decimal = 0;
    uint32_t hex = 0;
    if (setting.isHex) {
        PARSE_GetHex(error, cursor, hex, setting.min, setting.max);
        return hex;
    }
    PARSE_GetDec(error, cursor, decimal, setting.min, setting.max);
    return static_cast<uint32_t>(decimal);
}

// One reading of a project file.
struct Reading {
    bool opensFile = true;
    bool refused = false; // a statement was, and reported, and the reading went on
    std::string error = {};
};

// Reads the value of a statement and applies it when it is good.
void readValueOf(const Setting& setting, Reading& reading, const char*& cursor) {
    PARSE_SkipBlanks(cursor);
    PARSE_Expect(reading.error, cursor, '=');
    PARSE_SkipBlanks(cursor);
    if (setting.number.set != nullptr) {
        const uint32_t value = numberValue(setting.number, reading.error, cursor);
        if (reading.error.empty()) {
            setting.number.set(value);
        }
        return;
    }
    const std::string text = textValue(setting.text, reading.error, cursor);
    if (reading.error.empty() && (reading.opensFile || !isProgramFile(setting))) {
        reading.refused |= !setting.text.set(text, reading.error);
    }
}

void readStatement(Reading& reading, const char*& cursor) {
    std::string& error = reading.error;
    std::string word;
    PARSE_GetWord(error, cursor, word, kLongestKey);
    if (word.empty() || *cursor == '/') {
        return; // a header line, a comment or blanks
    }
    for (const Setting& setting : SETTINGS_Table()) {
        if (setting.line.key != nullptr && word == setting.line.key) {
            readValueOf(setting, reading, cursor);
            return;
        }
    }
    error = formatText("Unknown identifier: %s", word.c_str());
}

bool readsBack(const SettingNumber& setting, uint32_t value, const std::string& text) {
    const char* cursor = text.c_str();
    std::string error;
    return numberValue(setting, error, cursor) == value && error.empty();
}

bool readsBack(const SettingText& setting, const std::string& value, const std::string& text) {
    const char* cursor = text.c_str();
    std::string error;
    const bool fits = value.size() <= setting.longest && value.find('\0') == std::string::npos;
    return fits && textValue(setting, error, cursor) == value && error.empty();
}

// What could not be read back would end the reading of the whole project there, or come back as
// another value, and is left out: a port or rate that was never chosen, a path that no line can
// hold.
std::string lineOf(const Setting& setting, const std::string& programFile) {
    std::string text;
    bool isReadable = false;
    if (const SettingNumber& number = setting.number; number.set != nullptr) {
        const uint32_t value = number.get();
        text = formatText(number.isHex ? "%X" : "%u", value);
        isReadable = readsBack(number, value, text);
    } else {
        const std::string value = isProgramFile(setting) ? programFile : setting.text.get();
        text = '"' + value + '"';
        isReadable = readsBack(setting.text, value, text) &&
                     !(setting.text.isOptional && value.empty()) &&
                     !(isProgramFile(setting) && (value.empty() || FILES_IsStream(value)));
    }
    return isReadable ? std::string(setting.line.key) + " = " + text + "\r\n" : "";
}

// On standard error too, where the log is not shown there already.
void tell(const std::string& text) {
    LOG_Add(text);
    if (!RUN_IsUnattended()) {
        CONSOLE_PrintLine(text);
    }
}

// Moves a project that could not be read out of the way. False when it stays where it is.
bool keepUnread(const std::string& path) {
    if (!unread.contains(projectKey(path)) || !FILES_Exists(path)) {
        return true;
    }
    const std::string kept = path + ".bad";
    const FileResult result = FILES_Rename(path, kept);
    tell("Note: the project " + path + " could not be read to its end; " +
         (result.ok() ? "it is kept as " + kept
                      : "it stays as it is, without the values of this run (" + kept + ": " +
                            result.reason + ")"));
    return result.ok();
}

// Reads up to the first fault; false when there is one.
bool readStatements(const std::string& path, const std::string& content, Reading& reading) {
    const char* cursor = content.c_str();
    const char* end = cursor + content.size();
    while (cursor != end) {
        const char* const statement = cursor;
        readStatement(reading, cursor);
        if (reading.error.empty() && *cursor == '\0' && cursor != end) {
            reading.error = "Unexpected NUL byte";
        }
        if (!reading.error.empty()) {
            const auto line = 1 + std::count(content.c_str(), statement, '\n');
            LOG_Add(formatText("%s is not read beyond line %td", path.c_str(), line));
            ERROR_Ask(nullptr, PARSE_ErrorWords(reading.error), "Error reading project file",
                      BOX_OK);
            return false;
        }
        PARSE_SkipLine(cursor);
    }
    return true;
}

} // namespace

bool PROJECT_Save(const std::string& path, const std::string& programFile) {
    std::map<int, std::string> lines;
    for (const Setting& setting : SETTINGS_Table()) {
        if (setting.line.key != nullptr) {
            lines[setting.line.place] = lineOf(setting, programFile);
        }
    }
    std::string project = "\\\\\r\n\\\\ Calvorin project file\r\n\\\\\r\n";
    for (const auto& [place, line] : lines) {
        project += line;
    }
    if (!keepUnread(path)) {
        return false;
    }
    unread.erase(projectKey(path));
    const auto access = PASSWORD_GetLen() == 0 ? FileAccess::usual : FileAccess::ownerOnly;
    const FileResult result = FILES_Replace(path, project, access);
    if (!result.ok()) {
        LOG_Add(formatText("%s is not written: %s", path.c_str(), result.reason.c_str()));
    }
    return result.ok();
}

ProjectRead PROJECT_Load(const std::string& path, bool opensFile) {
    unread.insert(projectKey(path));
    std::string content;
    if (const FileResult result = FILES_ReadAll(path, content); !result.ok()) {
        LOG_Add(formatText("%s: %s", path.c_str(), result.reason.c_str()));
        ERROR_Out(nullptr, ERROR_WithReason("Read file failed", path + ": " + result.reason), 1);
        return ProjectRead::failed;
    }
    Reading reading{opensFile};
    if (!readStatements(path, content, reading) || reading.refused) {
        return ProjectRead::partly;
    }
    unread.erase(projectKey(path));
    return ProjectRead::whole;
}
