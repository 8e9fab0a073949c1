// A whole run of the program: start-up in its order, main loop, shutdown.
#pragma once

// Runs the program with the arguments of main; the process exit code.
int SHELL_Run(int argc, char** argv);
