// Bringing the modules up in their order, and putting away what they leave. User-interface thread.
#pragma once

#include <string>
#include <vector>

// Everything up to the main loop. False when the run must end with what has been reported.
bool STARTUP_Run(const std::vector<std::string>& arguments);
// What a run saves at its end: settings and default project. Nothing of an isolated run, and of an
// unattended one that failed before its first command.
void STARTUP_Finish();
// Stops the worker and closes port, logs and queue.
void STARTUP_Close();
// What the frame does when it is closed by the user, before the main loop ends: stores the view
// flags and ends worker and port with their last words.
void STARTUP_FrameClosed();
