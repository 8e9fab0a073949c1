// The worker thread: it owns the port while the link is idle (received bytes go to the terminal) or
// the RAM loader runs (posted operations, else identify polls), and turns target errors into
// messages. User-interface thread unless said otherwise.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

using TerminalReceiver = std::function<void(uint8_t)>;

// Starts the worker; `terminalReceive` is called on it.
void TARGET_Init(void* mainWindow, TerminalReceiver terminalReceive);
// Stops the worker as the frame closes: any wait for an operation ends, 100 ms pause, then joined.
// Never waits for a worker that waits for the user interface: close the event queue first.
void TARGET_Exit();
// Ends the worker without pauses and log lines, for the end of an unattended run.
void TARGET_Stop();

// Opens the progress display for a command and lets its Cancel cancel the operation.
void TARGET_BeginCommand(std::string_view caption);
// The cancel handler. Any thread; never lost between two flags.
void TARGET_Cancel();
// Posts an operation once the loader has identified itself. False, and nothing posted, when the
// user cancelled or the link went down meanwhile (its report has been delivered then).
bool TARGET_PostOperation(int operation);

// Sends a typed character while the link is idle: the write's result; else nothing is sent and the
// link state is returned.
int TARGET_TerminalSend(int value);
