// The frame's menu bar, made from the table of the commands. User-interface thread.
#pragma once

#include <QMdiArea>
#include <QMenuBar>
#include <functional>

// Fills the bar; `run` is called with the identifier of a chosen command, `mayRun` says whether one
// that the rules enable may run at this moment. The window list of `area` ends the "&Window" menu.
void FRAMEMENU_Build(QMenuBar* bar, QMdiArea* area, std::function<void(int)> run,
                     std::function<bool(int)> mayRun);
// Applies the enable and check rules and the recent files. Also done whenever a popup opens.
void FRAMEMENU_Update();
void FRAMEMENU_Exit();
// The item of a command; none while there is no frame.
QAction* FRAMEMENU_Item(int id);
// That of the submenu in which a command stands.
QAction* FRAMEMENU_SubmenuOf(int id);
// Adds the check mark that shows or hides the tool bar to the menu "&Window".
void FRAMEMENU_AddToggle(QAction* toggle);
// Whether a key press with these modifiers is an accelerator of the menu, enabled or not.
bool FRAMEMENU_IsAccelerator(int key, Qt::KeyboardModifiers modifiers);
// Whether a key is one that edits (Ctrl+Z): in the terminal it is no accelerator but the target's,
// as a control character.
bool FRAMEMENU_IsEditKey(int key, Qt::KeyboardModifiers modifiers);
