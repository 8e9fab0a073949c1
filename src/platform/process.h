// The program's own process: its terminal, its signals, loading the desktop module.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// Leads standard streams that the program was started without to nowhere; otherwise the next file
// or port that is opened would be taken for them. To be called before anything is opened.
void PROCESS_OpenStandardStreams();

// Writes to standard output or standard error in one call.
void PROCESS_WriteOut(std::string_view text);
void PROCESS_WriteError(std::string_view text);

// Whether standard error is a terminal, and its width in columns (80 when it does not say).
bool PROCESS_ErrorIsTerminal();
int PROCESS_TerminalWidth();
// Whether the terminal only takes lines one below the other (TERM is "dumb", or not set).
bool PROCESS_TerminalIsDumb();
// Whether NO_COLOR is set to anything but an empty text.
bool PROCESS_NoColour();

// The audible signal, where standard error is a terminal.
void PROCESS_Beep();

// Runs `handler` on a thread of its own for the first SIGINT, SIGTERM or SIGHUP, and then has the
// waits for files end; a second one ends the process at once. A SIGHUP that is ignored already
// (nohup) stays ignored. To be called before any other thread is started.
void PROCESS_CatchSignals(std::function<void()> handler);

// Whether such a signal has come: what waits for a pipe or a device gives up.
bool PROCESS_IsEnding();

// From here on an exception that nobody catches, on any thread, ends the process with one line
// "Error: REASON" on standard error and exit code 1. `lastWord` is called before with the reason;
// it may use nothing that the run could have locked or half changed, and what it throws is dropped.
void PROCESS_ReportExceptions(void (*lastWord)(const char* reason) = nullptr);

// Loads a module that stands beside the executable and finds a function of it; nullptr with the
// system's reason in `error` when that fails. The module stays loaded.
void* PROCESS_LoadFunction(const std::string& moduleFile, const char* function, std::string& error);
