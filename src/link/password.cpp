#include "link/password.h"

#include "device/device.h"
#include "persist/hex_text.h"
#include "platform/format.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t kMaxTextPassword = 256; // characters
constexpr size_t kAreaPassword =
    255; // bytes of a filled password where there is an area: what the count byte can say

PasswordSettings settings;
PasswordLimits currentLimits;
std::function<int()> passwordDialog;

// The code point at `i`, which moves behind it; none for what is not well-formed UTF-8 of Latin-1.
std::optional<uint8_t> takeLatin1(const std::string& text, size_t& i) {
    const auto byte = static_cast<uint8_t>(text[i++]);
    if (byte < 0x80) {
        return byte;
    }
    if ((byte != 0xC2 && byte != 0xC3) || i == text.size()) {
        return std::nullopt;
    }
    const auto next = static_cast<uint8_t>(text[i++]);
    if ((next & 0xC0) != 0x80) {
        return std::nullopt;
    }
    return static_cast<uint8_t>((byte & 0x03) << 6 | (next & 0x3F));
}

std::string formFromText(PasswordSettings& target, const std::string& text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < text.size();) {
        const auto byte = takeLatin1(text, i);
        if (!byte) {
            return "Only Latin-1 characters are allowed";
        }
        bytes.push_back(*byte);
    }
    if (bytes.size() > kMaxTextPassword) {
        return formatText("Password too long. Maximum %d bytes",
                          static_cast<int>(kMaxTextPassword));
    }
    target.Password = std::move(bytes);
    return "";
}

bool insideArea(uint32_t address, const PasswordLimits& limits) {
    return address >= limits.AreaStart && address < uint64_t{limits.AreaStart} + limits.AreaSize;
}

std::optional<std::string> checkAddresses(const PasswordSettings& candidate,
                                          const PasswordLimits& limits) {
    if (limits.AreaSize == 0) {
        return std::nullopt;
    }
    const uint32_t last = limits.AreaStart + limits.AreaSize - 1;
    if (!insideArea(candidate.AdrCompare, limits)) {
        return formatText("Illegal password area. Must be within %X - %X", limits.AreaStart, last);
    }
    if (!insideArea(candidate.AdrCount, limits)) {
        return formatText("Illegal count address. Must be within %X - %X", limits.AreaStart, last);
    }
    return std::nullopt;
}

} // namespace

PasswordSettings PASSWORD_Get() {
    return settings;
}

void PASSWORD_Set(const PasswordSettings& newSettings) {
    settings = newSettings;
}

uint32_t PASSWORD_GetAdrCount() {
    return settings.AdrCount;
}

uint32_t PASSWORD_GetAdrCompare() {
    return settings.AdrCompare;
}

std::vector<uint8_t> PASSWORD_GetBytes() {
    return settings.Password;
}

uint32_t PASSWORD_GetLen() {
    return static_cast<uint32_t>(settings.Password.size());
}

bool PASSWORD_GetFillFF() {
    return settings.FillFF;
}

bool PASSWORD_GetHexmode() {
    return settings.Hexmode;
}

void PASSWORD_SetAdrCount(uint32_t address) {
    settings.AdrCount = address;
}

void PASSWORD_SetAdrCompare(uint32_t address) {
    settings.AdrCompare = address;
}

void PASSWORD_SetBytes(std::span<const uint8_t> bytes) {
    const auto kept = bytes.first(std::min(bytes.size(), kMaxPassword));
    settings.Password.assign(kept.begin(), kept.end());
}

void PASSWORD_SetFillFF(bool on) {
    settings.FillFF = on;
    if (on) {
        PASSWORD_FillFF(settings, currentLimits);
    }
}

void PASSWORD_SetHexmode(bool on) {
    settings.Hexmode = on;
}

void PASSWORD_Reset() {
    settings = {};
}

PasswordLimits PASSWORD_GetLimits() {
    return currentLimits;
}

void PASSWORD_SetLimits(uint32_t minLen, uint32_t maxLen, uint32_t areaStart, uint32_t areaSize) {
    currentLimits = {minLen, maxLen, areaStart, areaSize};
}

PasswordLimits PASSWORD_LimitsOf(const DeviceRecord& device) {
    return {device.IDLenMin, device.IDLenMax, DEVICE_RelocateAddr(device.PWAreaStart, device),
            device.PWAreaLen};
}

void PASSWORD_SetLimitsOfDevice() {
    currentLimits = PASSWORD_LimitsOf(DEVICE_Selected());
}

void PASSWORD_FillFF(PasswordSettings& target, const PasswordLimits& limits) {
    const size_t length = limits.AreaSize == 0 ? limits.MaxLen : kAreaPassword;
    target.FillFF = true;
    target.Password.assign(std::min(length, kMaxPassword), 0xFF);
}

std::string PASSWORD_FormBytes(PasswordSettings& target, const std::string& textUtf8) {
    if (!target.Hexmode) {
        return formFromText(target, textUtf8);
    }
    std::string error;
    std::vector<uint8_t> bytes = HEXTEXT_ToBytes(textUtf8, kMaxPassword, error);
    if (error.empty()) {
        target.Password = std::move(bytes);
    }
    return error;
}

std::optional<std::string> PASSWORD_Validate(PasswordSettings& candidate,
                                             const PasswordLimits& limits) {
    if (auto message = checkAddresses(candidate, limits)) {
        return message;
    }
    if (candidate.FillFF) {
        PASSWORD_FillFF(candidate, limits);
        return std::nullopt;
    }
    return PASSWORD_CheckLength(candidate.Password.size(), limits.MinLen, limits.MaxLen);
}

std::optional<std::string> PASSWORD_CheckLength(size_t length, uint32_t minLen, uint32_t maxLen) {
    if (maxLen != 0 && length > maxLen) {
        return formatText("Password too long. Maximum %d bytes", static_cast<int>(maxLen));
    }
    if (minLen != 0 && length < minLen) {
        return formatText("Password too short. Minimum %d bytes", static_cast<int>(minLen));
    }
    return std::nullopt;
}

void PASSWORD_SetDialog(std::function<int()> dialog) {
    passwordDialog = std::move(dialog);
}

int PASSWORD_Dialog() {
    return passwordDialog ? passwordDialog() : 2;
}
