// The bars below the terminal's pane: one in which bytes to be sent are entered, and one that tells
// how far a sending has come. The parent owns them.
#pragma once

#include <QWidget>
#include <functional>

// A bar that is hidden; Enter sends, Esc and the close button hide it and call `closed`.
QWidget* HEXBAR_Create(QWidget* parent, std::function<void()> sent, std::function<void()> closed);
void HEXBAR_Open(QWidget* bar);
// A bar that shows itself from SENDBAR_Follow on until the sending has ended, then calls `ended`
// where it had the focus.
QWidget* SENDBAR_Create(QWidget* parent, std::function<void()> ended);
void SENDBAR_Follow(QWidget* bar);
