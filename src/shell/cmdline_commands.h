// The queued commands: those that read an argument are here, the others end in the main frame's
// command handler, exactly as if chosen from the menu.
#pragma once

// The dispatcher for CMDLINE_SetDispatcher. Once the exit code is 1 only Exit still runs.
void CMDLINE_RunCommand(int command);

// Commands with an argument: they read it with the getters of cmdline_values.h and report what is
// wrong with it.
void CMDLINE_MergeFile();
void CMDLINE_SaveAs();
void CMDLINE_DeleteRange();
void CMDLINE_Relocate();
void CMDLINE_ReadBack();
