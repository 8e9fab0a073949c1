#include "ui/look.h"

#include <QFontDatabase>

namespace {

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

} // namespace

QFont LOOK_FixedFont() {
    return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

QString LOOK_Characters(const std::string& characters) {
    constexpr char kDelete = '\x7F'; // has no picture in most fonts
    return QString::fromLatin1(characters).replace(QLatin1Char(kDelete), QLatin1Char('.'));
}

// On the usual grey of windows 0, 128, 0 misses a contrast of 4.5 to 1.
QColor LOOK_GoodColour(const QPalette& palette) {
    return isDark(palette) ? QColor(112, 224, 112) : QColor(0, 127, 0);
}

QColor LOOK_BadColour(const QPalette& palette) {
    return isDark(palette) ? QColor(255, 128, 128) : QColor(128, 0, 0);
}

QColor LOOK_PlainColour(const QPalette& palette) {
    return isDark(palette) ? QColor(128, 184, 255) : QColor(0, 84, 166);
}

QColor LOOK_NoteColour(const QPalette& palette) {
    return isDark(palette) ? QColor(255, 192, 96) : QColor(128, 72, 0);
}
