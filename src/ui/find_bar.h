// The bar below the hex dump in which bytes or text to be found are entered.
#pragma once

#include <QToolButton>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

// Looks for a pattern, forward or backward, shows where it is, and gives the message for the bar.
using FindRequest = std::function<QString(const std::vector<uint8_t>& pattern, bool forward)>;

// The button with which a bar is closed; it says what it is.
QToolButton* FINDBAR_CreateClose(QWidget* bar);

// A bar that is hidden; Enter asks for the next place, Shift+Enter for the one before, Esc and the
// close button hide it and call `closed`. The parent owns it.
QWidget* FINDBAR_Create(QWidget* parent, FindRequest find, std::function<void()> closed);
// Has the bar begin with text in place of bytes.
void FINDBAR_PreferText(QWidget* bar);
// Shows the bar, ready to type in.
void FINDBAR_Open(QWidget* bar);
