// How the terminal shows and sends: the user's choices, kept in the settings file. User-interface
// thread.
#pragma once

#include <cstdint>
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
    bool echo = true;      // what is sent is shown too
    bool stamps = false;   // every line begins with the time of its first byte
    uint32_t baudrate = 0; // bits per second while no command uses the line; 0: as in the options
};

// The rates that are offered, beside one that is stored and is none of them.
inline constexpr uint32_t kTerminalRates[] = {1200,   2400,   4800,   9600,   19200,  31250,
                                              38400,  57600,  62500,  76800,  115200, 230400,
                                              250000, 460800, 500000, 921600, 1000000};

// A number in the file that stands for no choice counts as the default.
TerminalSettings TERMSETTINGS_Read();
// The rate takes effect with the next IDLERATE_Use.
void TERMSETTINGS_Write(const TerminalSettings& settings);
// The bytes of a line end.
std::string_view TERMSETTINGS_Bytes(TerminalLineEnd lineEnd);
