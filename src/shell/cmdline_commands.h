// The queued commands: those that read an argument are run here, the others end in the main frame's
// command handler, exactly as if chosen from the menu.
#pragma once

// The dispatcher for CMDLINE_SetDispatcher. Once the exit code is 1 only Exit still runs.
void CMDLINE_RunCommand(int command);
