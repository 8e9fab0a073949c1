// How the terminal shows and sends: the user's choices, kept in the settings file. User-interface
// thread.
#pragma once

#include <string_view>

// How control bytes are shown: not at all but for what they do (text), as their pictures, or as
// their numbers.
enum class TerminalControls { text, glyphs, hex };
// What Enter sends.
enum class TerminalLineEnd { cr, lf, crLf };

struct TerminalSettings {
    bool onePane = false; // else received and sent stand side by side
    TerminalControls controls = TerminalControls::text;
    TerminalLineEnd lineEnd = TerminalLineEnd::cr;
    bool echo = true;    // what is sent is shown too
    bool stamps = false; // every line begins with the time of its first byte
};

// A number in the file that stands for no choice counts as the default.
TerminalSettings TERMSETTINGS_Read();
void TERMSETTINGS_Write(const TerminalSettings& settings);
// The bytes of a line end.
std::string_view TERMSETTINGS_Bytes(TerminalLineEnd lineEnd);
