// What to do about a port that cannot be used as it should: who has it, which there are.
#pragma once

#include "notice/hint.h"

#include <string>

// Why the device could not be opened; `reason` is the one that its opening gave.
Hint PORTHINT_OfFailure(const std::string& device, const std::string& reason);
// Other programs read from the device, although nothing keeps this one from using it; none when
// nobody does.
Hint PORTHINT_Shared(const std::string& device);
// Notes in the log what makes an open device slow or unreliable.
void PORTHINT_NoteOpened(const std::string& device);
