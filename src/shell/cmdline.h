// The command-line engine: the line is read as a whole, then its options take effect, and its
// commands are queued and run one a turn of the main loop through the registered dispatcher.
// User-interface thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Runs a queued command; it calls CMDLINE_Next when the command is done or skipped.
using CommandDispatcher = std::function<void(int command)>;
void CMDLINE_SetDispatcher(CommandDispatcher dispatcher);

// What of the arguments (without the program's own path) has to be known before anything starts:
// whether the run is unattended, isolated, accepts damaged files. The words of `notice/run.h` say
// it from then on.
void CMDLINE_ReadKindOfRun(const std::vector<std::string>& arguments);

// Reads the whole line and changes nothing. False, and all that is wrong with it reported, in an
// unattended run of which something is not understood: such a run is to do nothing at all.
bool CMDLINE_Read(const std::vector<std::string>& arguments);
// Lets the options of the line take effect and queues its commands; what is wrong is reported here
// where the run has windows. False, reported and nothing changed, in an unattended run whose line
// does not fit the device that it works on.
bool CMDLINE_Apply();
// The program file that the line names, as it stands there, also when that is an empty text.
std::optional<std::string> CMDLINE_ProgramFile();

// Whether an argument stands for the command `id`, or for one that works on the target: what is
// asked before anything else starts.
bool CMDLINE_Contains(const std::vector<std::string>& arguments, int id);
bool CMDLINE_ContainsTarget(const std::vector<std::string>& arguments);

// The commands of the line in their order, without Exit, also of a line that was refused.
std::vector<std::string> CMDLINE_CommandNames();

// Runs at most one queued command; behind the last one the menus show what may be done now.
void CMDLINE_Poll();
// The queue begins anew with its first command, in place of CMDLINE_Next.
void CMDLINE_Rewind();
// Marks the running command as done.
void CMDLINE_Next();
bool CMDLINE_IsRunning(); // a queued command has not run yet
bool CMDLINE_IsExitQueued();
bool CMDLINE_NeedsTarget(); // a command that works on the target has been queued

// "Valid command line options:" and the table.
std::string CMDLINE_HelpText();
// The same on standard output, with plain line ends and a word on how a run goes.
void CMDLINE_PrintHelp();

// Forgets line and queue, for tests.
void CMDLINE_Reset();
