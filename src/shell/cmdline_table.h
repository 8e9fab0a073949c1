// The names of the command line: those of the settings and of the commands, and "?".
#pragma once

#include "shell/command_table.h"
#include "shell/settings.h"

#include <span>
#include <string_view>

// With neither setting nor command it shows the help.
struct CmdlineEntry {
    const char* name = nullptr;
    const char* help = nullptr;
    const char* note = nullptr;       // of the documents
    const Setting* setting = nullptr; // an option
    const Command* command = nullptr; // queued
};

// In the order in which they are matched and listed in the help text.
std::span<const CmdlineEntry> CMDLINE_Table();
// The first entry whose name begins `text`; none when there is no such entry.
const CmdlineEntry* CMDLINE_Find(std::string_view text);
