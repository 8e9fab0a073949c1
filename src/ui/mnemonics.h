// The underlined letters of a window's labels and buttons. Pages are written with the letters that
// suit them alone; where two would stand side by side, one of them moves.
#pragma once

#include <QKeySequence>
#include <QWidget>
#include <set>

class QTabBar;
using Mnemonics = std::set<QKeySequence>;

// The letters that the tabs of a sheet take, whichever page is in front.
Mnemonics MNEMONICS_OfTabs(const QTabBar& tabs);
// Gives every label and button in `part` a letter that is not in `taken`: its own where it is free,
// else one of its other letters, beginnings of words first, or none. Returns those used in `part`.
Mnemonics MNEMONICS_Settle(QWidget& part, const Mnemonics& taken);
