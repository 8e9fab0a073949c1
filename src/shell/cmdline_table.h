// The options and commands of the command line.
#pragma once

#include <span>
#include <string_view>

struct CmdlineEntry {
    const char* name;
    void (*option)(); // runs at once, reading its argument; or
    int command;      // queued; 0 for neither, which shows the help
    const char* help;
};

// In the order in which they are matched and listed in the help text.
std::span<const CmdlineEntry> CMDLINE_Table();
// The first entry whose name begins `text`; none when there is no such entry.
const CmdlineEntry* CMDLINE_Find(std::string_view text);
