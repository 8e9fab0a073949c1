#include "ui/artwork.h"
#include "ui/look.h"

#include <QImage>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>

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

// How many thousandths of a picture have exactly a colour.
std::map<QRgb, int> sharesOf(const QImage& picture) {
    std::map<QRgb, int> shares;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++shares[picture.pixel(x, y)];
        }
    }
    for (auto& [colour, share] : shares) {
        share = share * 1000 / (picture.width() * picture.height());
    }
    return shares;
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

// Every part of a picture is there, in its colour and size.
TEST(Look, PicturesHaveTheirColours) {
    enum : QRgb { kBlue = 0xFF267AC1, kInk = 0xFF2E3A4A, kPaper = 0xFFFAFAF7, kMetal = 0xFF808A96 };
    enum : QRgb { kBody = 0xFF1C3E6C, kEdge = 0xFF568CC8, kPin = 0xFFB0B8C4, kBolt = 0xFFFFC43D };
    enum : QRgb { kGood = 0xFF2E9E4F, kBad = 0xFFD64541, kFolder = 0xFFC4972F };
    const struct {
        Art art;
        std::map<QRgb, int> shares;
        int tolerance = 3;
    } cases[] = {
        {Art::program, {{kBody, 396}, {kEdge, 84}, {kPin, 81}, {kBolt, 55}}},
        {Art::device, {{kBody, 467}, {kEdge, 84}, {kPin, 81}}},
        {Art::hexList, {{kBlue, 120}, {kInk, 206}, {kPaper, 323}}},
        {Art::hexDump, {{kBlue, 50}, {kInk, 182}, {kPaper, 408}}},
        {Art::log, {{kBlue, 23}, {kInk, 172}, {kPaper, 460}}},
        {Art::memoryMap, {{kBlue, 99}, {kInk, 199}, {kPaper, 365}}},
        {Art::terminal, {{kInk, 479}, {kEdge, 94}, {kBolt, 59}}},
        {Art::help, {{kBlue, 511}, {kPaper, 64}}, 50}, // with a letter of the system's font
        {Art::open, {{kFolder, 168}, {kBolt, 295}}},
        {Art::toAuto, {{kGood, 247}}},
        {Art::verify, {{kGood, 168}}},
        {Art::toChip, {{kBlue, 279}, {kMetal, 40}}},
        {Art::fromChip, {{kBlue, 282}, {kMetal, 40}}},
        {Art::erase, {{kMetal, 321}, {kPaper, 77}}},
        {Art::cancel, {{kBad, 258}}},
    };
    for (const auto& [art, shares, tolerance] : cases) {
        QImage picture(138, 128, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        ART_Icon(art).paint(&painter, 10, 0, 128, 128);
        painter.end();
        picture = picture.copy(10, 0, 128, 128);
        EXPECT_EQ(ART_Icon(art).pixmap(128, 128).toImage().convertToFormat(picture.format()),
                  picture);
        std::map<QRgb, int> found = sharesOf(picture);
        EXPECT_GT(found.size(), 20U) << "smooth edges";
        for (const auto& [colour, share] : shares) {
            EXPECT_NEAR(found[colour], share, tolerance)
                << static_cast<int>(art) << " " << QColor(colour).name().toStdString();
        }
    }
    const QImage faint = ART_Icon(Art::toAuto).pixmap({64, 64}, QIcon::Disabled).toImage();
    EXPECT_EQ(faint.pixelColor(32, 32).alpha(), 89);
    QImage logo(300, 256, QImage::Format_ARGB32);
    logo.fill(Qt::white);
    QPainter painter(&logo);
    ART_PaintLogo(painter, logo.rect(), QPalette(Qt::black, Qt::white));
    painter.end();
    EXPECT_NEAR(sharesOf(logo)[kBody], 85, 3);
    EXPECT_GT(sharesOf(logo.copy(50, 180, 200, 60))[0xFF000000], 10) << "the name";
}
