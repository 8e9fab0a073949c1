// Reading the argument of a command-line option or command: a cursor over its text and the value
// getters. A getter that fails reports what is wrong and sets the value error, which every caller
// looks at before it applies anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Puts the cursor at the start of an argument.
void CMDLINE_SetArgument(std::string_view argument);
// The whole argument, wherever the cursor stands.
const std::string& CMDLINE_GetArgument();

// Hex digits with an optional leading "-"; -1 or 0 on an error. A "-" or "," behind the first
// character ends the value and is the next character read.
int32_t CMDLINE_GetHexValue();
int32_t CMDLINE_GetDecValue();
// Characters up to the end or a "," behind the first one; at most `maximum`.
std::string CMDLINE_GetString(size_t maximum);
// The next character, 0 at the end.
char CMDLINE_GetChar();
// The character behind the number at the cursor, without reading it; 0 at the end or when no number
// stands there.
char CMDLINE_PeekBehindNumber();
// Whether the last getter failed.
bool CMDLINE_ValueError();
