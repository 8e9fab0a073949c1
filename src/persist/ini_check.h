// Sections and keys that are nearly ones of the program: what somebody wrote by hand and wonders
// why it does nothing.
#pragma once

#include "persist/ini_text.h"

#include <string>
#include <vector>

// A text each: "line 3: com1 is not read, the key is COM1".
std::vector<std::string> INICHECK_Notes(const IniText& settings);
