// A comparison in the hex dump: colours, tool tip, the line below, and its end.
#include "desktop_world.h"
#include "ui/look.h"

#include <QHelpEvent>
#include <QToolTip>

namespace {

int pixelsOfDifferences(const HexDumpArea& area) {
    return pixelsOf(area.viewport()->grab(), LOOK_BadColour(area.palette()));
}

} // namespace

TEST(ComparisonView, ShowsBothValuesUntilItEnds) {
    DesktopWorld world;
    HEXDATA_AddData(0, Bytes{1, 2, 3, 4});
    writeFile(world.folder / "other.hex", ":0400000001AA03BB93\n:00000001FF\n");
    FILEDIALOG_SetResponder([&](const FileRequest&) {
        return FileChoice{(world.folder / "other.hex").string(), 0};
    });
    FRONTEND_Get().openView(View::hexDump);
    HexDumpArea& area = world.dumpArea();
    const auto& note = control<QLabel>(world.frame(), "comparisonNote");
    EXPECT_EQ(pixelsOfDifferences(area), 0);
    EXPECT_FALSE(note.isVisible() || world.isEnabled(CMD_COMPARISON_NEXT));

    EXPECT_TRUE(world.isEnabled(CMD_FILE_COMPARE));
    world.item(CMD_FILE_COMPARE).trigger();
    EXPECT_TRUE(note.isVisible());
    const int both = pixelsOfDifferences(area);
    EXPECT_GT(both, 0);
    EXPECT_TRUE(world.isEnabled(CMD_COMPARISON_NEXT));
    world.item(CMD_COMPARISON_NEXT).trigger();
    EXPECT_EQ(area.selection()->range(), AddressRange::of(1, 1));
    EXPECT_EQ(note.text().toStdString(), "Difference 1 of 2, 1: image 02, file AA");
    const int one = pixelsOfDifferences(area);
    EXPECT_TRUE(one > 0 && one < both) << "the other one is selected";

    const int height = area.fontMetrics().height();
    const int left = area.header()->sectionViewportPosition(kHex) + 3 +
                     9 * area.fontMetrics().horizontalAdvance("0");
    const QColor bad = LOOK_BadColour(area.palette());
    EXPECT_GT(pixelsOf(area.viewport()->grab({left, height - 1, 8, 1}), bad), 5) << "underlined";
    const QPixmap digits = area.viewport()->grab({left, 0, 14, height - 2});
    EXPECT_GT(pixelsOf(digits, bad, 60), 5);
    EXPECT_EQ(pixelsOf(digits, area.palette().color(QPalette::Text), 60), 0);
    const int text = area.header()->sectionViewportPosition(kHex) + 3;
    const int cell = area.fontMetrics().horizontalAdvance("0") * 3;
    for (const auto& [index, tip] : {std::pair(2, ""), std::pair(3, "3: image 04, file BB")}) {
        const QPoint point(text + cell * index + 4, 4);
        QHelpEvent event(QEvent::ToolTip, point, area.viewport()->mapToGlobal(point));
        QApplication::sendEvent(area.viewport(), &event);
        EXPECT_EQ(QToolTip::text().toStdString(), tip);
    }
    EXPECT_TRUE(world.isEnabled(CMD_COMPARISON_END));
    world.item(CMD_COMPARISON_END).trigger();
    EXPECT_EQ(pixelsOfDifferences(area), 0);
    EXPECT_FALSE(note.isVisible());
    EXPECT_EQ(HEXDATA_GetNumBytes(), 4U);
}

TEST(HexDumpView, DrawsTextsSelectionAndCaretInTheirColours) {
    DesktopWorld world;
    HEXDATA_AddData(0, Bytes(40, 0x88));
    FRONTEND_Get().openView(View::hexDump);
    world.window("Hex Dump")->showMaximized();
    HexDumpArea& area = world.dumpArea();
    QPalette colours = area.palette();
    colours.setColor(QPalette::Text, Qt::red);
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Highlight, Qt::blue);
    colours.setColor(QPalette::HighlightedText, Qt::green);
    area.setPalette(colours);
    const int height = area.fontMetrics().height();
    const double step = QFontMetricsF(area.font()).horizontalAdvance(u'0');
    // The cell of a character of a line, inside a frame around it.
    const auto cell = [&](int column, int line, int at) {
        const int left = area.header()->sectionViewportPosition(column) + 3;
        return QRectF(left + step * at, line * height, step, height)
            .toRect()
            .adjusted(1, 1, -1, -1);
    };
    const auto has = [&](const QColor& colour, const QRect& place) {
        return pixelsOf(area.viewport()->grab(place), colour, colour == Qt::blue ? 0 : 300) > 0;
    };
    QApplication::setActiveWindow(&world.frame());
    area.setFocus();
    area.select({18, 17, true}); // its caret is in the characters
    for (const int line : {0, 1}) {
        EXPECT_TRUE(has(Qt::red, cell(kAddress, line, 0)) &&
                    !has(Qt::blue, cell(kAddress, line, 0)));
        for (const auto& [column, at] :
             {std::pair(int{kHex}, 0), {int{kHex}, 3}, {int{kHex}, 6}, {int{kHex}, 9}}) {
            const bool selected = line == 1 && (at == 3 || at == 6);
            EXPECT_EQ(has(Qt::blue, cell(column, line, at)), selected) << line << " " << at;
            EXPECT_EQ(has(Qt::green, cell(column, line, at)), selected);
            EXPECT_EQ(has(Qt::red, cell(column, line, at)), !selected);
        }
    }
    const QRect caret = cell(kCharacters, 1, 1);
    EXPECT_TRUE(area.hasFocus());
    EXPECT_TRUE(has(Qt::red, caret) && !has(Qt::blue, caret)) << "a block";
    EXPECT_TRUE(has(Qt::blue, cell(kCharacters, 1, 2)));
    EXPECT_FALSE(has(Qt::blue, cell(kCharacters, 1, 3)));
    const QRect frame = cell(kHex, 1, 3).adjusted(-1, -1, 1, 1);
    EXPECT_TRUE(has(Qt::red, frame)) << "a frame in the other column";
    area.clearFocus();
    EXPECT_TRUE(has(Qt::blue, caret)) << "a frame alone";
}
