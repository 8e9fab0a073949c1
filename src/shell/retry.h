// --retries: a board on which a command of the target failed gets its commands anew, all of them
// and of the image as it was before the first. User-interface thread.
#pragma once

#include "shell/command_table.h"

// A queued command runs next.
void RETRY_CommandStarts(const Command& command);
// Whether the board failed and is to be tried once more. Not after what another try cannot mend: a
// file, an edit, an interruption.
bool RETRY_IsDue();
// Another image was loaded: its commands have all their tries.
void RETRY_NextImage();
// Waits a moment, puts the image back and forgets the failure. False when the user interrupted it.
bool RETRY_Begin();
