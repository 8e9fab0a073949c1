// The small window that shows a running target operation. It follows the shared progress state and
// knows nothing of the operation. User-interface thread.
#pragma once

#include <QWidget>

// Shows the window, over the frame, whenever a progress opens.
void PROGRESSDIALOG_Install(QWidget* frame);
void PROGRESSDIALOG_Remove();
