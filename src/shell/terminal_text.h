// Turns what went over the terminal's line into the text that one pane shows: line ends, pictures
// of control bytes, times. No windows; one thread.
#pragma once

#include "serial/terminal_history.h"
#include "shell/terminal_settings.h"

#include <optional>
#include <string>
#include <vector>

// The same source throughout; a time counts as a note.
struct TerminalRun {
    TerminalSource source = TerminalSource::received;
    size_t erased = 0; // characters that a backspace takes from the text before this run
    std::string text;  // UTF-8; "\n" ends a line
};

// A line that has come to this many characters goes on in the next: what draws lines takes long
// for one of any length.
inline constexpr size_t kLongestTerminalLine = 1000;

class TerminalText {
public:
    explicit TerminalText(const TerminalSettings& settings) : settings_(settings) {}
    // What the pieces add behind all that was taken before.
    std::vector<TerminalRun> take(const std::vector<TerminalPiece>& pieces);

private:
    std::string& textOf(TerminalSource source);
    void beginCharacter(const TerminalPiece& piece);
    void addByte(const TerminalPiece& piece, uint8_t byte);
    void addNote(const TerminalPiece& piece);
    void erase(TerminalSource source);
    void endLine(TerminalSource source);

    TerminalSettings settings_;
    std::vector<TerminalRun> runs_;
    size_t column_ = 0;                     // characters in the line, without its time
    bool lineBegun_ = false;                // it has its time
    std::optional<TerminalSource> afterCr_; // whose CR came last: the line ends unless LF follows
};

// How a byte is shown, UTF-8; empty where it is not.
std::string TERMTEXT_Byte(TerminalControls controls, uint8_t byte);
