#include "desktop_world.h"
#include "shell/edit_operations.h"
#include "shell/identity.h"
#include "shell/program_files.h"
#include "ui/placement.h"
#include "ui/view_widget.h"

#include <QHeaderView>

TEST(Placement, ComesBackIntoTheArea) {
    const QRect area(0, 0, 800, 500);
    const struct {
        QRect wanted, expected;
    } cases[] = {
        {{-50, 0, 100, 100}, {-50, 0, 100, 100}}, // enough to be dragged
        {{-70, 0, 100, 100}, {0, 0, 100, 100}},   // too little
        {{10, -5, 100, 100}, {10, 0, 100, 100}},  // no title bar
        {{900, 700, 100, 100}, {700, 400, 100, 100}}, {{900, 700, 2000, 90}, {0, 410, 800, 90}},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(PLACEMENT_BroughtBack(one.wanted, area), one.expected);
    }
}

TEST(Placement, TilesFillTheArea) {
    for (int count = 1; count <= 9; ++count) {
        for (const bool wide : {false, true}) {
            const QSize size(801, 503);
            const std::vector<QRect> tiles = PLACEMENT_Tiles(count, size, wide);
            ASSERT_EQ(tiles.size(), static_cast<size_t>(count));
            int area = 0;
            QRegion covered;
            for (const QRect& tile : tiles) {
                area += tile.width() * tile.height();
                covered += tile;
            }
            EXPECT_EQ(area, size.width() * size.height());
            EXPECT_EQ(covered, QRegion(QRect(QPoint(), size)));
        }
    }
    EXPECT_EQ(PLACEMENT_Tiles(2, {100, 80}, true)[1], QRect(0, 40, 100, 40));
    EXPECT_EQ(PLACEMENT_Tiles(2, {100, 80}, false)[1], QRect(50, 0, 50, 80));
    EXPECT_EQ(PLACEMENT_Tiles(5, {900, 500}, true)[4], QRect(0, 400, 900, 100)) << "one column";
    EXPECT_EQ(PLACEMENT_Tiles(5, {900, 400}, true)[4].width(), 450) << "else too low";
}

TEST(Placement, CascadeShowsEveryTitleBar) {
    EXPECT_EQ(PLACEMENT_Cascade(5, {300, 150}, 20), (std::vector<QRect>{{0, 0, 200, 100},
                                                                        {20, 20, 200, 100},
                                                                        {40, 40, 200, 100},
                                                                        {0, 0, 200, 100},
                                                                        {20, 20, 200, 100}}));
    DesktopWorld world;
    for (const View view : {View::log, View::terminal, View::device}) {
        FRONTEND_Get().openView(view);
    }
    FRONTEND_Get().openView(View::log); // in front
    world.item(CMD_WINDOW_CASCADE).trigger();
    const auto top = [&world](const char* title) { return world.window(title)->y(); };
    EXPECT_EQ(top("Terminal I/O"), 0);
    EXPECT_GT(top("Device"), 0);
    EXPECT_EQ(top("Log"), 2 * top("Device"));
    world.item(CMD_WINDOW_TILE_HORIZONTALLY).trigger();
    EXPECT_EQ(top("Log"), 0) << "the one in front is the first tile";
    EXPECT_GT(top("Terminal I/O"), 0);
}

TEST(Placement, IsKeptAndRestored) {
    DesktopWorld world("[Settings TERMINAL]\nRect = 5000,5000,300,100\n");
    const QRect area = world.frame().findChild<QMdiArea*>()->viewport()->rect();
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry().bottomRight(), area.bottomRight());
    world.window("Log")->setGeometry(20, 30, 400, 200);
    world.window("Log")->close();
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry(), QRect(20, 30, 400, 200));

    FRONTEND_Get().openView(View::device);
    for (auto* header : world.window("Device")->findChildren<QHeaderView*>()) {
        header->resizeSection(0, 77);
    }
    FRONTEND_Get().closeView(View::device);
    FRONTEND_Get().openView(View::device);
    EXPECT_EQ(dynamic_cast<ViewWidget&>(*world.window("Device")->widget()).columnWidths()[0], 77);
    FRONTEND_Get().closeView(View::device);

    world.window("Log")->showMaximized();
    FRONTEND_Get().closeView(View::log);
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry(), QRect(20, 30, 400, 200));

    world.window("Log")->move(area.width() - 90, area.height() - 90);
    const auto& mdi = *world.frame().findChild<QMdiArea*>();
    for (const bool shown : {true, false}) {
        EXPECT_TRUE(runUntil([&] {
            return mdi.horizontalScrollBar()->isVisible() == shown &&
                   mdi.verticalScrollBar()->isVisible() == shown;
        }));
        world.window("Log")->move(20, 30);
    }

    FRONTEND_Get().openView(View::terminal);
    EXPECT_TRUE(area.contains(world.window("Terminal I/O")->geometry()));

    world.item(CMD_WINDOW_RESTORE_DEFAULT).trigger();
    EXPECT_EQ(world.window("Log")->geometry().bottomRight(), area.bottomRight());
    EXPECT_EQ(world.window("Terminal I/O")->geometry().bottomLeft(), area.bottomLeft());
    INI_Save();
    const std::string kept = readFile(world.folder / "tool.ini");
    EXPECT_TRUE(kept.find("Rect") == std::string::npos && kept.find("Header") == std::string::npos);
}

TEST(Placement, KeepsTheSharesOfTheArea) {
    DesktopWorld world;
    const auto* viewport = world.frame().findChild<QMdiArea*>()->viewport();
    FRONTEND_Get().openView(View::log);
    FRONTEND_Get().openView(View::device);
    const QSize before = viewport->size();
    world.window("Device")->setGeometry(0, 0, before.width() / 2, before.height() / 4);
    for (const QSize size : {QSize(1600, 1000), QSize(700, 500), QSize(1600, 1000)}) {
        world.frame().resize(size);
        QApplication::processEvents();
        const QSize half = viewport->size() / 2;
        EXPECT_NEAR(world.window("Device")->width(), half.width(), 2);
        EXPECT_NEAR(world.window("Device")->height() * 2, half.height(), 4);
        EXPECT_EQ(world.window("Log")->geometry().bottomRight(), viewport->rect().bottomRight());
        EXPECT_GT(world.window("Log")->x(), half.width());
    }
    world.window("Device")->move(viewport->width() / 2, 0);
    world.window("Device")->resize(viewport->width() / 4, 200);
    world.frame().resize(700, 500);
    QApplication::processEvents();
    EXPECT_NEAR(world.window("Device")->x(), viewport->width() / 2.0, 2);
    EXPECT_NEAR(world.window("Device")->width(), viewport->width() / 4.0, 2);
}

TEST(DataViews, ShowWhatTheImageIsAndUnloadWithTheLast) {
    DesktopWorld world;
    const std::string path = world.programFile();
    const std::string titled = IDENTITY_Title() + " - " + path;
    SESSION_Get().showHexListView = 1;
    PROGRAM_Open(path);
    EDIT_Relocate(0x10);
    EXPECT_EQ(world.frame().windowTitle().toStdString(), titled + " *");
    EXPECT_EQ(world.windows()[0]->windowTitle().toStdString(), path + " *");
    PROGRAM_SaveCurrent();
    EXPECT_EQ(world.frame().windowTitle().toStdString(), titled);
    ASSERT_EQ(world.windows().size(), 2U);
    world.windows()[0]->close();
    EXPECT_FALSE(HEXDATA_IsEmpty());
    PROGRAM_Open(path); // closes and opens the list; nothing is lost on the way
    EXPECT_FALSE(HEXDATA_IsEmpty());
    FRONTEND_Get().closeView(View::hexList);
    FRONTEND_Get().closeView(View::hexDump);
    EXPECT_TRUE(HEXDATA_IsEmpty());
    EXPECT_EQ(world.frame().windowTitle().toStdString(), IDENTITY_Title());
}
