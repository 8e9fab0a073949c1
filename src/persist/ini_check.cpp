#include "persist/ini_check.h"

#include "persist/chars.h"
#include "persist/nearest.h"
#include "platform/format.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace {

constexpr std::string_view kFrameKeys[] = {"Rect", "ShowTerminal", "ShowLog", "ShowHexListView",
                                           "ShowDevice"};
constexpr std::string_view kDeviceKeys[] = {
    "DevProps.Device",   "DevProps.Interface", "DevProps.Speed",       "DevProps.XDataStart",
    "DevProps.XDataLen", "DevProps.ResetByPC", "DevProps.aBlockSelect"};
constexpr std::string_view kPortKeys[] = {
    "COM1",  "COM2",  "COM3",  "COM4",  "COM5",  "COM6",  "COM7",  "COM8",  "COM9",  "COM10",
    "COM11", "COM12", "COM13", "COM14", "COM15", "COM16", "COM17", "COM18", "COM19", "COM20"};

// Those whose keys the program reads; others, as of a dialog's last values, are nobody's to write.
struct KnownSection {
    std::string_view name;
    std::span<const std::string_view> keys;
};
constexpr KnownSection kSections[] = {{"Settings MAINFRAME", kFrameKeys},
                                      {"Settings DEVICEPROPS", kDeviceKeys},
                                      {"Settings PORTS", kPortKeys}};

std::string withoutBlanksAndSigns(std::string_view text) {
    std::string kept;
    std::ranges::copy_if(text, std::back_inserter(kept),
                         [](char c) { return !isBlank(c) && c != '_' && c != '-' && c != '.'; });
    return kept;
}

bool isNearly(std::string_view name, std::string_view text) {
    return NEAREST_Distance(name, text) <= NEAREST_Tolerance(name) ||
           NEAREST_Distance(withoutBlanksAndSigns(name), withoutBlanksAndSigns(text)) == 0;
}

// The section that a line is a title of; "PORTS" alone is nearly one too.
const KnownSection* sectionOf(std::string_view title) {
    const auto exact = std::ranges::find(kSections, title, &KnownSection::name);
    if (exact != std::end(kSections)) {
        return exact;
    }
    constexpr size_t kSlips = 2; // other sections that differ by more have names of their own
    const auto nearly = std::ranges::find_if(kSections, [title](const KnownSection& section) {
        const std::string_view word = section.name.substr(section.name.find(' ') + 1);
        return NEAREST_Distance(section.name, title) <= kSlips || isNearly(word, title);
    });
    return nearly == std::end(kSections) ? nullptr : nearly;
}

// "COM1" is no slip of "COM12": of a number no digit may differ.
std::string_view nearKey(const KnownSection& section, std::string_view key) {
    const auto digits = [](std::string_view text) {
        const size_t first = text.find_first_of("123456789");
        return first == std::string_view::npos ? std::string_view() : text.substr(first);
    };
    for (const std::string_view known : section.keys) {
        if (key.starts_with(known) && digits(known) == digits(key)) {
            return {}; // as the program matches it
        }
    }
    for (const std::string_view known : section.keys) {
        if (digits(known) == digits(key) && isNearly(known, key)) {
            return known;
        }
    }
    return {};
}

std::string noteText(int line, std::string_view found, const std::string& meant) {
    return formatText("line %d: %.*s is not read, %s", line, static_cast<int>(found.size()),
                      found.data(), meant.c_str());
}

} // namespace

std::vector<std::string> INICHECK_Notes(const IniText& settings) {
    std::vector<std::string> notes;
    const std::string_view text = settings.text();
    const KnownSection* section = nullptr;
    for (size_t at = 0; at < text.size(); at = settings.afterLine(at)) {
        std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
        const int number = settings.lineNumber(at);
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (line.starts_with('[')) {
            const std::string_view title = line.substr(1, line.find(']') - 1);
            section = sectionOf(title);
            if (section != nullptr && section->name != title) {
                notes.push_back(noteText(number, line.substr(0, line.find(']') + 1),
                                         "the section is [" + std::string(section->name) + "]"));
                section = nullptr;
            }
        } else if (section != nullptr && !line.starts_with('/')) {
            std::string_view key = line.substr(0, line.find_first_of("=["));
            key = key.substr(0, key.find_last_not_of(" \t") + 1);
            if (const std::string_view meant = nearKey(*section, key); !meant.empty()) {
                notes.push_back(noteText(number, key, "the key is " + std::string(meant)));
            }
        }
    }
    return notes;
}
