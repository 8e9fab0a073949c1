// The running account of what the program did: one time-stamped line an action, in the log file
// beside the program and for whoever watches.
#pragma once

#include "notice/log_text.h"
#include "platform/files.h"

#include <functional>
#include <string>
#include <string_view>

// Called with the line as the file holds it ("H:MM:SS:mmm TEXT") and the text alone, on the thread
// that added it, one call at a time.
using LogObserver = std::function<void(const std::string& line, const std::string& text)>;

// Creates the log file afresh and writes its header, at `path` or, where that is empty, in its
// usual place. Who did not ask for a file may ignore that it cannot be created.
FileResult LOG_Init(const std::string& path = {});
// Writes the closing line and closes the file.
void LOG_Exit();
// Makes now the time base of the stamps; before the first call they count from the system's start.
void LOG_RestartClock();
// Adds one line; control characters in it are shown (formatPrintable). Any thread.
void LOG_Add(std::string_view text);
// Adds a message, which may have several lines of its own.
void LOG_AddMessage(std::string_view text);
void LOG_SetObserver(LogObserver observer);
