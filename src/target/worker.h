// The worker thread: it owns the port while the link is idle (received bytes go to the terminal) or
// the RAM loader runs (posted operations, else identify polls), and turns target errors into
// messages. User-interface thread unless said otherwise.
#pragma once

#include "target/operation.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

using TerminalReceiver = std::function<void(uint8_t)>;

// Starts the worker; `terminalReceive` is called on it.
void TARGET_Init(void* mainWindow, TerminalReceiver terminalReceive);
// Stops the worker as the frame closes: any wait for an operation ends, 100 ms pause, then joined.
// Never waits for a worker that waits for the user interface: close the event queue first.
void TARGET_Exit();
// Ends the worker without pauses and log lines, for the end of an unattended run.
void TARGET_Stop();

// Begins a command: forgets an earlier Cancel, opens the progress display and lets its
// Cancel cancel the operation.
void TARGET_BeginCommand(std::string_view caption);
// The cancel handler. Any thread; never lost between two flags.
void TARGET_Cancel();
// Posts an operation once the loader has identified itself. False, and nothing posted, when the
// user cancelled or the link went down meanwhile; either has been reported then.
bool TARGET_PostOperation(const Operation& operation);

// Posts an operation and waits for its end while the progress display shows it, then closes the
// display. The checksum of an operation that gets one, else 0; nothing when it was not completed,
// which has been reported.
std::optional<uint16_t> TARGET_RunOperation(const Operation& operation, std::string_view line);
// Takes back a Cancel that came when there was no operation to end: whether there was one, reported
// as "Action canceled" then. For work that a Cancel cannot end and that is followed by more.
bool TARGET_TakeCancel(const Hint& hint = {});

// Sends a typed character while the link is idle: the write's result. Else nothing is sent and the
// link state is returned; so too while the chip sits in its boot ROM (LINK_BOOTROM), which the
// terminal says once.
int TARGET_TerminalSend(int value);
// The same for several bytes, in one write: whether they were sent.
bool TARGET_TerminalWrite(std::span<const uint8_t> bytes);
