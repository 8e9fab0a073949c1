// The main frame's menu: texts, identifiers, accelerators, and which items are enabled and checked
// in the session's present state. The one table that menu, accelerators and tests share.
#pragma once

#include <span>

// What an entry of a popup is.
enum class MenuKind { command, separator, recentPrograms, recentProjects };

struct MenuItem {
    MenuKind kind = MenuKind::command;
    const char* text = nullptr; // with the mnemonic and, behind a tab, the key's name
    int id = 0;
    const char* key = nullptr; // accelerator, "Ctrl+O"; none: nullptr
};

struct MenuPopup {
    const char* text;                // "&File"
    std::span<const MenuItem> items; // of a top-level command: that one item alone
    bool isCommand = false;          // a command of the menu bar itself ("&Options")
};

std::span<const MenuPopup> MENU_Popups();
// Whether the item may be chosen now. Identifiers without a rule are always enabled.
bool MENU_IsEnabled(int id);
// Whether the item carries a check mark now.
bool MENU_IsChecked(int id);
