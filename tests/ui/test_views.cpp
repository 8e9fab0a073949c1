#include "data/data_rows.h"
#include "desktop_world.h"
#include "platform/format.h"
#include "shell/front_end.h"
#include "ui/dump_scroll.h"
#include "ui/hex_dump_area.h"
#include "ui/look.h"
#include "ui/view_widget.h"
#include "ui_world.h"

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTableView>
#include <memory>

namespace {

using Texts = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;
using ViewPtr = std::unique_ptr<ViewWidget>;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

Texts tableRow(const QTableView& table, int row) {
    Texts cells;
    for (int column = 0; column < table.model()->columnCount(); ++column) {
        cells.push_back(table.model()->index(row, column).data().toString().toStdString());
    }
    return cells;
}

QTableView& tableOf(const ViewWidget& view) {
    return *view.findChild<QTableView*>();
}

void trigger(const QWidget& view, const char* text) {
    for (QAction* action : view.findChildren<QAction*>()) {
        if (action->text() == text) {
            action->trigger();
            return;
        }
    }
    ADD_FAILURE() << "no action " << text;
}

// A hex dump that shows `lines` lines at a time.
struct Dump {
    explicit Dump(int lines) : view(HEXDUMPVIEW_Create(nullptr)) {
        area = dynamic_cast<HexDumpArea*>(view->focusProxy());
        view->resize(900, 400);
        view->show();
        QApplication::processEvents();
        const int spare = view->height() - area->viewport()->height();
        view->resize(900, spare + lines * area->fontMetrics().height() + 3);
        QApplication::processEvents();
    }
    int top() const { return area->verticalScrollBar()->value(); }

    ViewPtr view;
    HexDumpArea* area;
};

} // namespace

TEST(HexListView, ShowsTheRowsBelowASummary) {
    UiWorld world;
    const ViewPtr view(HEXLISTVIEW_Create(nullptr));
    const QTableView& table = tableOf(*view);
    HEXDATA_AddData(0, Bytes(0x100, 0x11));
    HEXDATA_AddData(0x200, bytesOf("0123456789abcdef"));
    view->refresh();
    ASSERT_EQ(table.model()->rowCount(), 2);
    EXPECT_EQ(tableRow(table, 1),
              (Texts{"0002", "00000200", "00000010", "",
                     "30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66", "0123456789abcdef"}));
    EXPECT_EQ(control<QLabel>(*view, "range").text(), "0x000000-0x00020F");
    EXPECT_EQ(control<QLabel>(*view, "bytes").text(), "Number of bytes: 272");
}

TEST(HexListView, RangeIsGreenOrRedInLightAndDark) {
    UiWorld world;
    const ViewPtr view(HEXLISTVIEW_Create(nullptr));
    for (const QColor& window : {QColor(Qt::white), QColor(30, 30, 30)}) {
        QPalette palette;
        palette.setColor(QPalette::Window, window);
        view->setPalette(palette);
        for (const bool fits : {true, false}) {
            HEXDATA_SetFits(fits);
            view->refresh();
            const QColor colour =
                control<QLabel>(*view, "range").palette().color(QPalette::WindowText);
            EXPECT_EQ(colour.green() > colour.red(), fits);
            EXPECT_GT(std::abs(colour.lightness() - window.lightness()), 90);
        }
    }
}

TEST(Views, KeepColumnWidthsAndTakeZeroForTheDefault) {
    UiWorld world;
    for (const auto create : {HEXLISTVIEW_Create, HEXDUMPVIEW_Create, DEVICEVIEW_Create}) {
        const ViewPtr view(create(nullptr));
        std::vector<int> widths = view->columnWidths();
        EXPECT_EQ(std::ranges::count(widths, 0), std::ssize(widths));
        std::ranges::fill(widths, 222);
        widths[0] = 0;
        view->setColumnWidths(widths);
        view->refresh();
        EXPECT_GT(view->columnWidths()[0], 30);
        widths[0] = view->columnWidths()[0];
        EXPECT_EQ(view->columnWidths(), widths);
    }
}

// The ordinary moves show in the view below.
TEST(DumpScroll, StopsAtTheEnds) {
    using enum ScrollRequest;
    const std::tuple<DumpScroll, ScrollRequest, int> cases[] = {
        {{0, 10, 99}, lineUp, 0},
        {{90, 10, 99}, lineDown, 90},
        {{10, 10, 99}, pageUp, 0},
        {{85, 10, 99}, pageDown, 90},
        {{0, 10, 5}, lineDown, 0},
        {{0, 10, 9}, pageDown, 0},
        {{0, 10, (1 << 28) - 1}, bottom, (1 << 28) - 10},
    };
    for (const auto& [from, request, to] : cases) {
        EXPECT_EQ(DUMPSCROLL_Move(from, request), to) << from.position;
    }
    EXPECT_EQ(DUMPSCROLL_Reveal({20, 10, 99}, 25), 20);
    EXPECT_EQ(DUMPSCROLL_Reveal({20, 10, 99}, 3), 3);
    EXPECT_EQ(DUMPSCROLL_Reveal({20, 10, 99}, 99), 90);
}

TEST(HexDumpView, KeysAndScrollBarFollowTheRules) {
    UiWorld world;
    HEXDATA_AddData(0x1005, Bytes(800, 0x41));
    Dump dump(10);
    QScrollBar& bar = *dump.area->verticalScrollBar();
    ASSERT_EQ(bar.maximum(), 40);
    const std::pair<int, int> keys[] = {
        {Qt::Key_Down, 1},      {Qt::Key_Down, 2},  {Qt::Key_PageUp, 2},
        {Qt::Key_PageDown, 12}, {Qt::Key_Up, 11},   {Qt::Key_End, 40},
        {Qt::Key_PageDown, 40}, {Qt::Key_Left, 40}, {Qt::Key_Home, 0}};
    for (const auto& [key, position] : keys) {
        pressKey(*dump.area, key);
        EXPECT_EQ(dump.top(), position) << "key " << key;
    }
    bar.setValue(5);
    bar.triggerAction(QAbstractSlider::SliderPageStepSub); // a bar by itself would go to 0
    EXPECT_EQ(dump.top(), 5);
    bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
    EXPECT_EQ(dump.top(), 15);
    EXPECT_EQ(dump.area->topAddress(), 0x1005u + 15 * 16);
    HEXDATA_Clear();
    dump.view->refresh();
    EXPECT_EQ(bar.maximum(), 0);
}

TEST(HexDumpView, SelectsAndCopies) {
    UiWorld world;
    HEXDATA_AddData(0x100, bytesOf("0123456789ABCDEFghij"));
    Dump dump(10);
    const QClipboard& clipboard = *QGuiApplication::clipboard();
    trigger(*dump.view, "Select &All");
    trigger(*dump.view, "&Copy");
    EXPECT_EQ(clipboard.text(), "30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46\n67 68 69 6A");
    pressKey(*dump.area, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(dump.area->selection()->last(), 0x103u);
    pressKey(*dump.area, Qt::Key_Left, Qt::ShiftModifier);
    trigger(*dump.view, "&Copy");
    EXPECT_EQ(clipboard.text(), "30 31 32");
    dump.area->select({0x10F, 0x110, true});
    trigger(*dump.view, "&Copy");
    EXPECT_EQ(clipboard.text(), "Fg");
    pressKey(*dump.area, Qt::Key_PageDown, Qt::ShiftModifier);
    EXPECT_EQ(dump.area->selection()->caret, 0x113u);
    HEXDATA_AddData(0xFFFFFFFF, Bytes{1});
    dump.view->refresh();
    trigger(*dump.view, "Select &All");
    trigger(*dump.view, "&Copy");
    EXPECT_EQ(world.reports, (Texts{"Copy: At most 16777216 bytes can be copied at once."}));
    EXPECT_EQ(clipboard.text(), "Fg");
}

TEST(HexDumpView, MouseSelectsWhatIsUnderIt) {
    UiWorld world;
    HEXDATA_AddData(0x1000, Bytes(64, 0x41));
    Dump dump(10);
    const double step = QFontMetricsF(dump.area->font()).horizontalAdvance(u'0');
    const auto at = [&](int column, int characters, int line) {
        const int left = dump.area->header()->sectionViewportPosition(column);
        return QPointF(left + 4 + step * characters, line * dump.area->fontMetrics().height() + 2);
    };
    const auto send = [&](QEvent::Type type, QPointF point) {
        QMouseEvent event(type, point, dump.area->viewport()->mapToGlobal(point), Qt::LeftButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(dump.area->viewport(), &event);
    };
    send(QEvent::MouseButtonPress, at(1, 6, 1));
    ASSERT_TRUE(dump.area->selection());
    EXPECT_EQ(dump.area->selection()->first(), 0x1012u);
    send(QEvent::MouseMove, at(1, 9, 2));
    EXPECT_EQ(dump.area->selection()->last(), 0x1023u);
    EXPECT_FALSE(dump.area->selection()->characters);
    send(QEvent::MouseButtonPress, at(2, 15, 3));
    EXPECT_EQ(dump.area->selection()->first(), 0x103Fu);
    EXPECT_TRUE(dump.area->selection()->characters);
    send(QEvent::MouseMove, at(2, 15, 30)); // far below
    EXPECT_EQ(dump.area->selection()->caret, 0x103Fu);
    send(QEvent::MouseButtonPress, at(1, 0, 6)); // below the last line
    EXPECT_FALSE(dump.area->selection());
}

TEST(HexDumpView, GoesToAnAddress) {
    UiWorld world;
    HEXDATA_AddData(0x1005, Bytes(800, 0x41));
    Dump dump(10);
    std::optional<int32_t> entered;
    FRONTEND_Get().editValue = [&](ValueRequest& request) {
        request.value0 = entered;
        return world.reports.empty() ? kDialogOk : kDialogCancel;
    };
    const auto goTo = [&](std::optional<int32_t> address) {
        entered = address;
        trigger(*dump.view, "&Go to Address...");
    };
    goTo(0x1005 + 16 * 20 + 3);
    EXPECT_EQ(dump.top(), 20);
    EXPECT_EQ(dump.area->selection()->first(), 0x1005u + 16 * 20 + 3);
    goTo(0x1005 + 16 * 50 - 1);
    EXPECT_EQ(dump.top(), 40);
    for (const auto& wrong : {std::optional<int32_t>(0x1004), {}}) {
        world.reports.clear();
        goTo(wrong);
        EXPECT_EQ(world.reports, (Texts{"Go to Address: The address must be within 1005 - 1324"}));
        EXPECT_EQ(dump.top(), 40);
    }
    FRONTEND_Set({});
}

TEST(HexDumpView, FindsBytesAndText) {
    UiWorld world;
    Bytes bytes(0x1000, 0);
    std::ranges::copy(bytesOf("Ab\xFF\x01"), bytes.begin() + 0x80);
    std::ranges::copy(bytesOf("Ab"), bytes.begin() + 0xE00);
    HEXDATA_AddData(0x100, bytes);
    Dump dump(10);
    trigger(*dump.view, "&Find...");
    auto& edit = control<QLineEdit>(*dump.view, "findText");
    EXPECT_TRUE(edit.isVisible());
    enum { kBytes, kText };
    const auto find = [&](int kind, const char* text, Qt::KeyboardModifiers modifiers = {}) {
        control<QComboBox>(*dump.view, "findKind").setCurrentIndex(kind);
        edit.setText(text);
        pressKey(edit, Qt::Key_Return, modifiers);
        const QString message = control<QLabel>(*dump.view, "findMessage").text();
        return formatText("%X-%X %s", dump.area->selection()->first(),
                          dump.area->selection()->last(), message.toUtf8().constData());
    };
    EXPECT_EQ(find(kText, "Ab"), "180-181 ");
    EXPECT_EQ(find(kText, "Ab"), "F00-F01 ");
    EXPECT_EQ(find(kText, "Ab"), "180-181 Continued from the start");
    EXPECT_EQ(find(kText, "Ab", Qt::ShiftModifier), "F00-F01 Continued from the end");
    EXPECT_EQ(find(kText, "Ab", Qt::ShiftModifier), "180-181 ");
    EXPECT_EQ(find(kText, "ab"), "180-181 Not found");
    EXPECT_EQ(find(kText, "\u20AC"), "180-181 Only Latin-1 characters are allowed");
    EXPECT_EQ(find(kBytes, "62 ff 01"), "181-183 ");
    EXPECT_EQ(find(kBytes, "1"), "181-183 Odd length is illegal");
    EXPECT_EQ(dump.top(), 8);
    pressKey(edit, Qt::Key_Escape);
    EXPECT_FALSE(edit.isVisible());
}

// A stutter would be felt from some 50 ms on; these bounds only catch work that grows with the
// data.
TEST(Views, OpenAndPaintManyAreasAndManyBytesAtOnce) {
    UiWorld world;
    const Bytes area(32, 0x55);
    for (uint32_t index = 0; index < 100'000; ++index) {
        HEXDATA_AddData(index * 64, area);
    }
    HEXDATA_AddData(0x80000000, Bytes(16 << 20, 0xAA));
    QElapsedTimer timer;
    timer.start();
    for (const auto create : {HEXLISTVIEW_Create, HEXDUMPVIEW_Create}) {
        const ViewPtr view(create(nullptr));
        view->resize(800, 600);
        view->show();
        EXPECT_FALSE(view->grab().isNull());
        auto& bar = *qobject_cast<QAbstractScrollArea*>(view->focusProxy())->verticalScrollBar();
        for (int step = 0; step < 20; ++step) {
            bar.setValue(bar.maximum() / 20 * step);
            EXPECT_FALSE(view->grab().isNull());
        }
    }
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST(TerminalView, IsReadyToTypeWheneverItIsActivated) {
    DesktopWorld world;
    world.show();
    QApplication::processEvents();
    QMdiArea& area = *world.frame().findChild<QMdiArea*>();
    const auto focusIn = [&](View view) {
        FRONTEND_Get().openView(view);
        QApplication::processEvents();
        return area.activeSubWindow()->focusWidget();
    };
    for (const char* last : {"Send", "Receive"}) {
        EXPECT_EQ(focusIn(View::terminal)->objectName(), "Send");
        control<QPlainTextEdit>(*world.window("Terminal I/O"), last).setFocus();
        EXPECT_NE(qobject_cast<QTableView*>(focusIn(View::hexList)), nullptr);
    }
    EXPECT_EQ(focusIn(View::terminal)->objectName(), "Send");
}

TEST(LogView, StartsAgainWithTheDefaultPlacement) {
    DesktopWorld world;
    world.show();
    FRONTEND_Get().openView(View::log);
    CLOCK_Sleep(20);
    FRONTEND_Get().restoreDefaultPlacement();
    const auto& list = control<QListView>(world.frame(), "LogList");
    ASSERT_TRUE(runUntil([&] { return list.model()->rowCount() > 0; }));
    EXPECT_EQ(list.model()->index(0, 0).data().toString().left(10), "0:00:00:00");
}
