// What the target's application has sent while no operation ran: a text of the last few thousand
// characters, filled by the worker thread and shown by the terminal view.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

inline constexpr size_t kTerminalCapacity = 5000; // bytes, two of them spare

// One received byte: backspace removes the last character, LF becomes CR LF, CR and NUL are
// dropped.
void TERMINAL_ReceiveByte(uint8_t value);
// Takes the text when it has changed since the last call; false when it has not.
bool TERMINAL_TakeIfChanged(std::string& text);
std::string TERMINAL_GetText();
void TERMINAL_Clear();
