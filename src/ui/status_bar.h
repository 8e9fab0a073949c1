// The bar of five texts at the bottom of the frame. User-interface thread; the texts may be set on
// any.
#pragma once

#include <QStatusBar>

// Makes the bar, which shows the status texts from now on. Its object name is "500", those of its
// parts "500.0" to "500.4".
QStatusBar* STATUSBAR_Create(QWidget* parent);
// Stops following the texts.
void STATUSBAR_Detach();
// What is behind the COM number of the port in use: device file and whether it is there.
std::string STATUSBAR_PortText();
// Shows the present state of the link; cheap while it has not changed.
void STATUSBAR_ShowLink();
