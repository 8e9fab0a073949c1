// Forming and checking the password.

#include "link/password.h"

#include <gtest/gtest.h>

TEST(Password, IsFormedFromTextOrHexDigits) {
    const struct {
        bool hexmode;
        std::string text;
        std::string error;
        std::vector<uint8_t> bytes;
    } cases[] = {
        {false, "ab1", "", {'a', 'b', '1'}},
        {false, "\xC3\xA4\x7F", "", {0xE4, 0x7F}},
        {false, "", "", {}},
        {false, "\xE2\x82\xAC", "Only Latin-1 characters are allowed", {9}},
        {false, "a\xC3", "Only Latin-1 characters are allowed", {9}},
        {false, std::string(256, 'x'), "", std::vector<uint8_t>(256, 'x')},
        {false, std::string(257, 'x'), "Password too long. Maximum 256 bytes", {9}},
        {true, "aB09", "", {0xAB, 0x09}},
        {true, "AB0", "Odd length is illegal", {9}},
        {true, "0g", "Not a hex value", {9}},
        {true, std::string(516, '0'), "HexString too long", {9}},
    };
    for (const auto& c : cases) {
        PasswordSettings settings;
        settings.Hexmode = c.hexmode;
        settings.Password = {9};
        EXPECT_EQ(PASSWORD_FormBytes(settings, c.text), c.error) << c.text;
        EXPECT_EQ(settings.Password, c.bytes) << c.text;
    }
}

TEST(Password, IsCheckedAgainstTheLimitsOfTheDevice) {
    const PasswordLimits area = {0, 0, 0xFFDF, 7};
    const PasswordLimits top = {0, 0, 0xFFFFFFF0, 16};
    const struct {
        PasswordLimits limits;
        uint32_t count;
        uint32_t compare;
        size_t length;
        std::string message;
    } cases[] = {
        {{}, 0, 0, 0, ""},
        {{8, 8, 0, 0}, 0, 0, 8, ""},
        {{8, 0, 0, 0}, 0, 0, 7, "Password too short. Minimum 8 bytes"},
        {{0, 8, 0, 0}, 0, 0, 9, "Password too long. Maximum 8 bytes"},
        {area, 0xFFDF, 0xFFE5, 1, ""},
        {area, 0xFFDF, 0xFFE6, 1, "Illegal password area. Must be within FFDF - FFE5"},
        {area, 0xFFDE, 0xFFE5, 1, "Illegal count address. Must be within FFDF - FFE5"},
        {area, 0, 0, 1, "Illegal password area. Must be within FFDF - FFE5"},
        {top, 0xFFFFFFFF, 0xFFFFFFF0, 1, ""},
    };
    for (const auto& c : cases) {
        PasswordSettings settings{c.count, c.compare, std::vector<uint8_t>(c.length), false, false};
        EXPECT_EQ(PASSWORD_Validate(settings, c.limits).value_or(""), c.message);
    }
}

TEST(Password, IsFilledAsTheLimitsAsk) {
    PASSWORD_SetLimits(12, 7, 0, 0);
    PASSWORD_SetFillFF(true);
    EXPECT_EQ(PASSWORD_GetBytes(), std::vector<uint8_t>(7, 0xFF));
    PasswordSettings settings = PASSWORD_Get();
    settings.AdrCount = settings.AdrCompare = 0x100;
    // the filling is not the user's length
    EXPECT_FALSE(PASSWORD_Validate(settings, {8, 8, 0x100, 0x20}).has_value());
    EXPECT_EQ(settings.Password, std::vector<uint8_t>(255, 0xFF));
    PASSWORD_SetBytes(std::vector<uint8_t>(400, 1));
    EXPECT_EQ(PASSWORD_GetLen(), kMaxPassword);
    PASSWORD_Reset();
    EXPECT_EQ(PASSWORD_Get(), PasswordSettings{});
    EXPECT_EQ(PASSWORD_Dialog(), 2);
}
