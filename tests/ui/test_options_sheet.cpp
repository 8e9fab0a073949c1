// The sheet of all pages: what applies when, and what keeps it open.
#include "dialog_world.h"
#include "platform/serial_port.h"
#include "ui/sheet.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

bool applyEnabled(const QWidget& sheet) {
    return control<QPushButton>(sheet, "apply").isEnabled();
}

} // namespace

TEST(OptionsSheet, TakesTheNameOfAPortThatIsTyped) {
    Texts opened;
    const auto note = [&opened](const std::string& device, std::string&) {
        opened.push_back(device);
        return SerialPortPtr();
    };
    SERIALPORT_AddKind("rfc2217://", note);
    SERIALPORT_AddKind("tcp://", note);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const std::string path = ptsname(terminal);
    const Texts names = {"rfc2217://bench:3001", "tcp://bench:4001", path};
    UiWorld world;
    selectVtB();
    for (const std::string& name : names) {
        drive(DIALOG_Options, [&](QDialog& sheet) {
            auto& edit = *control<QComboBox>(sheet, "802").lineEdit();
            edit.setText("COM21");
            const std::string problem = textOf(sheet, "device");
            click(sheet, "1");
            EXPECT_TRUE(sheet.isVisible() &&
                        problem.starts_with("The port is a number from 1 to 20"));
            EXPECT_EQ(world.reports.back(), problem);
            edit.selectAll();
            edit.insert(QString::fromStdString(" " + name + " "));
            EXPECT_TRUE(applyEnabled(sheet));
            click(sheet, "1");
            EXPECT_FALSE(sheet.isVisible());
        });
        EXPECT_EQ(SIO_GetDevice(), name);
        drive(DIALOG_Options, [&name](QDialog& sheet) {
            EXPECT_EQ(control<QComboBox>(sheet, "802").currentText().toStdString(), name);
            EXPECT_FALSE(applyEnabled(sheet));
        });
    }
    EXPECT_TRUE(SIO_IsOpen()) << "the path";
    EXPECT_EQ(opened, (Texts{names[0], names[1]}));
    close(terminal);
    SERIALPORT_AddKind("rfc2217://", RFC2217PORT_Open);
    SERIALPORT_AddKind("tcp://", TCPPORT_Open);
}

TEST(OptionsSheet, ApplyFollowsEveryChangeAndItsUndoing) {
    UiWorld world;
    selectVtB();
    PASSWORD_SetBytes(Bytes{0x61, 0x62});
    SIO_Init(0, 9600, 0, 8, 0, 0);
    struct Step {
        const char* control;
        const char* text; // typed or chosen; none: clicked
    };
    const std::pair<Step, std::vector<Step>> changes[] = {
        {{"602", ""}, {{"602", ""}}},
        {{"604", ""}, {{"605", ""}}},
        {{"606", "1"}, {{"606", "0"}}},
        {{"801", "2400"}, {{"801", "9600"}}},
        {{"803", ""}, {{"803", ""}}},
        {{"1003", "abc"}, {{"1003", "ab"}}},
        {{"1005", ""}, {{"1005", ""}}},
        {{"1001", "FFE0"}, {{"1001", "FFDF"}}},
        {{"601", "VT-A"}, {{"601", "VT-B"}, {"605", ""}, {"606", "0"}}},
    };
    const auto take = [](QDialog& dialog, const Step& step) {
        if (auto* combo = dialog.findChild<QComboBox*>(step.control)) {
            combo->setCurrentIndex(combo->findText(step.text, Qt::MatchStartsWith));
        } else if (*step.text != '\0') {
            type(dialog, step.control, step.text);
        } else {
            click(dialog, step.control);
        }
    };
    drive(DIALOG_Options, [&](QDialog& dialog) {
        EXPECT_FALSE(applyEnabled(dialog));
        for (const auto& [change, undo] : changes) {
            SCOPED_TRACE(change.control);
            take(dialog, change);
            EXPECT_TRUE(applyEnabled(dialog));
            std::ranges::for_each(undo, [&](const Step& step) { take(dialog, step); });
            EXPECT_FALSE(applyEnabled(dialog));
        }
        EXPECT_EQ(SHEET_Options(nullptr), kDialogCancel) << "a second sheet";
    });
    EXPECT_TRUE(world.reports.empty());
}

TEST(OptionsSheet, ARefusingPageKeepsItOpenOnThatPage) {
    UiWorld world;
    addDevices();
    SIO_Init(1, 9600, 0, 8, 0, 0);
    EXPECT_EQ(drive(DIALOG_Settings,
                    [](QDialog& dialog) {
                        click(dialog, "602");
                        click(dialog, "1");
                    }),
              kDialogOk);
    drive(DIALOG_Settings, [](QDialog& dialog) {
        EXPECT_TRUE(control<QCheckBox>(dialog, "602").isChecked());
        click(dialog, "602");
        click(dialog, "1");
    });
    const int result = drive(DIALOG_Options, [&world](QDialog& dialog) {
        chooseDevice(dialog, "VT-B"); // whose password the next page asks for
        click(dialog, "602");
        type(dialog, "1003", "x");
        click(dialog, "1");
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(control<QTabWidget>(dialog, "pages").currentIndex(), 3);
        EXPECT_EQ(world.reports, (Texts{"Password too short. Minimum 2 bytes"}));
        EXPECT_FALSE(DEVPROPS_GetResetByPC()) << "no page commits before all are checked";
        type(dialog, "1003", "xy");
        EXPECT_TRUE(applyEnabled(dialog));
        click(dialog, "apply");
        EXPECT_FALSE(applyEnabled(dialog));
        EXPECT_TRUE(DEVPROPS_GetResetByPC());
        chooseDevice(dialog, "VT-A");
    });
    EXPECT_EQ(result, kDialogOk) << "settings were applied before it was cancelled";
    EXPECT_EQ(PASSWORD_GetBytes(), (Bytes{'x', 'y'}));
    EXPECT_EQ(DEVICE_GetName(), "VT-B") << "the device applied last";
}

TEST(OptionsSheet, UntouchedPagesAreNotCheckedButFollowTheDevice) {
    UiWorld world;
    addDevices();
    DeviceRecord other = makeDevice("VT-D", {{0, 0x400}});
    other.IDLenMin = 5;
    other.PWAreaStart = 0x100;
    other.PWAreaLen = 8;
    _AddDevice(other);
    SIO_Init(1, 9600, 0, 8, 0, 0);
    for (const auto& [device, count] : {std::pair("VT-B", 0xFFDFU), std::pair("VT-D", 0x100U)}) {
        const int result = drive(DIALOG_Options, [device = device](QDialog& dialog) {
            chooseDevice(dialog, device); // which wants a password that nobody gave
            control<QTabWidget>(dialog, "pages").setCurrentIndex(3);
            click(dialog, "1");
        });
        EXPECT_EQ(result, kDialogOk) << device;
        EXPECT_EQ(DEVICE_GetName(), device);
        EXPECT_EQ(PASSWORD_GetAdrCount(), count);
        EXPECT_EQ(PASSWORD_GetAdrCompare(), count);
    }
    EXPECT_TRUE(world.reports.empty());
    PASSWORD_Set({0, 0, {}, true, false});
    drive(DIALOG_Options, [](QDialog& dialog) {
        chooseDevice(dialog, "VT-B");
        click(dialog, "1");
    });
    EXPECT_FALSE(PASSWORD_GetBytes().empty()) << "filled";
    PASSWORD_Set({});
    drive(DIALOG_Options, [](QDialog& dialog) {
        click(dialog, "1004");
        EXPECT_TRUE(applyEnabled(dialog));
    });
}
