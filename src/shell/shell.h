// A whole run of the program: start-up in its order, main loop, shutdown.
#pragma once

#include <string>

// Runs the program with the arguments of main; the process exit code.
int SHELL_Run(int argc, char** argv);

// What a signal that ends the run does: what runs is cancelled, the main loop ends. Any thread.
void SHELL_Interrupt();

// What a run says that needs the desktop and cannot have it: what runs without one, and the exit
// code becomes 1. A run that only asks for the help gets that.
void SHELL_AnswerWithoutDesktop(const std::string& reason);
