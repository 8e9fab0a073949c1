// The one place where menu items, accelerators and queued command-line commands end, and what they
// do where no module has it as one operation. User-interface thread.
#pragma once

// Runs the command with that identifier; unknown ones do nothing. Result: 1 when it was known.
int MAINFRAME_Command(int id);

void COMMAND_DownloadRamImage();
void COMMAND_GetCrc();
void COMMAND_Options();
