// The settings that have a name on the command line, in a project or in both, one row each: names,
// range, and what gets and sets them. User-interface thread.
#pragma once

#include "shell/cmdline_values.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct ValueRange {
    int64_t least = 0;
    int64_t most = 0;
};

struct SettingOption {
    const char* name = nullptr;           // none: the command line does not have it
    const char* help = nullptr;           // what stands behind the name in the help text
    const char* note = nullptr;           // what the documents add to that
    ArgumentValue (*read)() = nullptr;    // none: a number
    std::optional<ValueRange> range = {}; // of the number; none: that of a project
    bool takesDevice = false;             // the path or URL of a port may stand for the number
};

struct SettingLine {
    const char* key = nullptr; // none: no project keeps it
    int place = 0;             // of its line: what is read later may rest on what stands before
};

// A project refuses what lies below `min`, and what lies above `max` counts as `max` there.
struct SettingNumber {
    uint32_t min = 0;
    uint32_t max = 0;
    uint32_t (*get)() = nullptr;
    void (*set)(uint32_t value) = nullptr; // none: the setting is no number
    bool isHex = false;
};

struct SettingText {
    size_t longest = 0;             // characters in a project
    std::string (*get)() = nullptr; // none: the program file that is saved with the project
    // False when it was refused and reported, and there is no `error` that ends the reading.
    bool (*set)(const std::string& text, std::string& error) = nullptr;
    bool isOptional = false; // a project has no line for an empty one
};

struct Setting {
    SettingOption option;
    SettingLine line;
    SettingNumber number = {};
    SettingText text = {};
};

// Saves what the settings file holds, device properties included.
void SETTINGS_Save();

// In the order in which the command line matches and lists them.
std::span<const Setting> SETTINGS_Table();
