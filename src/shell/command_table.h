// The commands of the program, one row each: menu, accelerators, command line and its help text,
// and the rules when a command may run all come from here. User-interface thread.
#pragma once

#include "shell/cmdline_values.h"
#include "shell/front_end.h"

#include <optional>
#include <span>
#include <string>

// What a command works on. One that works on nothing may be chosen while another is under way; one
// that works on the target needs the port.
enum class WorksOn { nothing, program, target };

// A command on the command line.
struct CommandLineForm {
    const char* name = nullptr;        // none: the command line does not have it
    const char* help = nullptr;        // what stands behind the name in the help text
    const char* note = nullptr;        // what the documents add to that
    ArgumentValue (*read)() = nullptr; // none: takes no argument, does what the menu item does
    const char* withoutData = nullptr; // what is said where it needs an image and there is none
};

// An item that stands for a list of recent files, with an identifier for each of its entries.
struct RecentFiles {
    int lastId = 0;
    int list = 0; // of MruList
    void (*open)(const std::string& path) = nullptr;
};

struct Command {
    int id = 0;            // of command_ids.h; 0: a separator of the menu
    const char* text = ""; // of the menu item, with the mnemonic
    const char* key = "";  // the accelerator, "Ctrl+O"
    WorksOn worksOn = WorksOn::program;
    bool (*isOffered)() = nullptr; // whether the menu item is enabled now
    std::optional<View> view = {}; // that it opens; the item is checked while that is open
    void (*run)() = nullptr;       // what it does where it opens no view
    CommandLineForm line = {};
    RecentFiles recent = {};
    bool (*isOn)() = nullptr; // of an item that turns something on and off, checked while it is on
    bool changesChip = false; // ended in the middle it leaves a chip that is of no use
    const char* under = "";   // the submenu that it stands in, with those beside it
};

struct CommandPopup {
    const char* text;               // "&File"
    std::span<const Command> items; // of a top-level command: that one alone
    bool isCommand = false;         // a command of the menu bar itself ("&Options")
};

// The menu in its order.
std::span<const CommandPopup> COMMAND_Popups();
// The commands that the command line alone has.
std::span<const Command> COMMAND_LineOnly();
// The row of an identifier, also of an entry of a recent list; none for an unknown one.
const Command* COMMAND_Find(int id);

// Whether the menu item may be chosen in the session's present state.
bool COMMAND_IsEnabled(int id);
// Whether the menu item carries a check mark now.
bool COMMAND_IsChecked(int id);
// Whether it may be chosen while another command is under way.
bool COMMAND_IsHarmless(int id);
// Whether it changes what the chip holds.
bool COMMAND_ChangesChip(int id);
