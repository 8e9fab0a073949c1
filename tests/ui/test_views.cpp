#include "desktop_world.h"
#include "notice/status.h"
#include "platform/format.h"
#include "ui/view_widget.h"

#include <QAction>
#include <tuple>

namespace {

using ViewPtr = std::unique_ptr<ViewWidget>;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string copied(const QWidget& view) {
    trigger(view, "&Copy");
    return QGuiApplication::clipboard()->text().toStdString();
}

// A hex dump of some data that shows ten lines at a time.
struct DumpWorld : UiWorld {
    DumpWorld(uint32_t address, const Bytes& bytes) {
        HEXDATA_AddData(address, bytes);
        view.reset(HEXDUMPVIEW_Create(nullptr));
        area = dynamic_cast<HexDumpArea*>(view->focusProxy());
        for (int height : {400, 10 * area->fontMetrics().height() + 3}) {
            view->resize(900, height + view->height() - area->viewport()->height());
            view->show();
            QApplication::processEvents();
        }
    }
    int top() const { return area->verticalScrollBar()->value(); }
    // What is selected, with the kind of text that a copy takes.
    std::string selected() const {
        const auto& selection = area->selection();
        return selection
                   ? formatText("%X-%X %s", selection->range().start, selection->range().last(),
                                selection->characters ? "characters" : "hex")
                   : "none";
    }

    ViewPtr view;
    HexDumpArea* area = nullptr;
};

} // namespace

TEST(HexListView, ShowsTheRowsBelowASummaryInGreenOrRed) {
    UiWorld world;
    HEXDATA_AddData(0, Bytes(0x100, 0x11));
    HEXDATA_AddData(0x200, bytesOf("0123456789\x7F"
                                   "bcdef"));
    const ViewPtr view(HEXLISTVIEW_Create(nullptr));
    view->findChild<QTableView*>()->selectRow(1);
    EXPECT_EQ(copied(*view), "0002\t00000200\t00000010\t\t"
                             "30 31 32 33 34 35 36 37 38 39 7F 62 63 64 65 66\t0123456789.bcdef");
    const auto& range = control<QLabel>(*view, "range");
    EXPECT_EQ(range.text(), "0x000000-0x00020F");
    EXPECT_EQ(control<QLabel>(*view, "bytes").text(), "Number of bytes: 272");
    for (const QColor& window : {QColor(Qt::white), QColor(30, 30, 30)}) {
        view->setPalette(QPalette(window));
        for (const bool fits : {true, false}) {
            HEXDATA_SetFits(fits);
            view->refresh();
            const QColor colour = range.palette().color(QPalette::WindowText);
            EXPECT_EQ(colour.green() > colour.red(), fits);
            EXPECT_GT(std::abs(colour.lightness() - window.lightness()), 90);
        }
    }
    HEXDATA_AddData(0x400, Bytes(1));
    view->refresh();
    EXPECT_EQ(view->findChild<QTableView*>()->currentIndex().row(), 1);
}

TEST(Views, ColumnsFitTheDefaultSizeUntilTheUserSetsThem) {
    UiWorld world;
    HEXDATA_AddData(0xFFFFF000, Bytes(0x1000, 0x11));
    DeviceRecord device = makeDevice("VT-1", {{0xFFFF0000, 0x10000}});
    device.Manufacturer = "Some Maker of Chips";
    _AddDevice(device);
    const std::tuple<ViewWidget* (*)(QWidget*), int, int> cases[] = {
        {HEXLISTVIEW_Create, 782, 90},
        {HEXDUMPVIEW_Create, 591, 270},
        {MEMORYMAPVIEW_Create, 701, 90},
        {DEVICEVIEW_Create, 281, 90}};
    for (const auto& [create, width, height] : cases) {
        const ViewPtr view(create(nullptr));
        view->resize(width, height);
        view->show();
        QApplication::processEvents();
        const auto& area = *qobject_cast<QAbstractScrollArea*>(view->focusProxy());
        EXPECT_EQ(area.horizontalScrollBar()->maximum(), 0) << width;
        std::vector<int> widths = view->columnWidths();
        EXPECT_GT(*std::ranges::min_element(widths), 0) << "the widths in force are kept";
        if (const auto* table = qobject_cast<const QTableView*>(&area)) {
            const auto* model = table->model();
            EXPECT_EQ(table->rowHeight(0), table->fontMetrics().height() + 4);
            EXPECT_FALSE(model->headerData(0, Qt::Vertical).isValid());
            for (int cell = 0; cell < model->rowCount() * model->columnCount(); ++cell) {
                const auto index =
                    model->index(cell / model->columnCount(), cell % model->columnCount());
                EXPECT_EQ(index.data(Qt::TextAlignmentRole).toInt(),
                          Qt::AlignLeft | Qt::AlignVCenter);
                EXPECT_LE(table->fontMetrics().horizontalAdvance(index.data().toString()),
                          widths[index.column()]);
            }
        }
        for (auto* header : area.findChildren<QHeaderView*>()) { // as the user drags it
            if (header->orientation() == Qt::Horizontal) {
                header->resizeSection(0, 55);
            }
        }
        view->resize(width + 50, height);
        QApplication::processEvents();
        EXPECT_EQ(view->columnWidths()[0], 55);
        std::ranges::fill(widths, 222);
        widths[0] = 0;
        view->setColumnWidths(widths);
        view->refresh();
        EXPECT_GT(view->columnWidths()[0], 30);
        widths[0] = view->columnWidths()[0];
        EXPECT_EQ(view->columnWidths(), widths);
    }
}

TEST(HexDumpView, FollowsTheCaretSideways) {
    const DumpWorld dump(0, Bytes(64, 0x41));
    dump.view->resize(200, 300);
    QApplication::processEvents();
    QScrollBar& bar = *dump.area->horizontalScrollBar();
    const auto* header = dump.area->header();
    EXPECT_EQ(bar.pageStep(), dump.area->viewport()->width());
    EXPECT_EQ(bar.maximum(), header->length() - bar.pageStep());
    EXPECT_GT(bar.singleStep(), 1);
    dump.area->placeCaret(15);
    const int there = bar.value();
    EXPECT_GT(there, 0);
    dump.view->refresh();
    EXPECT_EQ(header->offset(), there);
    EXPECT_TRUE(dump.area->accessibleDescription().startsWith("0000000F"));
    dump.area->placeCaret(0);
    EXPECT_LT(bar.value(), there);
    dump.area->select({20, 30});
    HEXDATA_Clear();
    HEXDATA_AddData(0, Bytes(8, 1));
    dump.view->refresh();
    EXPECT_EQ(dump.selected(), "none");
    EXPECT_EQ(dump.area->caret().address, 7U);
    HEXDATA_Clear();
    dump.view->refresh();
    EXPECT_EQ(dump.area->accessibleDescription(), "");
    QKeyEvent digit(QEvent::KeyPress, 0, {}, "1");
    QApplication::sendEvent(dump.area, &digit);
    EXPECT_EQ(STATUS_GetText(STATUS_GENERAL), "No program is loaded");
}

TEST(HexDumpView, KeysAndScrollBarFollowTheRules) {
    const DumpWorld dump(0x1005, Bytes(800, 0x41));
    QScrollBar& bar = *dump.area->verticalScrollBar();
    const std::tuple<int, int, uint32_t, Qt::KeyboardModifiers> keys[] = {
        {Qt::Key_Up, 0, 0x1005, {}},
        {Qt::Key_Down, 0, 0x1015, {}},
        {Qt::Key_Right, 0, 0x1016, {}},
        {Qt::Key_Down, 1, 0x1016, Qt::ControlModifier},
        {Qt::Key_Down, 2, 0x1016, Qt::ControlModifier},
        {Qt::Key_Left, 1, 0x1015, {}},
        {Qt::Key_PageUp, 0, 0x1005, {}},
        {Qt::Key_PageDown, 10, 0x10A5, {}},
        {Qt::Key_Up, 9, 0x1095, {}},
        {Qt::Key_PageDown, 19, 0x1135, {}},
        {Qt::Key_PageDown, 29, 0x11D5, {}},
        {Qt::Key_PageDown, 39, 0x1275, {}},
        {Qt::Key_PageDown, 40, 0x1315, {}},
        {Qt::Key_PageDown, 40, 0x1324, {}},
        {Qt::Key_Down, 40, 0x1324, {}},
        {Qt::Key_Home, 0, 0x1005, {}},
        {Qt::Key_Left, 0, 0x1005, {}},
        {Qt::Key_End, 40, 0x1324, {}},
        {Qt::Key_PageUp, 30, 0x1284, {}}};
    for (const auto& [key, position, caret, modifiers] : keys) {
        pressKey(*dump.area, key, modifiers);
        EXPECT_EQ(dump.top(), position) << "key " << key;
        EXPECT_EQ(dump.area->caret().address, caret) << "key " << key;
    }
    bar.setValue(5);
    bar.triggerAction(QAbstractSlider::SliderPageStepSub); // a bar by itself would go to 0
    EXPECT_EQ(dump.top(), 5);
    bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
    EXPECT_EQ(dump.area->topAddress(), 0x1005u + 15 * 16);
    HEXDATA_Clear();
    dump.view->refresh();
    EXPECT_EQ(bar.maximum(), 0);
}

TEST(HexDumpView, SelectsAndCopies) {
    const DumpWorld dump(0x100, bytesOf("0123456789ABCDEFghij"));
    const auto extend = [&](int key) {
        pressKey(*dump.area, key, Qt::ShiftModifier);
        return copied(*dump.view);
    };
    trigger(*dump.view, "Select &All");
    EXPECT_EQ(copied(*dump.view), "30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46\n67 68 69 6A");
    EXPECT_EQ(extend(Qt::Key_Up), "30 31 32 33");
    EXPECT_EQ(extend(Qt::Key_Left), "30 31 32");
    dump.area->select({0x10F, 0x110, true});
    EXPECT_EQ(copied(*dump.view), "Fg");
    EXPECT_EQ(extend(Qt::Key_PageDown), "Fghij");
    EXPECT_EQ(extend(Qt::Key_Home), "0123456789ABCDEF");
    HEXDATA_AddData(0xFFFFFFFF, Bytes{1});
    dump.view->refresh();
    EXPECT_EQ(extend(Qt::Key_End), "0123456789ABCDEF");
    EXPECT_EQ(dump.selected(), "10F-FFFFFFFF characters");
    EXPECT_EQ(dump.reports, (Texts{"Copy: At most 16777216 bytes can be copied at once."}));
}

TEST(HexDumpView, MouseSelectsWhatIsUnderIt) {
    const DumpWorld dump(0x1000, Bytes(64, 0x41));
    enum { kHex = 1, kCharacters };
    constexpr auto kPress = QEvent::MouseButtonPress;
    constexpr auto kMove = QEvent::MouseMove;
    const double step = QFontMetricsF(dump.area->font()).horizontalAdvance(u'0');
    const std::tuple<QEvent::Type, int, int, int, const char*> cases[] = {
        {kPress, kHex, 6, 1, "1012-1012 hex"},
        {kMove, kHex, 9, 2, "1012-1023 hex"},
        {kPress, kCharacters, 15, 3, "103F-103F characters"},
        {kMove, kCharacters, 15, 30, "103F-103F characters"}, // far below
        {kMove, kCharacters, 14, -5, "100E-103F characters"},
        {kPress, kHex, 0, 6, "none"}}; // below the last line
    for (const auto& [type, column, character, line, selected] : cases) {
        const int left = dump.area->header()->sectionViewportPosition(column);
        const QPointF point(left + 4 + step * character,
                            line * dump.area->fontMetrics().height() + 2);
        QMouseEvent event(type, point, dump.area->viewport()->mapToGlobal(point), Qt::LeftButton,
                          Qt::LeftButton, {});
        QApplication::sendEvent(dump.area->viewport(), &event);
        EXPECT_EQ(dump.selected(), selected);
    }
}

TEST(HexDumpView, GoesToAnAddress) {
    DumpWorld dump(0x1005, Bytes(800, 0x41));
    const Texts refusal = {"Go to Address: The address must be within 1005 - 1324"};
    const std::tuple<std::optional<int32_t>, int, const char*, Texts> cases[] = {
        {0x1148, 20, "1148-1148 hex", {}},
        {0x1324, 40, "1324-1324 hex", {}},
        {0x1004, 40, "1324-1324 hex", refusal},
        {std::nullopt, 40, "1324-1324 hex", refusal}};
    for (const auto& [entered, top, selected, reports] : cases) {
        FRONTEND_Get().editValue = [&, value = entered](ValueRequest& request) {
            request.value0 = value;
            return dump.reports.empty() ? kDialogOk : kDialogCancel; // asked again after a report
        };
        trigger(*dump.view, "&Go to Address...");
        EXPECT_EQ(std::exchange(dump.reports, {}), reports);
        EXPECT_EQ(dump.top(), top);
        EXPECT_EQ(dump.selected(), selected);
    }
    FRONTEND_Set({});
}

TEST(HexDumpView, FindsBytesAndText) {
    Bytes bytes(0x1000, 0);
    std::ranges::copy(bytesOf("Ab\xFF\x01"), bytes.begin() + 0x80);
    std::ranges::copy(bytesOf("Ab"), bytes.begin() + 0xE00);
    const DumpWorld dump(0x100, bytes);
    trigger(*dump.view, "&Find...");
    auto& edit = control<QLineEdit>(*dump.view, "findText");
    EXPECT_TRUE(edit.isVisible());
    enum { kBytes, kText };
    const std::tuple<int, const char*, int, const char*, const char*> cases[] = {
        {kText, "Ab", Qt::NoModifier, "180-181 hex", ""},
        {kText, "Ab", Qt::NoModifier, "F00-F01 hex", ""},
        {kText, "Ab", Qt::NoModifier, "180-181 hex", "Continued from the start"},
        {kText, "Ab", Qt::ShiftModifier, "F00-F01 hex", "Continued from the end"},
        {kText, "Ab", Qt::ShiftModifier, "180-181 hex", ""},
        {kText, "ab", Qt::NoModifier, "180-181 hex", "Not found"},
        {kText, "\u20AC", Qt::NoModifier, "180-181 hex", "Only Latin-1 characters are allowed"},
        {kBytes, "62 ff 01", Qt::NoModifier, "181-183 hex", ""},
        {kBytes, "1", Qt::NoModifier, "181-183 hex", "Odd length is illegal"}};
    for (const auto& [kind, text, modifiers, selected, message] : cases) {
        control<QComboBox>(*dump.view, "findKind").setCurrentIndex(kind);
        edit.setText(text);
        pressKey(edit, Qt::Key_Return, Qt::KeyboardModifiers(modifiers));
        EXPECT_EQ(dump.selected(), selected);
        EXPECT_EQ(control<QLabel>(*dump.view, "findMessage").text(), message);
    }
    EXPECT_EQ(dump.top(), 8);
    pressKey(edit, Qt::Key_Escape);
    EXPECT_FALSE(edit.isVisible());
}

TEST(TerminalView, IsReadyToTypeWheneverItIsActivated) {
    DesktopWorld world;
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
