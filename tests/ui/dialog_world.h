// The dialogs, with a script that does in them what a user does, and three devices to choose from.
#pragma once

#include "ui/dialogs.h"
#include "ui_world.h"

using Dialog = int (*)(QWidget*);

// Over a window, in whose middle it stands.
inline int drive(Dialog dialog, std::function<void(QDialog&)> script) {
    QWidget owner;
    owner.setGeometry(90, 50, 650, 600);
    owner.show();
    return driveDialog([&] { return dialog(&owner); },
                       [&owner, script = std::move(script)](QDialog& shown) {
                           const QPoint away =
                               shown.geometry().center() - owner.geometry().center();
                           EXPECT_LT(away.manhattanLength(), 8);
                           script(shown);
                       });
}

inline QString textIn(const QWidget& window, const char* name) {
    return control<QLineEdit>(window, name).text();
}

inline void type(const QWidget& window, const char* name, const QString& text) {
    control<QLineEdit>(window, name).setText(text);
}

// VT-C, VT-A, VT-B in table order; the last with a password area and a clock to set up.
inline void addDevices() {
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

// The device for which every control is there.
inline void selectVtB() {
    addDevices();
    DEVPROPS_SetDevice(2);
    PASSWORD_SetLimitsOfDevice();
}

// Every dialog, of a device for which every control is there.
inline void forEachDialog(const std::function<void(QDialog&)>& visit) {
    selectVtB();
    SESSION_Get().loaded = true;
    static ValueRequest request;
    request.label0 = "First:";
    request.label1 = "Second:";
    request.bytesLabel = "Bytes:";
    for (const Dialog dialog :
         {DIALOG_Target, DIALOG_Settings, DIALOG_Communication, DIALOG_Password,
          DIALOG_InterruptVectors, DIALOG_Options,
          Dialog{[](QWidget* owner) { return DIALOG_EditValue(owner, request); }},
          Dialog{[](QWidget* owner) {
              DIALOG_About(owner);
              return 0;
          }}}) {
        drive(dialog, visit);
    }
}

inline void chooseDevice(const QWidget& window, const char* name) {
    auto& combo = control<QComboBox>(window, "601");
    combo.setCurrentIndex(combo.findText(name));
}
