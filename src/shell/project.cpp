#include "shell/project.h"

#include "device/device.h"
#include "link/password.h"
#include "notice/error.h"
#include "notice/log.h"
#include "persist/hex_text.h"
#include "persist/parse.h"
#include "platform/files.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/program_files.h"

#include <algorithm>
#include <functional>

namespace {

constexpr size_t kLongestKey = 255;
constexpr size_t kLongestPath = 499;
constexpr size_t kLongestDevice = 99;
constexpr size_t kLongestPassword = 999; // characters

// Reads the value of a statement and applies it when it is good.
using ReadStatement = std::function<void(std::string& error, const char*& cursor)>;

template <class Apply>
ReadStatement decimal(int32_t min, int32_t max, Apply apply) {
    return [=](std::string& error, const char*& cursor) {
        int32_t value = 0;
        PARSE_GetDec(error, cursor, value, min, max);
        if (error.empty()) {
            apply(value);
        }
    };
}

template <class Apply>
ReadStatement hex(uint32_t max, Apply apply) {
    return [=](std::string& error, const char*& cursor) {
        uint32_t value = 0;
        PARSE_GetHex(error, cursor, value, 0, max);
        if (error.empty()) {
            apply(value);
        }
    };
}

template <class Apply>
ReadStatement text(size_t longest, Apply apply) {
    return [=](std::string& error, const char*& cursor) {
        std::string value;
        PARSE_GetString(error, cursor, value, longest + 1);
        if (error.empty()) {
            apply(value, error);
        }
    };
}

void applyPassword(const std::string& digits, std::string& error) {
    const std::vector<uint8_t> bytes = HEXTEXT_ToBytes(digits, kMaxPassword, error);
    if (error.empty()) {
        PASSWORD_SetBytes(bytes);
    }
}

struct Key {
    const char* name;
    ReadStatement read;
};

const std::vector<Key>& keys() {
    static const std::vector<Key> table = {
        {"Port", decimal(1, kMaxComPort, [](int32_t v) { SIO_SetPort(static_cast<uint32_t>(v)); })},
        {"Baudrate",
         decimal(1, 1'000'000, [](int32_t v) { SIO_SetBaudrate(static_cast<uint32_t>(v)); })},
        {"Logging", decimal(0, 1, [](int32_t v) { SIO_SetLogging(static_cast<uint32_t>(v)); })},
        {"File", text(kLongestPath, [](const std::string& v, std::string&) { PROGRAM_Open(v); })},
        {"Device",
         text(kLongestDevice, [](const std::string& v, std::string&) { DEVICE_FindByName(v); })},
        {"PasswordAdrCount", hex(0xFFFFFF, PASSWORD_SetAdrCount)},
        {"PasswordFillFF", decimal(0, 1, [](int32_t v) { PASSWORD_SetFillFF(v != 0); })},
        {"PasswordHexmode", decimal(0, 1, [](int32_t v) { PASSWORD_SetHexmode(v != 0); })},
        {"PasswordAdrCompare", hex(0xFFFFFF, PASSWORD_SetAdrCompare)},
        {"Password", text(kLongestPassword, applyPassword)},
    };
    return table;
}

void readStatement(std::string& error, const char*& cursor) {
    std::string word;
    PARSE_GetWord(error, cursor, word, kLongestKey);
    if (word.empty() || *cursor == '/') {
        return; // a header line, a comment or blanks
    }
    for (const Key& key : keys()) {
        if (word == key.name) {
            PARSE_SkipBlanks(cursor);
            PARSE_Expect(error, cursor, '=');
            PARSE_SkipBlanks(cursor);
            if (error.empty()) {
                key.read(error, cursor);
            }
            return;
        }
    }
    error = formatText("Unknown identifier: %s", word.c_str());
}

// What could not be read back would end the reading of the whole project there: a port or rate that
// was never chosen is left out, as is a path that no line can hold.
std::string chosen(const char* key, uint32_t value) {
    return value == 0 ? "" : formatText("%s = %u\r\n", key, value);
}

bool canBeReadBack(const std::string& programFile) {
    return programFile.size() <= kLongestPath && programFile.find('"') == std::string::npos &&
           !FILES_IsStream(programFile);
}

} // namespace

bool PROJECT_Save(const std::string& path, const std::string& programFile) {
    std::string project = "\\\\\r\n\\\\ Calvorin project file\r\n\\\\\r\n";
    project += chosen("Port", SIO_GetPort());
    project += chosen("Baudrate", SIO_GetBaudrate());
    project += formatText("Logging = %d\r\n", static_cast<int>(SIO_GetLogging()));
    if (!programFile.empty() && canBeReadBack(programFile)) {
        project += formatText("File = \"%s\"\r\n", programFile.c_str());
    }
    project += formatText("Device = \"%s\"\r\n", DEVICE_GetName().c_str());
    project += formatText("PasswordAdrCount = %X\r\n", PASSWORD_GetAdrCount());
    project += formatText("PasswordAdrCompare = %X\r\n", PASSWORD_GetAdrCompare());
    project += formatText("PasswordFillFF = %d\r\n", PASSWORD_GetFillFF() ? 1 : 0);
    project += formatText("PasswordHexmode = %d\r\n", PASSWORD_GetHexmode() ? 1 : 0);
    project += "Password = \"" + HEXTEXT_FromBytes(PASSWORD_GetBytes()) + "\"\r\n";
    const auto access = PASSWORD_GetBytes().empty() ? FileAccess::usual : FileAccess::ownerOnly;
    return FILES_Replace(path, project, access).ok();
}

bool PROJECT_Load(const std::string& path) {
    std::string content;
    if (const FileResult result = FILES_ReadAll(path, content); !result.ok()) {
        LOG_Add(formatText("%s: %s", path.c_str(), result.reason.c_str()));
        ERROR_Out(nullptr, "Read file failed", 1);
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
