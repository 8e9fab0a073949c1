// The front end of a run without windows: reported errors, log lines and notes on standard error,
// and while that is a terminal one live line for a running operation.
#pragma once

#include "shell/front_end.h"

#include <string>

// The record of the console: no windows, every dialog cancelled.
FrontEnd CONSOLE_FrontEnd();

// Any thread. The live line makes way for them and comes back.
void CONSOLE_PrintError(const std::string& text); // "Error: TEXT"
void CONSOLE_PrintLine(const std::string& text);
