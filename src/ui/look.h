// How the views look, the same in all of them: the fixed-pitch font, and colours that can be read
// in light and in dark palettes.
#pragma once

#include <QFont>
#include <QPalette>

QFont LOOK_FixedFont();
// Green and red for text on the palette's window colour.
QColor LOOK_GoodColour(const QPalette& palette);
QColor LOOK_BadColour(const QPalette& palette);
