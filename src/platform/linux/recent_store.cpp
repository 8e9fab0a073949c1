#include "platform/recent_store.h"

#include "platform/files.h"

#include <system_error>

namespace {

// Empty for a user without a configuration folder.
std::filesystem::path listFile(const std::string& listName) {
    const std::filesystem::path folder = FILES_UserConfigFolder();
    return folder.empty() ? folder : folder / (listName + ".txt");
}

} // namespace

std::vector<std::string> RECENTSTORE_Read(const std::string& listName) {
    std::vector<std::string> entries;
    std::string text;
    if (!FILES_ReadAll(listFile(listName), text).ok()) {
        return entries;
    }
    std::string entry;
    for (const char c : text) {
        if (c != '\n') {
            entry += c;
        } else if (!entry.empty()) {
            entries.push_back(std::move(entry));
            entry.clear();
        }
    }
    if (!entry.empty()) {
        entries.push_back(std::move(entry));
    }
    return entries;
}

void RECENTSTORE_Write(const std::string& listName, const std::vector<std::string>& entries) {
    std::string text;
    for (const std::string& entry : entries) {
        // A name with a line break in it is legal here, but would come back as two entries.
        if (entry.find('\n') == std::string::npos) {
            text += entry + '\n';
        }
    }
    const std::filesystem::path path = listFile(listName);
    if (path.empty()) {
        return;
    }
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    static_cast<void>(FILES_Replace(path, text));
}
