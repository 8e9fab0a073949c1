// The queued commands: those that read an argument are here, the others end in the main frame's
// command handler, exactly as if chosen from the menu.
#pragma once

#include "shell/cmdline_values.h"

// The dispatcher for CMDLINE_SetDispatcher. Once the exit code is 1 only Exit still runs.
void CMDLINE_RunCommand(int command);

// Commands with an argument: they read it with the getters of cmdline_values.h into what is to be
// done.
ArgumentValue CMDLINE_MergeFile();
ArgumentValue CMDLINE_SaveAs();
ArgumentValue CMDLINE_DeleteRange();
ArgumentValue CMDLINE_Relocate();
ArgumentValue CMDLINE_ReadBack();

// Commands without one, which the device has to offer; what cannot be taken back has to be
// confirmed (--yes) where nobody is asked.
ArgumentValue CMDLINE_ProtectChip();
ArgumentValue CMDLINE_ProtectBlocks();
ArgumentValue CMDLINE_ReadProtect();
ArgumentValue CMDLINE_FlashStatus();
