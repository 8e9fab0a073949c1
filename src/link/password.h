// The password that the boot ROM asks for: its bytes, how the user enters them, the two addresses
// sent with it, and the limits that the selected device gives. Set by the user-interface thread,
// which also runs the download that reads them.
#pragma once

#include "device/device_record.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

inline constexpr size_t kMaxPassword = 257; // bytes

struct PasswordSettings {
    uint32_t AdrCount = 0;
    uint32_t AdrCompare = 0;
    std::vector<uint8_t> Password;
    bool FillFF = false;
    bool Hexmode = false;
    bool operator==(const PasswordSettings&) const = default;
};

struct PasswordLimits {
    uint32_t MinLen = 0; // bytes, 0 no minimum
    uint32_t MaxLen = 0; // bytes, 0 no maximum
    uint32_t AreaStart = 0;
    uint32_t AreaSize = 0; // bytes, 0 no password area: the addresses are not used
};

// The committed settings, which the rest of the program reads.
PasswordSettings PASSWORD_Get();
void PASSWORD_Set(const PasswordSettings& settings);
uint32_t PASSWORD_GetAdrCount();
uint32_t PASSWORD_GetAdrCompare();
std::vector<uint8_t> PASSWORD_GetBytes();
uint32_t PASSWORD_GetLen();
bool PASSWORD_GetFillFF();
bool PASSWORD_GetHexmode();
void PASSWORD_SetAdrCount(uint32_t address);
void PASSWORD_SetAdrCompare(uint32_t address);
// At most kMaxPassword bytes are kept.
void PASSWORD_SetBytes(std::span<const uint8_t> bytes);
void PASSWORD_SetFillFF(bool on); // on also fills the bytes
void PASSWORD_SetHexmode(bool on);
void PASSWORD_Reset();

PasswordLimits PASSWORD_GetLimits();
void PASSWORD_SetLimits(uint32_t minLen, uint32_t maxLen, uint32_t areaStart, uint32_t areaSize);
// The limits of a device, its password area relocated.
PasswordLimits PASSWORD_LimitsOf(const DeviceRecord& device);
void PASSWORD_SetLimitsOfDevice(); // the selected one

// Fills with 0xFF as the limits ask: 255 bytes with a password area, else the maximum length.
void PASSWORD_FillFF(PasswordSettings& settings, const PasswordLimits& limits);
// Forms the bytes that `text` stands for in the settings' mode (not for FillFF). The error text, or
// empty: the hex reader's, or for text mode that a character is not Latin-1.
std::string PASSWORD_FormBytes(PasswordSettings& settings, const std::string& textUtf8);
// Checks addresses and length against the limits, filling first when FillFF is set. The message to
// show, or none when the settings are good.
std::optional<std::string> PASSWORD_Validate(PasswordSettings& settings,
                                             const PasswordLimits& limits);

// What is wrong with the length of a password where the device takes from `minLen` to `maxLen`
// bytes, 0 meaning no limit; none when it is good.
std::optional<std::string> PASSWORD_CheckLength(size_t length, uint32_t minLen, uint32_t maxLen);

// The dialog that asks for a password, registered by the front end: 1 OK, 2 Cancel.
void PASSWORD_SetDialog(std::function<int()> dialog);
// Asks; 2 when there is no dialog.
int PASSWORD_Dialog();
