// The running account of what the program did: one time-stamped line an action, in the log file
// beside the program and for whoever watches.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Called with the line as the file holds it ("H:MM:SS:mmm TEXT") and the text alone, on the thread
// that added it, one call at a time.
using LogObserver = std::function<void(const std::string& line, const std::string& text)>;

// Creates the log file afresh and writes its header. A file that cannot be created is not missed.
void LOG_Init();
// Writes the closing line and closes the file.
void LOG_Exit();
// Makes now the time base of the stamps; before the first call they count from the system's start.
void LOG_RestartClock();
// Adds one line. Any thread.
void LOG_Add(std::string_view text);
void LOG_SetObserver(LogObserver observer);
// "H:MM:SS:mmm " of `elapsedMs` milliseconds; the hour is one digit and starts again after 9.
std::string LOG_Stamp(unsigned elapsedMs);

// The header that the log and the error log share, after their first line: a rule, the local date
// and time under their caption, a rule. Every line ends in CR LF.
std::string LOG_HeaderBlock();
// A row of 56 asterisks between blank lines.
std::string LOG_Rule();
// When the program was built, "Mar  9 2006 10:12:41".
std::string LOG_BuildTime();
