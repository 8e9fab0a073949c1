#include "shell/cmdline_table.h"

#include "shell/command_ids.h"

#include <algorithm>
#include <vector>

namespace {

// The settings come first, in their own order; then edits and operations in the order of their
// identifiers; then files and Exit.
int rank(const CmdlineEntry& entry) {
    if (entry.command == nullptr) {
        return 0;
    }
    const int id = entry.command->id;
    return id < CMD_EDIT_DELETE_RANGE ? id + CMD_HELP_ABOUT : id;
}

std::vector<CmdlineEntry> makeTable() {
    std::vector<CmdlineEntry> table;
    for (const Setting& row : SETTINGS_Table()) {
        table.push_back({row.option.name, row.option.help, row.option.note, &row, nullptr});
    }
    for (const CommandPopup& popup : COMMAND_Popups()) {
        for (const Command& row : popup.items) {
            table.push_back({row.line.name, row.line.help, row.line.note, nullptr, &row});
        }
    }
    for (const Command& row : COMMAND_LineOnly()) {
        table.push_back({row.line.name, row.line.help, row.line.note, nullptr, &row});
    }
    std::erase_if(table, [](const CmdlineEntry& entry) { return entry.name == nullptr; });
    std::ranges::stable_sort(table, {}, rank);
    table.push_back({"?", "\t\t\tDisplay this box", "without a desktop on standard output"});
    return table;
}

} // namespace

std::span<const CmdlineEntry> CMDLINE_Table() {
    static const std::vector<CmdlineEntry> table = makeTable();
    return table;
}

const CmdlineEntry* CMDLINE_Find(std::string_view text) {
    for (const CmdlineEntry& entry : CMDLINE_Table()) {
        if (text.starts_with(entry.name)) {
            return &entry;
        }
    }
    return nullptr;
}
