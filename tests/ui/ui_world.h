// What tests of views and dialogs need: an application off screen, an empty image, some devices, a
// program folder, and a record of everything that is reported.
#pragma once

#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/password.h"
#include "notice/error.h"
#include "persist/ini.h"
#include "platform/files.h"
#include "serial/sio.h"
#include "shell/session.h"
#include "support/fresh_process.h"
#include "support/temp_folder.h"

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

// The one application object of the test program, gone before the library's own objects are.
class ApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[8] = "test_ui";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

inline DeviceRecord makeDevice(const std::string& name, std::vector<FlashBlock> blocks) {
    DeviceRecord device;
    device.Device = name;
    device.aBlock = std::move(blocks);
    return device;
}

class UiWorld {
public:
    explicit UiWorld(const std::string& settings = "") {
        freshProcess();
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); // what is kept per user
        FILES_SetProgramPath(folder / "tool");
        writeFile(folder / "tool.ini", settings);
        ERROR_SetHandlers(
            [this](WindowHandle, const std::string& text, const std::string&, int) {
                reports.push_back(text);
            },
            [this](WindowHandle, const std::string& text, const std::string& caption, unsigned) {
                reports.push_back(caption + ": " + text);
                return 0;
            },
            {});
        INI_Load();
    }
    ~UiWorld() { freshProcess(); }
    UiWorld(const UiWorld&) = delete;
    UiWorld& operator=(const UiWorld&) = delete;

    const TempFolder folder;
    Texts reports; // questions as "CAPTION: TEXT"
};

// Runs `action` once, `ms` milliseconds from now, in whatever loop then processes events.
inline void later(int ms, std::function<void()> action) {
    auto* timer = new QTimer(qApp);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, action = std::move(action)] {
        timer->deleteLater();
        action();
    });
    timer->start(ms);
}

// Runs `action` once a modal window is open.
inline void onModal(std::function<void()> action) {
    later(1, [action = std::move(action)] {
        QApplication::activeModalWidget() != nullptr ? action() : onModal(action);
    });
}

// Runs a modal dialog and, once it is shown, the script; a dialog that the script leaves open is
// cancelled.
template <class Run>
auto driveDialog(const Run& run, std::function<void(QDialog&)> script) {
    bool shown = false;
    const auto ended = qScopeGuard([&shown] {
        QApplication::processEvents();
        EXPECT_TRUE(shown) << "no dialog appeared";
    });
    later(0, [&shown, script = std::move(script)] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog != nullptr) {
            shown = true;
            const QPointer<QDialog> alive = dialog;
            script(*dialog);
            if (alive && alive->isVisible()) {
                alive->reject();
            }
        }
    });
    return run();
}

template <class Control>
Control& control(const QWidget& window, const char* name) {
    auto* found = window.findChild<Control*>(name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("no control ") + name);
    }
    return *found;
}

// The text of a label, a button or a line edit.
inline std::string textOf(const QWidget& window, const char* name) {
    return control<QWidget>(window, name).property("text").toString().toStdString();
}

// How many of its pixels have a colour, or one like it: letters have soft edges.
inline int pixelsOf(const QPixmap& shown, const QColor& colour, int tolerance = 0) {
    const QImage picture = shown.toImage();
    int count = 0;
    for (int at = 0; at < picture.width() * picture.height(); ++at) {
        const QColor found = picture.pixelColor(at % picture.width(), at / picture.width());
        const int away = std::abs(found.red() - colour.red()) +
                         std::abs(found.green() - colour.green()) +
                         std::abs(found.blue() - colour.blue());
        count += away <= tolerance ? 1 : 0;
    }
    return count;
}

inline void click(const QWidget& window, const char* name) {
    control<QAbstractButton>(window, name).click();
}

inline void trigger(const QWidget& window, const char* text) {
    for (QAction* action : window.findChildren<QAction*>()) {
        if (action->text() == text) {
            return action->trigger();
        }
    }
    ADD_FAILURE() << "no action " << text;
}

// Whether the widget took it.
inline bool pressKey(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = {}) {
    const QString text = key == Qt::Key_Space ? " " : "";
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(&widget, &press);
    return press.isAccepted();
}

// What can be reached by Tab says what it is to who hears it.
inline void expectNamed(const QWidget& within) {
    for (QWidget* widget : within.findChildren<QWidget*>()) {
        const bool inside = qobject_cast<QAbstractScrollArea*>(widget->parentWidget()) != nullptr ||
                            widget->window() != within.window();
        if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr &&
            !inside) {
            QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(widget);
            EXPECT_TRUE(heard != nullptr && !heard->text(QAccessible::Name).isEmpty())
                << widget->metaObject()->className() << " " << widget->objectName().toStdString();
        }
    }
}
