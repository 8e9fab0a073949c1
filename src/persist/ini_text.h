// The text of a settings file: sections of keys, one line a key. Plain data; what is not touched
// stays as whoever wrote the file has left it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// A settings text never grows beyond this.
inline constexpr size_t kIniCapacity = 30000; // bytes

class IniText {
public:
    IniText() = default;
    explicit IniText(std::string text) : text_(std::move(text)) {}

    const std::string& text() const { return text_; }
    int lineNumber(size_t position) const; // from 1
    // Behind the line that `position` stands in and the empty ones that follow it.
    size_t afterLine(size_t position) const;

    // The position of the section's body, none when there is no such section.
    std::optional<size_t> findSection(std::string_view section) const;
    // The position of the key's first character, from `at` to the end of the section. A line that
    // begins with the characters of the key is its line.
    std::optional<size_t> findKeyFrom(size_t at, std::string_view key) const;
    std::optional<size_t> findKey(std::string_view section, std::string_view key) const;
    // The key's line without its line break.
    std::optional<std::string> lineOf(std::string_view section, std::string_view key) const;

    // Puts a line in the place of the key's old one, directly under the section line. False, and
    // nothing is changed, when there is no room.
    [[nodiscard]] bool put(std::string_view section, std::string_view key, const std::string& line);
    void erase(std::string_view section, std::string_view key);
    // Empties the lines of all other sections, so that line numbers stay.
    void keepOnly(std::string_view section);

private:
    bool standsAt(size_t position, std::string_view expected) const;
    size_t afterBlanks(size_t position) const;
    size_t afterOneBreak(size_t position) const;
    std::optional<size_t> findOrCreateSection(std::string_view section);
    bool fits(size_t additional) const { return text_.size() + additional < kIniCapacity; }

    std::string text_; // without NUL
};
