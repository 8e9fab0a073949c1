#include "ui/look.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace {

double luminance(const QColor& colour) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

// 4.5 to 1, by the formula of WCAG 2.1.
TEST(Look, ColoursCanBeReadInBothPalettes) {
    for (const QColor& window : {QColor(239, 239, 239), QColor(49, 54, 59)}) {
        QPalette palette(window);
        palette.setColor(QPalette::Base, window.lightness() < 128 ? QColor(35, 38, 41) : Qt::white);
        for (const auto role : {QPalette::Window, QPalette::Base}) {
            for (const auto colour :
                 {LOOK_GoodColour, LOOK_BadColour, LOOK_PlainColour, LOOK_NoteColour}) {
                EXPECT_GE(contrast(colour(palette), palette.color(role)), 4.5)
                    << colour(palette).name().toStdString() << " on "
                    << palette.color(role).name().toStdString();
            }
        }
    }
}
