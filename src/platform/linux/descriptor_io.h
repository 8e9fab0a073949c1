// What the file operations share: the system's failures as results, and reads and writes of devices
// and pipes, which may take for ever and end when the program is to end.
#pragma once

#include "platform/files.h"

#include <string_view>

// The result for an error number, with the system's text.
FileResult fileFailure(int error);
void closeDescriptor(int& descriptor); // and forgets it
// Waits until the descriptor reports `events`; false, with errno EINTR, when the program is to end
// first.
bool awaitDescriptor(int descriptor, short events);
// The whole text or the error: a short write is continued, a signal does not count. `waits`: a
// device or a pipe, which is given no more at a time than it takes without blocking.
FileResult writeAll(int descriptor, std::string_view text, bool waits);
