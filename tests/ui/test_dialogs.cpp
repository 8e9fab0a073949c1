#include "dialog_world.h"
#include "platform/serial_port.h"
#include "ui/desktop.h"
#include "virtual_time.h"

#include <QShortcut>
#include <QTabBar>
#include <cstdlib>
#include <set>

namespace {

// The block list, "+" before a selected line.
Texts blockLines(const QWidget& window) {
    Texts lines;
    const auto& list = control<QListWidget>(window, "603");
    for (int row = 0; row < list.count(); ++row) {
        const bool checked = list.item(row)->checkState() == Qt::Checked;
        lines.push_back((checked ? "+" : "") + list.item(row)->text().toStdString());
    }
    return lines;
}

int32_t selectedBlocks() {
    const DevProps props = DEVPROPS_Get();
    return static_cast<int32_t>(std::ranges::count(props.aBlockSelect, 1));
}

// What a user without a mouse needs: one control a letter, Tab from top to bottom and from left to
// right, a button for Enter.
void expectReachable(const QDialog& dialog) {
    std::set<QKeySequence> letters;
    const auto take = [&letters](const QString& text) {
        const QKeySequence letter = QKeySequence::mnemonic(text);
        EXPECT_TRUE(letter.isEmpty() || letters.insert(letter).second) << text.toStdString();
    };
    const auto* tabs = dialog.findChild<QTabBar*>();
    for (int index = 0; tabs != nullptr && index < tabs->count(); ++index) {
        take(tabs->tabText(index));
    }
    expectNamed(dialog);
    bool hasDefault = false;
    QPoint before(-1, -1);
    for (QWidget* widget = dialog.nextInFocusChain(); widget != &dialog;
         widget = widget->nextInFocusChain()) {
        if (!widget->isVisible()) {
            continue;
        }
        take(widget->property("text").toString());
        hasDefault = hasDefault || widget->property("default").toBool();
        if (widget->isEnabled() && widget->focusProxy() == nullptr &&
            (widget->focusPolicy() & Qt::TabFocus) != 0) {
            const QPoint place = widget->mapTo(&dialog, widget->rect().center());
            EXPECT_TRUE(place.y() > before.y() || place.x() > before.x())
                << widget->objectName().toStdString();
            before = place;
        }
    }
    EXPECT_TRUE(hasDefault);
}

} // namespace

TEST(Dialogs, CanBeUsedByKeyboard) {
    UiWorld world;
    forEachDialog([](QDialog& dialog) {
        expectReachable(dialog);
        click(dialog, "1");
        EXPECT_EQ(dialog.isVisible(), dialog.windowTitle() == "Password") << "which is too short";
    });
    drive(DIALOG_Options, [](QDialog& dialog) {
        const auto& pages = control<QTabWidget>(dialog, "pages");
        for (const auto& [key, next] : {std::pair("Ctrl+Tab", 1),
                                        {"Ctrl+Tab", 2},
                                        {"Ctrl+Tab", 3},
                                        {"Ctrl+Tab", 0},
                                        {"Ctrl+Shift+Tab", 3}}) {
            for (QShortcut* shortcut : dialog.findChildren<QShortcut*>()) {
                if (shortcut->key() == QKeySequence(key)) {
                    emit shortcut->activated();
                }
            }
            EXPECT_EQ(pages.currentIndex(), next);
            expectReachable(dialog);
        }
        EXPECT_EQ(textIn(dialog, "1001"), "FFDF");
    });
}

TEST(ValueDialog, ShowsAndReadsHexNumbersUnlessCancelled) {
    struct Case {
        int mode;
        int32_t sign;
        std::optional<int32_t> before[2];
        const char* shown[2];
        const char* typed[2];
        const char* button; // the number of OK or Cancel, which is the result
        std::optional<int32_t> after[2];
        Texts reports;
    };
    const Case cases[] = {
        {1, -1, {-0x1000, 0}, {"-1000", "0"}, {"-1000", "-"}, "1", {-0x1000, 0}, {}},
        {1, 0, {-1, 0xFF}, {"FFFFFFFF", "FF"}, {"ab", "100"}, "1", {0xAB, 0x100}, {}},
        {1, 0, {1, {}}, {"1", ""}, {"1G", ""}, "1", {{}, {}}, {"Not a hex value"}},
        {1, 0, {5, 6}, {"5", "6"}, {"77", "x"}, "2", {5, 6}, {}},
        {2,
         0,
         {5, 6},
         {"", ""},
         {"77", "88"},
         "1",
         {5, 6},
         {"EditValue::_OnInitDialog: Mode not supported"}},
    };
    for (const Case& c : cases) {
        UiWorld world;
        ValueRequest request;
        request.mode = c.mode;
        request.sign = c.sign;
        request.title = "Title";
        request.label0 = "First:";
        request.label1 = "Second:";
        request.value0 = c.before[0];
        request.value1 = c.before[1];
        const auto edit = [&] { return DIALOG_EditValue(nullptr, request); };
        const int result = driveDialog(edit, [&c](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), "Title");
            EXPECT_EQ(textIn(dialog, "704"), c.shown[0]);
            EXPECT_EQ(textIn(dialog, "705"), c.shown[1]);
            EXPECT_EQ(control<QLineEdit>(dialog, "704").selectedText(), c.shown[0]) << "typed over";
            control<QLineEdit>(dialog, "704").setText("12");
            control<QLineEdit>(dialog, "704").setCursorPosition(0);
            control<QLineEdit>(dialog, "704").insert("a");
            EXPECT_EQ(control<QLineEdit>(dialog, "704").cursorPosition(), 1);
            type(dialog, "704", c.typed[0]);
            type(dialog, "705", c.typed[1]);
            EXPECT_EQ(textIn(dialog, "704"), QString(c.typed[0]).toUpper());
            click(dialog, c.button);
            EXPECT_FALSE(dialog.isVisible());
        });
        EXPECT_EQ(result, std::atoi(c.button));
        EXPECT_EQ(request.value0, c.after[0]) << c.typed[0];
        EXPECT_EQ(request.value1, c.after[1]) << c.typed[1];
        EXPECT_EQ(world.reports, c.reports);
    }
}

TEST(TargetDialog, TheDeviceTakesEffectOnOkOnly) {
    for (const bool accept : {false, true}) {
        UiWorld world;
        addDevices();
        const int result = drive(DIALOG_Target, [accept](QDialog& dialog) {
            const auto& combo = control<QComboBox>(dialog, "601");
            EXPECT_EQ(combo.itemText(0), "VT-A"); // sorted
            EXPECT_EQ(combo.currentText(), "VT-C");
            EXPECT_EQ(blockLines(dialog), (Texts{"1000 - 10FF"}));
            chooseDevice(dialog, "VT-A"); // whose third block is not the next one's
            chooseDevice(dialog, "VT-B");
            EXPECT_EQ(blockLines(dialog), (Texts{"+0 - FF", "+100 - 1FF"}));
            EXPECT_TRUE(control<QWidget>(dialog, "606").isVisible()) << "its clock";
            EXPECT_EQ(DEVICE_GetName(), "VT-C");
            click(dialog, accept ? "1" : "2");
            EXPECT_FALSE(dialog.isVisible());
        });
        EXPECT_EQ(result, accept ? kDialogOk : kDialogCancel);
        EXPECT_EQ(DEVICE_GetName(), accept ? "VT-B" : "VT-C");
        EXPECT_EQ(selectedBlocks(), accept ? 2 : 0);
    }
}

TEST(TargetDialog, SelectsBlocks) {
    UiWorld world;
    addDevices();
    DevProps props;
    props.Device = 1;
    props.XDataStart = 0xF000;
    props.XDataLen = 0x100;
    DEVPROPS_Set(props);
    drive(DIALOG_Target, [](QDialog& dialog) {
        auto& list = control<QListWidget>(dialog, "603");
        const Texts none = {"0 - 7FFF", "8000 - FFFF", "20000 - 2000F", "F000 - F0FF"};
        EXPECT_EQ(blockLines(dialog), none);
        list.setCurrentRow(3);
        emit list.itemClicked(list.item(3));
        EXPECT_EQ(blockLines(dialog), (Texts{none[0], none[1], none[2], "+" + none[3]}));
        click(dialog, "605");
        EXPECT_EQ(blockLines(dialog), none);
        click(dialog, "604");
        list.setCurrentRow(0);
        pressKey(list, Qt::Key_Space);
        click(dialog, "1");
    });
    EXPECT_FALSE(DEVPROPS_IsBlockSelected(0));
    EXPECT_TRUE(DEVPROPS_IsBlockSelected(3));
    EXPECT_EQ(selectedBlocks(), kMaxSelectableBlocks - 1);
}

TEST(TargetDialog, ReadsTheFrequencyAsANumberInFront) {
    const std::tuple<int, const char*, int32_t> cases[] = {
        {2, "20000000", 20000000},      {2, "  -12MHz", -12}, {2, "fast", 0},
        {2, "99999999999", 2147483647}, {0, "", 0}, // hidden and never filled
    };
    for (const auto& [device, text, speed] : cases) {
        UiWorld world;
        addDevices();
        DEVPROPS_SetDevice(device);
        DEVPROPS_SetSpeed(4000000);
        drive(DIALOG_Target, [device = device, text = text](QDialog& dialog) {
            EXPECT_EQ(control<QWidget>(dialog, "606").isVisible(), device == 2);
            EXPECT_EQ(textIn(dialog, "606"), device == 2 ? "4000000" : "");
            type(dialog, "606", text);
            click(dialog, "1");
        });
        EXPECT_EQ(DEVPROPS_GetSpeed(), speed) << text;
    }
}

TEST(CommunicationDialog, AppliesWhatTheControlsShow) {
    const VirtualTime time;
    Texts opened;
    SERIALPORT_AddKind("test://", [&opened](const std::string& device, std::string&) {
        opened.push_back(device);
        return SerialPortPtr();
    });
    struct Case {
        SioConfig before;
        const char* button; // OK or Cancel
        enum { nothing, logging, everything } change;
        SioConfig after;
        Texts opened;
    };
    const Case cases[] = {
        {{2, 38400, 1}, "1", Case::nothing, {2, 38400, 1}, {}},
        {{0, 38400, 0}, "1", Case::nothing, {1, 38400, 0}, {"test://one"}},
        {{2, 31250, 0}, "1", Case::nothing, {2, 31250, 0}, {}}, // a rate that the list lacks
        {{2, 38400, 1}, "1", Case::logging, {2, 38400, 0}, {}},
        {{1, 38400, 0}, "1", Case::everything, {2, 2400, 1}, {"test://two"}},
        {{1, 38400, 0}, "2", Case::everything, {1, 38400, 0}, {}},
    };
    for (const Case& c : cases) {
        UiWorld world("[Settings PORTS]\nCOM1 = \"test://one\"\nCOM2 = \"test://two\"\n");
        SIO_Init(c.before.Port, c.before.Baudrate, c.before.Logging, 8, 0, 0);
        opened.clear();
        drive(DIALOG_Communication, [&c](QDialog& dialog) {
            EXPECT_EQ(control<QCheckBox>(dialog, "803").isChecked(), c.before.Logging != 0);
            if (c.change != Case::nothing) {
                click(dialog, "803");
            }
            if (c.change == Case::everything) {
                control<QComboBox>(dialog, "801").setCurrentIndex(0);
                control<QComboBox>(dialog, "802").setCurrentIndex(1);
            }
            const auto& port = control<QLabel>(dialog, "device");
            const QVariant tip = control<QComboBox>(dialog, "802").itemData(0, Qt::ToolTipRole);
            EXPECT_TRUE(tip.toString().startsWith("test://one ("));
            EXPECT_TRUE(port.text().endsWith(" (a port server on the network)"))
                << port.text().toStdString();
            click(dialog, c.button);
        });
        EXPECT_TRUE(SIO_GetConfig() == c.after);
        EXPECT_EQ(opened, c.opened);
    }
}

// The rules themselves are tested with the password. A fault in an address is reported while it is
// typed, every other one on OK, after which the dialog stays.
TEST(PasswordDialog, ReadsItsControlsAndStaysWhenRefused) {
    const PasswordLimits area = {0, 0, 0xFFDF, 7};
    const std::string noHex = "Not a hex value";
    struct Case {
        PasswordLimits limits;
        const char *box, *field; // clicked, and typed into
        QString text;
        std::string report;
        Bytes bytes;
    };
    const Case cases[] = {
        {{}, nullptr, "1003", "a\u00DF", "", {0x61, 0xDF}},
        {{}, "1005", "1003", "aB01", "", {0xAB, 0x01}},
        {{7, 7, 0, 0}, "1004", "1003", "", "", Bytes(7, 0xFF)},
        {{8, 12, 0, 0}, nullptr, "1003", "1234567", "Password too short. Minimum 8 bytes", {}},
        {area, nullptr, "1002", "FFE6", "Illegal password area. Must be within FFDF - FFE5", {}},
        {area, nullptr, "1001", "", "Illegal count address. Must be within FFDF - FFE5", {}},
        {area, nullptr, "1001", "FFE1x", noHex, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.report);
        UiWorld world;
        PASSWORD_SetLimits(c.limits.MinLen, c.limits.MaxLen, c.limits.AreaStart, c.limits.AreaSize);
        drive(DIALOG_Password, [&](QDialog& dialog) {
            EXPECT_EQ(control<QWidget>(dialog, "1001").isVisible(), c.limits.AreaSize != 0);
            if (c.box != nullptr) {
                click(dialog, c.box);
            }
            type(dialog, c.field, c.text);
            EXPECT_EQ(world.reports.empty(), c.report != noHex);
            click(dialog, "1");
            EXPECT_EQ(dialog.isVisible(), !c.report.empty() && c.report != noHex);
        });
        EXPECT_EQ(world.reports, c.report.empty() ? Texts{} : Texts{c.report});
        EXPECT_EQ(PASSWORD_GetBytes(), c.bytes);
        EXPECT_EQ(PASSWORD_GetAdrCount(), c.limits.AreaStart) << "filled in by opening the dialog";
    }
}

TEST(PasswordDialog, ShowsTheSettingsInTheirMode) {
    const std::pair<PasswordSettings, const char*> cases[] = {
        {{0, 0, {0x41, 0xE4}, false, false}, "A\u00E4"},
        {{0, 0, {0x0A, 0xFF, 0x00}, false, true}, "0AFF00"},
        {{0, 0, {0xFF, 0xFF}, true, true}, ""},
    };
    for (const auto& [settings, text] : cases) {
        UiWorld world;
        PASSWORD_Set(settings);
        drive(DIALOG_Password,
              [fill = settings.FillFF, hex = settings.Hexmode, text = text](QDialog& dialog) {
                  EXPECT_EQ(textIn(dialog, "1003"), QString::fromUtf8(text));
                  EXPECT_EQ(control<QCheckBox>(dialog, "1005").isChecked(), hex);
                  EXPECT_EQ(control<QWidget>(dialog, "1003").isEnabled(), !fill);
                  click(dialog, "1004");
                  EXPECT_EQ(control<QWidget>(dialog, "1003").isEnabled(), fill);
                  EXPECT_EQ(control<QWidget>(dialog, "1005").isEnabled(), fill);
                  EXPECT_EQ(textIn(dialog, "1003"), "");
              });
        EXPECT_TRUE(PASSWORD_Get() == settings);
    }
}

TEST(InterruptVectors, ShowsRowsWarnsAndKeepsWidths) {
    UiWorld world;
    DeviceRecord device = makeDevice("VT", {{0xC000, 0x4000}});
    device.aIVector = {{1, "Reset", 16, 0xFFFE}, {2, "NMI", 16, 0xFFFC}};
    _AddDevice(device);
    HEXDATA_AddData(0xFFFE, Bytes{0x00, 0x80});
    drive(DIALOG_Settings, [](QDialog&) {}); // an application that has shown something
    EXPECT_EQ(DIALOG_InterruptVectors(nullptr), kDialogCancel);
    EXPECT_EQ(world.reports, (Texts{"Interupt Vectors: No file loaded!"}));
    SESSION_Get().loaded = true;
    drive(DIALOG_InterruptVectors, [&](QDialog& dialog) {
        auto& table = control<QTableView>(dialog, "vectors");
        ASSERT_EQ(table.model()->rowCount(), 2);
        EXPECT_EQ(table.model()->index(0, 4).data(), "8000");
        table.setColumnWidth(1, 333);
        click(dialog, "1");
    });
    EXPECT_EQ(world.reports.back(), "Reset Vector: Reset vector does not point into flash memory!");
    drive(DIALOG_InterruptVectors, [](QDialog& dialog) {
        EXPECT_EQ(control<QTableView>(dialog, "vectors").columnWidth(1), 333);
    });
    DESKTOP_Create().restoreDefaultPlacement();
    drive(DIALOG_InterruptVectors, [](QDialog& dialog) {
        EXPECT_NE(control<QTableView>(dialog, "vectors").columnWidth(1), 333);
    });
}
