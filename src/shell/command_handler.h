// The main frame's command handler: the one place where menu items, accelerators and queued
// command-line commands end. User-interface thread.
#pragma once

// Runs the command with that identifier; unknown ones do nothing. Result: 1 when it was known.
int MAINFRAME_Command(int id);
