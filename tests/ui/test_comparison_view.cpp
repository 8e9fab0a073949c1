// A comparison in the hex dump: colours, tool tip, the line below, and its end.
#include "desktop_world.h"
#include "ui/look.h"

#include <QHelpEvent>
#include <QToolTip>

namespace {

// How many pixels of the dump have the colour of a difference.
int pixelsOfDifferences(const HexDumpArea& area) {
    const QImage picture = area.viewport()->grab().toImage();
    const QRgb wanted = LOOK_BadColour(area.palette()).rgb();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += picture.pixel(x, y) == wanted ? 1 : 0;
        }
    }
    return count;
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
    const auto hasText = [&area](int column) {
        const QRect place(area.header()->sectionViewportPosition(column), 0,
                          area.header()->sectionSize(column) / 2, area.fontMetrics().height());
        const QImage picture = area.viewport()->grab(place).toImage();
        const QImage first = picture.copy(0, 0, 1, 1).scaled(picture.size());
        return picture != first.convertToFormat(picture.format());
    };
    for (const int column : {0, 1, 2}) {
        EXPECT_TRUE(hasText(column)) << column;
    }
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
