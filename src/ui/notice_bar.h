// The bar above the views that tells what is wrong with the port, and goes when that is mended.
// User-interface thread.
#pragma once

#include <QWidget>

// Hidden until NOTICEBAR_Refresh finds something to tell.
QWidget* NOTICEBAR_Create(QWidget* parent);
void NOTICEBAR_Detach();
// Called several times a second and cheap while nothing has changed.
void NOTICEBAR_Refresh();
