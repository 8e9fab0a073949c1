// The memory map in its window: clicked, heard, hidden and saved.
#include "desktop_world.h"
#include "link/chip_record.h"
#include "platform/format.h"

#include <QHelpEvent>
#include <QImage>
#include <QToolTip>
#include <set>

namespace {

// What a screen reader says of a cell.
std::string heardAt(QWidget& table, int row, int column) {
    QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(&table);
    const QAccessibleInterface* cell = heard->tableInterface()->cellAt(row, column);
    return cell == nullptr ? "none" : cell->text(QAccessible::Name).toStdString();
}

void clickAt(QWidget& widget, QPointF point) {
    QMouseEvent press(QEvent::MouseButtonPress, point, widget.mapToGlobal(point), Qt::LeftButton,
                      Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &press);
}

} // namespace

TEST(MapView, IsClickedHeardHiddenAndSaved) {
    ChipWorld world;
    FRONTEND_Get().openView(View::memoryMap);
    QMdiSubWindow& window = *world.window("Memory Map");
    auto& table = *window.findChild<QTableView*>();
    auto& strip = control<QWidget>(window, "MapStrip");
    expectNamed(window);

    EXPECT_EQ(heardAt(table, 1, 1) + ", " + heardAt(table, 1, 2), "8000 - FFFF, yes");
    table.clearFocus();
    clickAt(strip, QPointF(strip.width() / 2.0, strip.height() * 0.3)); // in the second of four
    EXPECT_FALSE(DEVPROPS_IsBlockSelected(1));
    EXPECT_EQ(heardAt(table, 1, 2), "no");
    EXPECT_EQ(window.focusWidget(), &table);
    const QPoint middle(strip.width() / 2, strip.height() / 2);
    QHelpEvent help(QEvent::ToolTip, middle, strip.mapToGlobal(middle));
    QApplication::sendEvent(&strip, &help);
    EXPECT_NE(QToolTip::text(), "");
    trigger(table, "Select or &Deselect Block");
    EXPECT_TRUE(DEVPROPS_IsBlockSelected(1));

    EXPECT_TRUE(world.isEnabled(CMD_TARGET_AUTO));
    world.item(CMD_TARGET_AUTO).trigger();
    EXPECT_TRUE(runUntil([&table] { return heardAt(table, 0, 4) == "erased, written"; }));
    EXPECT_EQ(heardAt(table, 0, 3), "20000 bytes of data, vectors");

    int changes = 0;
    QObject::connect(table.model(), &QAbstractItemModel::dataChanged, &table, [&] { ++changes; });
    window.showMinimized();
    CHIPRECORD_Forget();
    SUMMARY_Refresh();
    const auto* view = static_cast<QWidget*>(table.parentWidget());
    for (const QTimer* timer : view->findChildren<QTimer*>(Qt::FindDirectChildrenOnly)) {
        EXPECT_FALSE(timer->isActive());
    }
    EXPECT_EQ(changes, 0);
    window.showNormal();
    EXPECT_EQ(heardAt(table, 0, 4), "");

    const auto save = [&](const std::string& name) {
        const auto path = world.folder / name;
        FILEDIALOG_SetResponder([&](const FileRequest&) { return FileChoice{path.string(), 0}; });
        const size_t before = world.boxes.size();
        trigger(table, "&Save Picture...");
        EXPECT_LE(world.boxes.size(), before + 1);
        return world.boxes.size() == before ? "" : world.boxes.back();
    };
    EXPECT_EQ(save("map.png") + save("map.svg"), "");
    const QImage image(QString::fromStdString((world.folder / "map.png").string()));
    EXPECT_GE(image.height(), 600);
    EXPECT_EQ(image.pixelColor(0, 0), strip.palette().color(QPalette::Base));
    EXPECT_GT(pixelsOf(QPixmap::fromImage(image), strip.palette().color(QPalette::Text)), 200);
    const QImage seen = strip.grab().toImage().scaled(1, strip.height());
    EXPECT_NE(seen.pixel(0, seen.height() / 4), seen.pixel(0, 0)) << "blocks below a margin";
    const std::string svg = readFile(world.folder / "map.svg");
    const auto count = [&svg](const std::string& what) {
        int found = 0;
        for (size_t at = 0; (at = svg.find(what, at)) != std::string::npos; ++at) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count("fill=\"none\""), 23) << "outlines";
    EXPECT_EQ(count("url(#"), 8);
    EXPECT_EQ(count("<pattern"), 8);
    EXPECT_EQ(count("<rect"), 40);
    EXPECT_EQ(count("height=\"3\""), 3) << "what must not be overlooked";
    EXPECT_TRUE(svg.starts_with("<svg") && svg.find(">8000</text>") != std::string::npos);
    EXPECT_NE(svg.find(">vectors</text>"), std::string::npos) << "the legend";
    std::set<std::string> places;
    for (size_t at = 0; (at = svg.find("<text x=", at)) != std::string::npos; ++at) {
        places.insert(svg.substr(at, svg.find(" fill", at) - at));
    }
    EXPECT_EQ(static_cast<int>(places.size()), count("<text")) << "one text lies over another";
    EXPECT_NE(save("map.gif").find("A picture is saved as .png or .svg, not as "),
              std::string::npos);
    EXPECT_NE(save("no/folder/map.png").find("Error writing file ("), std::string::npos);
}
