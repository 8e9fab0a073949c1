// Reading the argument of a command-line option or command: a cursor over its text and the value
// getters. What is wrong is collected, and whoever has the argument read reports it; a caller looks
// at the value error after each getter and goes no further when it is set.
#pragma once

#include "notice/hint.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct DeviceRecord;

// What an argument stands for.
struct ArgumentValue {
    std::function<void()> apply = {}; // none: nothing to be done
    // What the device that the run works on has against it; empty when it fits.
    std::function<std::string(const DeviceRecord&)> misfit = {};
    std::optional<int> device = {}; // the slot of the device that it selects
    Hint hint = {};                 // what to do about what is wrong with it
};

// Puts the cursor at the start of an argument with which nothing is wrong yet.
void CMDLINE_SetArgument(std::string_view argument);

// Hex digits with an optional leading "-"; -1 or 0 on an error. A "-" or "," behind the first
// character ends the value and is the next character read. What 32 bits do not hold is cut off.
int32_t CMDLINE_GetHexValue();
int32_t CMDLINE_GetDecValue();
// The value that the last of these two read as the text has it, where 64 bits hold that.
int64_t CMDLINE_GetTrueValue();
// Characters up to the end or a "," behind the first one; at most `maximum`.
std::string CMDLINE_GetString(size_t maximum);
// All that is left; the second leaves it there.
std::string CMDLINE_TakeRest();
std::string CMDLINE_PeekRest();
// The next character, 0 at the end.
char CMDLINE_GetChar();
// The character behind the number at the cursor, without reading it; 0 at the end or when no number
// stands there.
char CMDLINE_PeekBehindNumber();
// Whether the last getter failed.
bool CMDLINE_ValueError();

// Notes that something is wrong; a doubt is wrong only where nobody sees what comes of it.
void CMDLINE_Fault(std::string_view text);
void CMDLINE_Doubt(std::string_view text);
// Notes text that stands behind what was read, as a doubt, unless something else is wrong already.
void CMDLINE_DoubtRest();
// What is wrong with the argument, in the order in which it was found.
std::vector<std::string> CMDLINE_Faults(bool doubtsToo);
