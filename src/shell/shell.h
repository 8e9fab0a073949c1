// A whole run of the program: start-up in its order, main loop, shutdown.
#pragma once

#include <string>

// Runs the program with the arguments of main; the process exit code.
int SHELL_Run(int argc, char** argv);

// Says that there is no desktop and what runs without one; the exit code becomes 1.
void SHELL_ReportNoDesktop(const std::string& reason);
