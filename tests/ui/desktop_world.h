// The desktop's frame with everything below it, driven through the program's own event queue.
#pragma once

#include "notice/log.h"
#include "notice/progress.h"
#include "platform/event_queue.h"
#include "shell/front_end.h"
#include "target/worker.h"
#include "ui/boxes.h"
#include "ui/desktop.h"
#include "ui/file_dialog.h"
#include "ui/frame.h"
#include "ui_world.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <thread>

struct DesktopWorld : UiWorld {
    explicit DesktopWorld(const std::string& settings = "") : UiWorld(settings) {
        EVENTS_Open();
        FRONTEND_Set(DESKTOP_Create());
        SESSION_Get().frameRect[2] = 800;
        SESSION_Get().frameRect[3] = 600;
        FRONTEND_Get().start();
        EVENTS_SetTicker(10, [] {}); // so that waiting for something ends when it never comes
    }
    ~DesktopWorld() {
        BOX_SetResponder({});
        FILEDIALOG_SetResponder({});
        EVENTS_SetTicker(0, {});
        EVENTS_Close();
        TARGET_Stop();
        FRONTEND_Get().stop();
        FRONTEND_Set({});
    }

    QMainWindow& frame() { return *FRAME_Get(); }
    void show() { FRONTEND_Get().showFrame(true); }

    QAction& item(int id) {
        auto* action = frame().findChild<QAction*>(QString::number(id));
        if (action == nullptr) {
            throw std::runtime_error("no item " + std::to_string(id));
        }
        return *action;
    }

    std::vector<QMdiSubWindow*> windows() {
        const auto list = frame().findChild<QMdiArea*>()->subWindowList();
        return {list.begin(), list.end()};
    }
    QMdiSubWindow* window(const std::string& title) {
        for (QMdiSubWindow* window : windows()) {
            if (window->windowTitle().toStdString() == title) {
                return window;
            }
        }
        return nullptr;
    }
};

// Runs the program's loop until `done` holds; false when it does not within some seconds.
inline bool runUntil(const Condition& done) {
    const Moment deadline = CLOCK_After(5000);
    while (!done()) {
        if (CLOCK_Now() > deadline) {
            return false;
        }
        EVENTS_WaitOne();
    }
    return true;
}
