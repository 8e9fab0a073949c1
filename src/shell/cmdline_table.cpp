#include "shell/cmdline_table.h"

#include "shell/cmdline_options.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"

#include <algorithm>
#include <vector>

namespace {

constexpr CmdlineEntry kOptions[] = {
    {"OptionsCOMBaudrate", OPTION_ComBaudrate, 0, "\t<BAUDRATE> Sets baudrate"},
    {"OptionsCOMPort", OPTION_ComPort, 0, "\t\t<PORT> Sets COM-port of PC"},
    {"OptionsPWAdrCount", OPTION_PasswordAdrCount, 0,
     "\t<COUNTADR> Sets count address for password comparison"},
    {"OptionsPWAdrCompare", OPTION_PasswordAdrCompare, 0,
     "\t<COMPAREADR> Sets compare address for password comparison"},
    {"OptionsPWPassword", OPTION_Password, 0, "\t<PASSWORD> Sets password"},
    {"OptionsPWFillFF", OPTION_PasswordFillFF, 0,
     "\t\t<ENABLE> Enables/disables filling password with 0xFF"},
    {"OptionsPWHexmode", OPTION_PasswordHexmode, 0,
     "\t<ENABLE> Enables/disables hexmode for the password"},
    {"OptionsSettingsReset", OPTION_SettingsReset, 0,
     "\t<ENABLE> Enables/disables reset handling by Calvorin"},
    {"OptionsTargetDevice", OPTION_TargetDevice, 0, "\t<DEVICENAME> Selects the desired device"},
    {"OptionsTargetSelBlocks", OPTION_TargetSelBlocks, 0,
     "\t<ENABLE,B1[,B2...][,B2-Bn]> Enables/disables the desired blocks"},
    {"OptionsTargetSpeed", OPTION_TargetSpeed, 0,
     "\t<SPEED> Sets the oscillator frequency in [Hz]"},
};

// The command line goes on with edits and operations in the order of their identifiers, and ends
// with files and Exit.
int rank(const Command& row) {
    return row.id < CMD_EDIT_DELETE_RANGE ? row.id + CMD_HELP_ABOUT : row.id;
}

std::vector<const Command*> commandsInOrder() {
    std::vector<const Command*> rows;
    for (const CommandPopup& popup : COMMAND_Popups()) {
        for (const Command& row : popup.items) {
            if (row.line.name != nullptr) {
                rows.push_back(&row);
            }
        }
    }
    std::ranges::sort(rows, {}, [](const Command* row) { return rank(*row); });
    return rows;
}

std::vector<CmdlineEntry> makeTable() {
    std::vector<CmdlineEntry> table(std::begin(kOptions), std::end(kOptions));
    for (const Command* row : commandsInOrder()) {
        table.push_back({row->line.name, nullptr, row->id, row->line.help});
    }
    table.push_back({"?", nullptr, 0, "\t\t\tDisplay this box"});
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
