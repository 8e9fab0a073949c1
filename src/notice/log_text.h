// The texts that the log files of the program share.
#pragma once

#include <string>

// A rule, the local date and time under their caption, a rule; every line ends in CR LF.
std::string LOG_HeaderBlock();
// A row of 56 asterisks between blank lines.
std::string LOG_Rule();
// When the program was built, "Mar  9 2006 10:12:41".
std::string LOG_BuildTime();
// "H:MM:SS:mmm" of `elapsedMs` milliseconds; the hour is one digit and starts again after 9.
std::string LOG_Stamp(unsigned elapsedMs);
