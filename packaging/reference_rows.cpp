#include "packaging/reference.h"
#include "shell/cmdline_table.h"
#include "shell/cmdline_words.h"
#include "sim/sim_options.h"

#include <string_view>

namespace {

// "\t<PORT> Sets COM-port of PC" in its parts.
ReferenceRow rowOfEntry(const CmdlineEntry& entry) {
    ReferenceRow row;
    row.name = std::string("-") + entry.name;
    row.effect = entry.help;
    row.effect.erase(0, row.effect.find_first_not_of('\t'));
    if (row.effect.starts_with('<')) {
        const size_t behind = row.effect.find("> ") + 1;
        row.argument = row.effect.substr(0, behind);
        row.effect.erase(0, behind + 1);
    }
    row.note = entry.note != nullptr ? entry.note : "";
    return row;
}

std::vector<ReferenceRow> rowsOf(bool commands) {
    std::vector<ReferenceRow> rows;
    for (const CmdlineEntry& entry : CMDLINE_Table()) {
        if ((entry.command != nullptr) == commands) {
            rows.push_back(rowOfEntry(entry));
        }
    }
    return rows;
}

} // namespace

std::vector<ReferenceRow> REFERENCE_Options() {
    return rowsOf(false);
}

std::vector<ReferenceRow> REFERENCE_Commands() {
    return rowsOf(true);
}

std::vector<ReferenceRow> REFERENCE_Words() {
    std::vector<ReferenceRow> rows;
    for (const CmdlineWord& word : WORDS_Table()) {
        rows.push_back({word.name, word.argument, word.help, "", false, !word.isForRun()});
    }
    return rows;
}

std::vector<ReferenceRow> REFERENCE_SimOptions() {
    std::vector<ReferenceRow> rows;
    for (const SimOptionText& option : SIM_OptionTexts()) {
        rows.push_back({option.name, option.value, option.help, "", false, false});
    }
    return rows;
}
