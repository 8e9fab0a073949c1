// The settings file (of the program folder or of the user, see FILES_IsPortable): sections of keys,
// held in memory from start-up on and saved in one step. Lines that were edited in the file
// meanwhile stay as they are, and so does every line that no write has changed. An isolated run
// sees only the ports and saves nothing. User-interface thread only.
//
// A key that is missing leaves the caller's value unchanged. A value that cannot be read is
// reported (ERROR_Out) with what went wrong; what was read before stays stored.
#pragma once

#include "persist/ini_text.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Reads the file into memory. A missing file is normal; an empty one receives a header.
void INI_Load();
// Carries what was written and deleted since into the file as it stands now. What could not be read
// at the start is not written.
void INI_Save();

// Change the settings in memory. A write that would exceed kIniCapacity is refused with a message;
// a value that could not be read back is left out.
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
// never writes this form. Where the settings are the user's, what they lack is looked for in the
// settings file beside the program.
void INI_ReadText(std::string_view section, std::string_view key, std::string& value);

// Removes the key's line.
void INI_DeleteKey(std::string_view section, std::string_view key);
