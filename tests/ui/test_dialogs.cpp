#include "platform/serial_port.h"
#include "ui/dialogs.h"
#include "ui/ivector_dialog.h"
#include "ui/sheet.h"
#include "ui_world.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>
#include <QTableView>

namespace {

using Texts = std::vector<std::string>;
using Dialog = int (*)(QWidget*);

int drive(Dialog dialog, std::function<void(QDialog&)> script) {
    return driveDialog([dialog] { return dialog(nullptr); }, std::move(script));
}

QString textIn(const QWidget& window, const char* name) {
    return control<QLineEdit>(window, name).text();
}

void type(const QWidget& window, const char* name, const QString& text) {
    control<QLineEdit>(window, name).setText(text);
}

// VT-C, VT-A, VT-B in table order; the last with a password area and a clock to set up.
void addDevices() {
    _AddDevice(makeDevice("VT-C", {{0x1000, 0x100}}));
    _AddDevice(makeDevice("VT-A", {{0x0, 0x8000}, {0x8000, 0x8000}, {0x20000, 0x10}}));
    DeviceRecord device = makeDevice("VT-B", {{0x0, 0x100}, {0x100, 0x100}});
    device.TimerInit = 1;
    device.IDLenMin = 2;
    device.IDLenMax = 7;
    device.PWAreaStart = 0xFFDF;
    device.PWAreaLen = 7;
    _AddDevice(device);
}

void chooseDevice(const QWidget& window, const char* name) {
    auto& combo = control<QComboBox>(window, "601");
    combo.setCurrentIndex(combo.findText(name));
}

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

bool applyEnabled(const QWidget& sheet) {
    return control<QPushButton>(sheet, "apply").isEnabled();
}

} // namespace

TEST(ValueDialog, ShowsAndReadsHexNumbers) {
    struct Case {
        ValueRequest request;
        const char* shown[2];
        const char* typed[2];
        std::optional<int32_t> values[2];
        Texts reports;
    };
    const auto request = [](int32_t sign, std::optional<int32_t> first, const char* label1 = "",
                            std::optional<int32_t> second = {}) {
        ValueRequest made;
        made.sign = sign;
        made.title = "Title";
        made.hint = "Hint\nof two lines";
        made.label0 = "First:";
        made.label1 = label1;
        made.value0 = first;
        made.value1 = second;
        return made;
    };
    const Case cases[] = {
        {request(-1, -0x1000), {"-1000", ""}, {"-1000", ""}, {-0x1000, {}}, {}},
        {request(0, -1), {"FFFFFFFF", ""}, {"ab", ""}, {0xAB, {}}, {}},
        {request(1, {}), {"", ""}, {"", ""}, {{}, {}}, {}},
        {request(0, 0, "Second:", 0xFF), {"0", "FF"}, {"200", "100"}, {0x200, 0x100}, {}},
        {request(0, 1, "Second:", 2), {"1", "2"}, {"1G", ""}, {{}, {}}, {"Not a hex value"}},
        {request(0, 1, "Second:", 2), {"1", "2"}, {"x", "-"}, {{}, 0}, {"Not a hex value"}},
    };
    for (const Case& c : cases) {
        UiWorld world;
        ValueRequest changed = c.request;
        const bool two = !c.request.label1.empty();
        const int result =
            driveDialog([&] { return DIALOG_EditValue(nullptr, changed); },
                        [&](QDialog& dialog) {
                            EXPECT_EQ(dialog.windowTitle(), "Title");
                            EXPECT_EQ(control<QLabel>(dialog, "701").text(), "Hint\nof two lines");
                            EXPECT_EQ(textIn(dialog, "704"), c.shown[0]);
                            EXPECT_EQ(dialog.findChild<QLineEdit*>("705") != nullptr, two);
                            type(dialog, "704", c.typed[0]);
                            if (two) {
                                EXPECT_EQ(textIn(dialog, "705"), c.shown[1]);
                                type(dialog, "705", c.typed[1]);
                            }
                            EXPECT_EQ(textIn(dialog, "704"), QString(c.typed[0]).toUpper());
                            click(dialog, "1");
                        });
        EXPECT_EQ(result, kDialogOk);
        EXPECT_EQ(changed.value0, c.values[0]) << c.typed[0];
        EXPECT_EQ(changed.value1, c.values[1]) << c.typed[1];
        EXPECT_EQ(world.reports, c.reports);
    }
}

TEST(ValueDialog, CancelAndOtherModesReadNothing) {
    UiWorld world;
    ValueRequest request;
    request.value0 = 5;
    const auto edit = [&](const char* button) {
        return driveDialog([&] { return DIALOG_EditValue(nullptr, request); },
                           [&](QDialog& dialog) {
                               type(dialog, "704", "77");
                               click(dialog, button);
                           });
    };
    EXPECT_EQ(edit("2"), kDialogCancel);
    EXPECT_TRUE(world.reports.empty());
    request.mode = 2;
    EXPECT_EQ(edit("1"), kDialogOk);
    EXPECT_EQ(world.reports, (Texts{"EditValue::_OnInitDialog: Mode not supported"}));
    EXPECT_EQ(request.value0, 5);
}

TEST(TargetDialog, DeviceTakesEffectAtOnceAndCancelRestoresIt) {
    for (const bool accept : {false, true}) {
        UiWorld world;
        addDevices();
        const int result = drive(DIALOG_Target, [accept](QDialog& dialog) {
            auto& combo = control<QComboBox>(dialog, "601");
            EXPECT_EQ(combo.itemText(0), "VT-A"); // sorted
            EXPECT_EQ(combo.currentText(), "VT-C");
            EXPECT_EQ(blockLines(dialog), (Texts{"1000 - 10FF"}));
            chooseDevice(dialog, "VT-B");
            EXPECT_EQ(DEVICE_GetName(), "VT-B");
            EXPECT_EQ(PASSWORD_GetLimits().AreaStart, 0xFFDFu);
            EXPECT_EQ(blockLines(dialog), (Texts{"+0 - FF", "+100 - 1FF"}));
            EXPECT_EQ(selectedBlocks(), 0);
            click(dialog, accept ? "1" : "2");
        });
        EXPECT_EQ(result, accept ? kDialogOk : kDialogCancel);
        EXPECT_EQ(DEVICE_GetName(), accept ? "VT-B" : "VT-C");
        EXPECT_EQ(PASSWORD_GetLimits().AreaSize, accept ? 7u : 0u);
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
        list.setCurrentRow(1);
        pressKey(list, Qt::Key_Space);
        list.setCurrentRow(3);
        emit list.itemClicked(list.item(3));
        EXPECT_EQ(blockLines(dialog), (Texts{none[0], "+" + none[1], none[2], "+" + none[3]}));
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
    struct Case {
        int device;
        const char* text; // null: not touched
        int32_t speed;
    };
    const Case cases[] = {
        {2, nullptr, 4000000},
        {2, "20000000", 20000000},
        {2, "  -12MHz", -12},
        {2, "+8 000", 8},
        {2, "fast", 0},
        {2, "", 0},
        {2, "99999999999", 2147483647},
        {0, nullptr, 0}, // hidden and never filled
    };
    for (const Case& c : cases) {
        UiWorld world;
        addDevices();
        DEVPROPS_SetDevice(c.device);
        DEVPROPS_SetSpeed(4000000);
        drive(DIALOG_Target, [&c](QDialog& dialog) {
            for (const char* name : {"606", "607", "608"}) {
                EXPECT_EQ(control<QWidget>(dialog, name).isVisible(), c.device == 2) << name;
            }
            if (c.text != nullptr) {
                EXPECT_EQ(textIn(dialog, "606"), "4000000");
                type(dialog, "606", c.text);
            }
            click(dialog, "1");
        });
        EXPECT_EQ(DEVPROPS_GetSpeed(), c.speed) << (c.text != nullptr ? c.text : "untouched");
    }
}

TEST(SettingsDialog, KeepsTheBoxOnOkOnly) {
    UiWorld world;
    for (const bool accept : {false, true}) {
        drive(DIALOG_Settings, [accept](QDialog& dialog) {
            EXPECT_EQ(control<QCheckBox>(dialog, "602").text(),
                      "&User should not be asked to press reset");
            click(dialog, "602");
            click(dialog, accept ? "1" : "2");
        });
        EXPECT_EQ(DEVPROPS_GetResetByPC(), accept);
    }
}

TEST(CommunicationDialog, AppliesWhatTheControlsShow) {
    Texts opened;
    SERIALPORT_AddKind("test://", [&opened](const std::string& device, std::string& error) {
        opened.push_back(device);
        error = "not for real";
        return SerialPortPtr();
    });
    struct Case {
        SioConfig before;
        std::function<void(QDialog&)> change;
        bool accept;
        SioConfig after;
        Texts opened;
    };
    const auto nothing = [](QDialog&) {};
    const auto logOnly = [](QDialog& dialog) { click(dialog, "803"); };
    const auto everything = [](QDialog& dialog) {
        click(dialog, "803");
        control<QComboBox>(dialog, "801").setCurrentIndex(0);
        control<QComboBox>(dialog, "802").setCurrentIndex(1);
    };
    const Case cases[] = {
        {{2, 38400, 0}, nothing, true, {2, 38400, 0}, {}},
        {{0, 38400, 0}, nothing, true, {1, 38400, 0}, {"test://one"}},
        {{2, 31250, 0}, nothing, true, {2, 57600, 0}, {"test://two"}},
        {{2, 38400, 0}, logOnly, true, {2, 38400, 1}, {}},
        {{1, 38400, 0}, everything, true, {2, 2400, 1}, {"test://two"}},
        {{1, 38400, 0}, everything, false, {1, 38400, 0}, {}},
    };
    for (const Case& c : cases) {
        UiWorld world("[Settings PORTS]\nCOM1 = \"test://one\"\nCOM2 = \"test://two\"\n");
        SIO_Init(c.before.Port, c.before.Baudrate, c.before.Logging, 8, 0, 0);
        opened.clear();
        const int result = drive(DIALOG_Communication, [&c](QDialog& dialog) {
            EXPECT_EQ(control<QComboBox>(dialog, "801").count(), 7);
            EXPECT_EQ(control<QComboBox>(dialog, "802").count(), 20);
            c.change(dialog);
            click(dialog, c.accept ? "1" : "2");
        });
        EXPECT_EQ(result, c.accept ? kDialogOk : kDialogCancel);
        EXPECT_TRUE(SIO_GetConfig() == c.after);
        EXPECT_EQ(opened, c.opened);
    }
}

TEST(CommunicationDialog, NamesTheDeviceBehindThePort) {
    const TempFolder files;
    writeFile(files / "tty", "");
    const std::string there = (files / "tty").string();
    UiWorld world("[Settings PORTS]\nCOM1 = \"" + there + "\"\nCOM2 = \"" + there +
                  "x\"\nCOM3 = \"rfc2217://host:1\"\n");
    drive(DIALOG_Communication, [&there](QDialog& dialog) {
        const Texts expected = {there + " (present)", there + "x (not present)",
                                "rfc2217://host:1 (not a device file)"};
        for (size_t port = 0; port < expected.size(); ++port) {
            control<QComboBox>(dialog, "802").setCurrentIndex(static_cast<int>(port));
            EXPECT_EQ(control<QLabel>(dialog, "device").text().toStdString(), expected[port]);
        }
    });
}

namespace {

struct PasswordCase {
    const char* name;
    PasswordLimits limits;
    std::function<void(QDialog&)> enter;
    Texts reports;               // empty: accepted
    std::vector<uint8_t> result; // of what was accepted
};

std::function<void(QDialog&)> password(const char* text, bool hex = false) {
    return [text, hex](QDialog& dialog) {
        if (hex) {
            click(dialog, "1005");
        }
        type(dialog, "1003", text);
    };
}

std::function<void(QDialog&)> addresses(const char* count, const char* compare) {
    return [count, compare](QDialog& dialog) {
        type(dialog, "1001", count);
        type(dialog, "1002", compare);
    };
}

const PasswordLimits kArea = {0, 0, 0xFFDF, 7};
const std::vector<uint8_t> kFilled7(7, 0xFF);
const std::vector<uint8_t> kFilled256(256, 0xFF);

const PasswordCase kPasswordCases[] = {
    {"text", {}, password("a\u00DF"), {}, {0x61, 0xDF}},
    {"hex", {}, password("aB01", true), {}, {0xAB, 0x01}},
    {"odd hex", {}, password("aB0", true), {"Odd length is illegal"}, {}},
    {"no hex", {}, password("aG", true), {"Not a hex value"}, {}},
    {"beyond Latin-1", {}, password("\u20AC"), {"Only Latin-1 characters are allowed"}, {}},
    {"short", {8, 12, 0, 0}, password("1234567"), {"Password too short. Minimum 8 bytes"}, {}},
    {"long", {0, 2, 0, 0}, password("123"), {"Password too long. Maximum 2 bytes"}, {}},
    {"fill", {7, 7, 0, 0}, [](QDialog& d) { click(d, "1004"); }, {}, kFilled7},
    {"fill area", kArea, [](QDialog& d) { click(d, "1004"); }, {}, kFilled256},
    {"compare",
     kArea,
     addresses("FFDF", "FFE6"),
     {"Illegal password area. Must be within FFDF - FFE5"},
     {}},
    {"count",
     kArea,
     addresses("FFDE", "FFE5"),
     {"Illegal count address. Must be within FFDF - FFE5"},
     {}},
    {"both", kArea, addresses("1", "2"), {"Illegal password area. Must be within FFDF - FFE5"}, {}},
    {"empty",
     kArea,
     addresses("", "FFE5"),
     {"Illegal count address. Must be within FFDF - FFE5"},
     {}},
    {"kept", kArea, addresses("FFE1x", "FFE5"), {"Not a hex value"}, {}},
    {"address before hex",
     kArea,
     [](QDialog& d) {
         password("0", true)(d);
         addresses("1", "FFE5")(d);
     },
     {"Illegal count address. Must be within FFDF - FFE5"},
     {}},
};

} // namespace

TEST(PasswordDialog, ValidatesWhatIsEntered) {
    for (const PasswordCase& c : kPasswordCases) {
        UiWorld world;
        PASSWORD_SetLimits(c.limits.MinLen, c.limits.MaxLen, c.limits.AreaStart, c.limits.AreaSize);
        const bool addressError = std::string(c.name) == "kept"; // reported while it is typed
        const bool accepted = c.reports.empty() || addressError;
        drive(DIALOG_Password, [&](QDialog& dialog) {
            const bool area = c.limits.AreaSize != 0;
            for (const char* name : {"1001", "1002", "1006", "1007"}) {
                EXPECT_EQ(control<QWidget>(dialog, name).isVisible(), area) << c.name;
            }
            c.enter(dialog);
            EXPECT_EQ(world.reports.size(), addressError ? 1u : 0u) << c.name;
            click(dialog, "1");
            EXPECT_EQ(dialog.isVisible(), !accepted) << c.name;
        });
        EXPECT_EQ(world.reports, c.reports) << c.name;
        EXPECT_EQ(PASSWORD_GetBytes(), c.result) << c.name;
        // A missing address has become the start of the area by opening the dialog.
        EXPECT_EQ(PASSWORD_GetAdrCount(), c.limits.AreaStart) << c.name;
    }
}

TEST(PasswordDialog, ShowsTheSettingsInTheirMode) {
    struct Case {
        PasswordSettings settings;
        const char* text;
        bool editable;
    };
    const Case cases[] = {
        {{0, 0, {0x41, 0xE4}, false, false}, "A\u00E4", true},
        {{0, 0, {0x0A, 0xFF, 0x00}, false, true}, "0AFF00", true},
        {{0, 0, {0xFF, 0xFF}, true, true}, "", false},
    };
    for (const Case& c : cases) {
        UiWorld world;
        PASSWORD_Set(c.settings);
        drive(DIALOG_Password, [&c](QDialog& dialog) {
            EXPECT_EQ(textIn(dialog, "1003"), QString::fromUtf8(c.text));
            EXPECT_EQ(control<QLineEdit>(dialog, "1003").isEnabled(), c.editable);
            EXPECT_EQ(control<QCheckBox>(dialog, "1005").isEnabled(), c.editable);
            EXPECT_EQ(control<QCheckBox>(dialog, "1005").isChecked(), c.settings.Hexmode);
            click(dialog, "1004");
            EXPECT_EQ(control<QLineEdit>(dialog, "1003").isEnabled(), !c.editable);
            EXPECT_EQ(textIn(dialog, "1003"), "");
            click(dialog, "2");
        });
        EXPECT_TRUE(PASSWORD_Get() == c.settings);
    }
}

TEST(OptionsSheet, ApplyFollowsEveryChangeAndItsUndoing) {
    UiWorld world;
    addDevices();
    DEVPROPS_SetDevice(2);
    PASSWORD_SetLimitsOfDevice();
    PASSWORD_SetBytes(std::vector<uint8_t>{0x61, 0x62});
    SIO_Init(0, 9600, 0, 8, 0, 0);
    using Change = std::function<void(QDialog&)>;
    const std::pair<Change, Change> changes[] = {
        {[](QDialog& d) { click(d, "602"); }, [](QDialog& d) { click(d, "602"); }},
        {[](QDialog& d) { click(d, "604"); }, [](QDialog& d) { click(d, "605"); }},
        {[](QDialog& d) { type(d, "606", "1"); }, [](QDialog& d) { type(d, "606", "0"); }},
        {[](QDialog& d) { control<QComboBox>(d, "801").setCurrentIndex(0); },
         [](QDialog& d) { control<QComboBox>(d, "801").setCurrentIndex(2); }},
        {[](QDialog& d) { click(d, "803"); }, [](QDialog& d) { click(d, "803"); }},
        {[](QDialog& d) { type(d, "1003", "abc"); }, [](QDialog& d) { type(d, "1003", "ab"); }},
        {[](QDialog& d) { click(d, "1005"); }, [](QDialog& d) { click(d, "1005"); }},
        {[](QDialog& d) { type(d, "1001", "FFE0"); }, [](QDialog& d) { type(d, "1001", "FFDF"); }},
        {[](QDialog& d) { chooseDevice(d, "VT-A"); },
         [](QDialog& d) {
             chooseDevice(d, "VT-B");
             click(d, "605");
             type(d, "606", "0");
         }},
    };
    drive(DIALOG_Options, [&changes](QDialog& dialog) {
        const auto& tabs = control<QTabWidget>(dialog, "pages");
        Texts titles;
        for (int page = 0; page < tabs.count(); ++page) {
            titles.push_back(tabs.tabText(page).toStdString());
        }
        EXPECT_EQ(titles, (Texts{"&Target", "&Settings", "&Communication", "&Password"}));
        EXPECT_FALSE(applyEnabled(dialog));
        for (const auto& [change, undo] : changes) {
            change(dialog);
            EXPECT_TRUE(applyEnabled(dialog)) << "change " << &change - &changes[0].first;
            undo(dialog);
            EXPECT_FALSE(applyEnabled(dialog)) << "undo " << &undo - &changes[0].second;
        }
        EXPECT_EQ(SHEET_Options(nullptr), kDialogCancel) << "a second sheet";
    });
    EXPECT_TRUE(world.reports.empty());
}

TEST(OptionsSheet, ARefusingPageKeepsItOpenOnThatPage) {
    UiWorld world;
    addDevices();
    DEVPROPS_SetDevice(2);
    PASSWORD_SetLimitsOfDevice();
    SIO_Init(1, 9600, 0, 8, 0, 0);
    const int result = drive(DIALOG_Options, [&world](QDialog& dialog) {
        click(dialog, "602");
        type(dialog, "1003", "x");
        click(dialog, "1");
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(control<QTabWidget>(dialog, "pages").currentIndex(), 3);
        EXPECT_EQ(world.reports, (Texts{"Password too short. Minimum 2 bytes"}));
        EXPECT_TRUE(DEVPROPS_GetResetByPC()) << "the pages before it have committed";
        type(dialog, "1003", "xy");
        EXPECT_TRUE(applyEnabled(dialog));
        click(dialog, "apply");
        EXPECT_FALSE(applyEnabled(dialog));
        chooseDevice(dialog, "VT-A");
    });
    EXPECT_EQ(result, kDialogOk) << "settings were applied before it was cancelled";
    EXPECT_EQ(PASSWORD_GetBytes(), (std::vector<uint8_t>{'x', 'y'}));
    EXPECT_EQ(DEVICE_GetName(), "VT-B") << "the device applied last";
}

TEST(OptionsSheet, PasswordPageFollowsTheDeviceOfTheTargetPage) {
    UiWorld world;
    addDevices();
    SIO_Init(1, 9600, 0, 8, 0, 0);
    drive(DIALOG_Options, [](QDialog& dialog) {
        auto& tabs = control<QTabWidget>(dialog, "pages");
        tabs.setCurrentIndex(3);
        EXPECT_FALSE(control<QWidget>(dialog, "1001").isVisible());
        chooseDevice(dialog, "VT-B");
        tabs.setCurrentIndex(0);
        tabs.setCurrentIndex(3);
        EXPECT_TRUE(control<QWidget>(dialog, "1001").isVisible());
        EXPECT_EQ(textIn(dialog, "1001"), "FFDF");
    });
    EXPECT_EQ(PASSWORD_GetAdrCount(), 0u);
    EXPECT_EQ(PASSWORD_GetLimits().AreaSize, 0u);
}

TEST(InterruptVectors, ShowsRowsWarnsAndKeepsWidths) {
    UiWorld world;
    DeviceRecord device = makeDevice("VT", {{0xC000, 0x4000}});
    device.aIVector = {{1, "Reset", 16, 0xFFFE}, {2, "NMI", 16, 0xFFFC}};
    _AddDevice(device);
    HEXDATA_AddData(0xFFFE, std::vector<uint8_t>{0x00, 0x80});
    drive(DIALOG_Settings, [](QDialog&) {}); // an application that has shown something
    EXPECT_EQ(DIALOG_InterruptVectors(nullptr), kDialogCancel);
    EXPECT_EQ(world.reports, (Texts{"Interupt Vectors: No file loaded!"}));
    SESSION_Get().loaded = true;
    int defaultWidth = 0;
    drive(DIALOG_InterruptVectors, [&](QDialog& dialog) {
        auto& table = control<QTableView>(dialog, "vectors");
        Texts cells;
        for (int cell = 0; cell < table.model()->rowCount() * 5; ++cell) {
            cells.push_back(
                table.model()->index(cell / 5, cell % 5).data().toString().toStdString());
        }
        EXPECT_EQ(cells, (Texts{"1", "Reset", "16", "FFFE", "8000", //
                                "2", "NMI", "16", "FFFC", "--"}));
        defaultWidth = table.columnWidth(1);
        EXPECT_GE(defaultWidth, 201);
        table.setColumnWidth(1, 333);
        click(dialog, "1");
    });
    EXPECT_EQ(world.reports.back(), "Reset Vector: Reset vector does not point into flash memory!");
    const auto widthNow = [] {
        int width = 0;
        drive(DIALOG_InterruptVectors, [&width](QDialog& dialog) {
            width = control<QTableView>(dialog, "vectors").columnWidth(1);
        });
        return width;
    };
    EXPECT_EQ(widthNow(), 333);
    IVECT_RestoreDefault();
    EXPECT_EQ(widthNow(), defaultWidth);
}
