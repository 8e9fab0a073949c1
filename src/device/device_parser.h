// Reads one device description (a .dev file) into a record.
#pragma once

#include "device/device_record.h"

#include <optional>
#include <string>
#include <vector>

// Limits of one description; a file that exceeds one is refused with a message that names it.
inline constexpr size_t kMaxBlocks = 79;
inline constexpr size_t kMaxHWRanges = 10;
inline constexpr size_t kMaxIDAdr = 20;
inline constexpr size_t kMaxConstIDData = 20;
inline constexpr size_t kMaxIVectors = 100;
inline constexpr size_t kMaxDeviceText = 255; // characters: names and file names
inline constexpr size_t kMaxShortText = 99;   // characters: vector names and PIText

// What is wrong with a line, counted over lines that hold text.
struct DeviceFault {
    int line = 0;
    std::string text;
};

struct DeviceParseResult {
    std::optional<DeviceRecord> record; // none when the text was refused
    std::vector<DeviceFault> faults;    // the first bad statement, or all that do not go together
    std::string missing; // "Device not specified" and its kin, when all statements are good
};

// What is wrong, a line each: "Line 3: Unknown identifier: Bad".
std::string faultTexts(const DeviceParseResult& result);

// The pure part: text in, record or refusal out. Nothing is reported.
DeviceParseResult DEVICE_ParseText(const std::string& text);
