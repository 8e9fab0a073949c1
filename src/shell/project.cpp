#include "shell/project.h"

#include "link/password.h"
#include "notice/error.h"
#include "notice/log.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"
#include "shell/settings.h"

#include <algorithm>
#include <map>

namespace {

constexpr size_t kLongestKey = 255;

// Reads the value of a statement and applies it when it is good.
void readText(const SettingText& setting, std::string& error, const char*& cursor) {
    std::string text;
    PARSE_GetString(error, cursor, text, setting.longest + 1);
    if (error.empty()) {
        setting.set(text, error);
    }
}

void readNumber(const SettingNumber& setting, std::string& error, const char*& cursor) {
    int32_t decimal = 0;
    uint32_t hex = 0;
    if (setting.isHex) {
        PARSE_GetHex(error, cursor, hex, setting.min, setting.max);
    } else {
        PARSE_GetDec(error, cursor, decimal, setting.min, setting.max);
    }
    if (error.empty()) {
        setting.set(setting.isHex ? hex : static_cast<uint32_t>(decimal));
    }
}

void readStatement(std::string& error, const char*& cursor) {
    std::string word;
    PARSE_GetWord(error, cursor, word, kLongestKey);
    if (word.empty() || *cursor == '/') {
        return; // a header line, a comment or blanks
    }
    for (const Setting& setting : SETTINGS_Table()) {
        if (setting.line.key != nullptr && word == setting.line.key) {
            PARSE_SkipBlanks(cursor);
            PARSE_Expect(error, cursor, '=');
            PARSE_SkipBlanks(cursor);
            if (error.empty() && setting.number.set != nullptr) {
                readNumber(setting.number, error, cursor);
            } else if (error.empty()) {
                readText(setting.text, error, cursor);
            }
            return;
        }
    }
    error = formatText("Unknown identifier: %s", word.c_str());
}

// What could not be read back would end the reading of the whole project there and is left out: a
// port or rate that was never chosen, a path that no line can hold.
std::string lineOf(const Setting& setting, const std::string& programFile) {
    const char* key = setting.line.key;
    if (const SettingNumber& number = setting.number; number.set != nullptr) {
        const uint32_t value = number.get();
        if (value < number.min) {
            return "";
        }
        return number.isHex ? formatText("%s = %X\r\n", key, value)
                            : formatText("%s = %u\r\n", key, value);
    }
    const bool isProgramFile = setting.text.get == nullptr;
    const std::string text = isProgramFile ? programFile : setting.text.get();
    const bool fits = text.size() <= setting.text.longest && text.find('"') == std::string::npos &&
                      !(isProgramFile && FILES_IsStream(text));
    return fits && !(isProgramFile && text.empty())
               ? formatText("%s = \"%s\"\r\n", key, text.c_str())
               : "";
}

} // namespace

void PROJECT_Save(const std::string& path, const std::string& programFile) {
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
    const auto access = PASSWORD_GetLen() == 0 ? FileAccess::usual : FileAccess::ownerOnly;
    if (const FileResult result = FILES_Replace(path, project, access); !result.ok()) {
        LOG_Add(formatText("%s is not written: %s", path.c_str(), result.reason.c_str()));
    }
}

bool PROJECT_Load(const std::string& path) {
    std::string content;
    if (const FileResult result = FILES_ReadAll(path, content); !result.ok()) {
        LOG_Add(formatText("%s: %s", path.c_str(), result.reason.c_str()));
        ERROR_Out(nullptr, ERROR_WithReason("Read file failed", path + ": " + result.reason), 1);
        return false;
    }
    const char* cursor = content.c_str();
    const char* end = cursor + content.size();
    std::string error;
    while (cursor != end) {
        const char* const statement = cursor;
        readStatement(error, cursor);
        if (error.empty() && *cursor == '\0' && cursor != end) {
            error = "Unexpected NUL byte";
        }
        if (!error.empty()) {
            const auto line = 1 + std::count(content.c_str(), statement, '\n');
            LOG_Add(formatText("%s is not read beyond line %td", path.c_str(), line));
            ERROR_Ask(nullptr, PARSE_ErrorWords(error), "Error reading project file", BOX_OK);
            return false;
        }
        PARSE_SkipLine(cursor);
    }
    return true;
}
