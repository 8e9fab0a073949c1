// The settings file beside the program: sections of keys, held in memory from start-up on; every
// write rewrites the whole file in one step. User-interface thread only.
//
// A key that is missing leaves the caller's value unchanged. A value that cannot be read is
// reported (ERROR_Out) with what went wrong; what was read before stays stored.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// The settings text never grows beyond this; a write that would exceed it is refused with a
// message.
inline constexpr size_t kIniCapacity = 30000; // bytes

// Reads the file into memory. A missing file is normal; an empty one receives a header.
void INI_Load();

void INI_WriteInt(std::string_view section, std::string_view key, int32_t value);
void INI_WriteRect(std::string_view section, std::string_view key, const int32_t (&values)[4]);
void INI_WriteIntArray(std::string_view section, std::string_view key,
                       std::span<const int32_t> values);
void INI_WriteString(std::string_view section, std::string_view key,
                     std::span<const uint8_t> bytes);

void INI_ReadInt(std::string_view section, std::string_view key, int32_t& value);
void INI_ReadRect(std::string_view section, std::string_view key, int32_t (&values)[4]);
void INI_ReadIntArray(std::string_view section, std::string_view key, std::span<int32_t> values);
// The bytes are set to 0 first, also when the key is missing.
void INI_ReadString(std::string_view section, std::string_view key, std::span<uint8_t> bytes);
// A plain text in double quotes (the device of a COM port). The key is matched whole; the program
// never writes this form.
void INI_ReadText(std::string_view section, std::string_view key, std::string& value);

// Removes the key's line and saves the file.
void INI_DeleteKey(std::string_view section, std::string_view key);
