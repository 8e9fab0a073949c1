// How the views look, the same in all of them: the fixed-pitch font, and colours that can be read
// in light and in dark palettes.
#pragma once

#include <QFont>
#include <QPalette>
#include <string>

QFont LOOK_FixedFont();
// Characters of the data as they are drawn: for 0x7F, which stands for itself among them, a font
// draws a box or nothing, so a dot takes its place.
QString LOOK_Characters(const std::string& characters);
// Green and red for text on the palette's window colour.
QColor LOOK_GoodColour(const QPalette& palette);
QColor LOOK_BadColour(const QPalette& palette);
// Blue and brown for what is neither; as texts they can be read like those.
QColor LOOK_PlainColour(const QPalette& palette);
QColor LOOK_NoteColour(const QPalette& palette);
