// The command-line engine: options run while the line is read, commands are queued and run one a
// turn of the main loop through the registered dispatcher. User-interface thread.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

inline constexpr size_t kMaxQueuedCommands = 20;
inline constexpr size_t kMaxArgument = 599; // characters

// Runs a queued command; it calls CMDLINE_Next when the command is done or skipped.
using CommandDispatcher = std::function<void(int command)>;
void CMDLINE_SetDispatcher(int exitCommand, CommandDispatcher dispatcher);

// Reads the arguments (without the program's own path). Result: the program file that they name,
// as it stands there, also when that is an empty text.
std::optional<std::string> CMDLINE_Process(const std::vector<std::string>& arguments);

// Whether an argument stands for the command `id`; what is asked before anything else starts.
bool CMDLINE_Contains(const std::vector<std::string>& arguments, int id);

// Runs at most one queued command.
void CMDLINE_Poll();
// Marks the running command as done.
void CMDLINE_Next();
bool CMDLINE_IsRunning(); // a queued command has not run yet
bool CMDLINE_IsExitQueued();
bool CMDLINE_NeedsTarget(); // a command that works on the target has been queued

// "Valid command line options:" and the table.
std::string CMDLINE_HelpText();
// The same on standard output, with plain line ends and a word on how a run goes.
void CMDLINE_PrintHelp();

// Forgets the queue, for tests.
void CMDLINE_Reset();
