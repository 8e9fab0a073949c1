// The tool bar: the commands of every day, the device and the port. User-interface thread.
#pragma once

#include <QToolBar>

// Its buttons do what the menu's items do; made after the menu.
QToolBar* TOOLBAR_Create(QWidget* parent);
void TOOLBAR_Detach();
// Shows the present state; called several times a second and cheap while nothing has changed.
void TOOLBAR_Refresh();
