// The command line read as a whole: what each argument stands for and what is wrong with it, before
// any of it takes effect. User-interface thread.
#pragma once

#include "shell/cmdline_table.h"
#include "shell/cmdline_values.h"

#include <optional>
#include <string>
#include <vector>

inline constexpr size_t kMaxQueuedCommands = 20;
inline constexpr size_t kMaxArgument = 599; // characters

// An argument and what was read from it.
struct LineItem {
    std::string argument;
    const CmdlineEntry* entry = nullptr; // none: a word, a file, or not understood
    std::string text = {};               // behind the name
    ArgumentValue value = {};
    std::vector<std::string> faults = {};
    std::string remark = {}; // said behind the faults in a run that nobody watches
    bool isKnown = true;

    bool isCommand() const { return entry != nullptr && entry->command != nullptr; }
    bool isExit() const;
};

struct CommandLine {
    std::vector<LineItem> items;
    std::optional<std::string> programFile; // as it stands there
};

// An argument that begins like an option or command.
bool LINE_IsOption(const std::string& argument);
// The entry of the table whose name the argument begins with; none for other arguments.
const CmdlineEntry* LINE_EntryOf(const std::string& argument);

// Sets the words of notice/run.h: whether Exit is among the arguments, and those of its own name.
void LINE_SetKindOfRun(const std::vector<std::string>& arguments);
// In an unattended run more is wrong than in one whose user sees what comes of it.
CommandLine LINE_Read(const std::vector<std::string>& arguments);
bool LINE_NamesDevice(const CommandLine& line);
// Adds to the faults what the device that the line works on has against it.
void LINE_CheckDevice(CommandLine& line);
void LINE_Report(const LineItem& item);
// Whether nothing is wrong with the line; else all that is is reported.
bool LINE_IsAccepted(const CommandLine& line);
