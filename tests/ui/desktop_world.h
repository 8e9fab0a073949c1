// The desktop's frame with everything below it, driven through the program's own event queue.
#pragma once

#include "device/devprops_store.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "platform/event_queue.h"
#include "serial/terminal_buffer.h"
#include "shell/command_ids.h"
#include "shell/front_end.h"
#include "shell/notifiers.h"
#include "shell/summary.h"
#include "sim/chip.h"
#include "sim/sim_port.h"
#include "support/paths.h"
#include "target/worker.h"
#include "ui/boxes.h"
#include "ui/desktop.h"
#include "ui/file_dialog.h"
#include "ui/frame.h"
#include "ui/hex_dump_area.h"
#include "ui_world.h"
#include "virtual_time.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <chrono>
#include <thread>

struct DesktopWorld : UiWorld {
    explicit DesktopWorld(const std::string& settings = "") : UiWorld(settings) {
        EVENTS_Open();
        FRONTEND_Set(DESKTOP_Create());
        SESSION_Get().frameRect[2] = 800;
        SESSION_Get().frameRect[3] = 600;
        FRONTEND_Get().start();
        FRONTEND_Get().showFrame(true);
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
    static void open(std::initializer_list<View> views) {
        for (const View view : views) {
            FRONTEND_Get().openView(view);
        }
    }
    // Answers every box, with Yes or OK but for the question whether to end, and keeps it.
    void answerBoxes() {
        NOTIFIERS_Register();
        BOX_SetResponder([this](const BoxRequest& request) {
            boxes.push_back(request.caption + ": " + request.text);
            if (request.caption == "Exit") {
                return exitAnswer;
            }
            return (request.boxType & BOX_YES_NO) == BOX_YES_NO ? ANSWER_YES : ANSWER_OK;
        });
    }

    std::string programFile() const {
        const auto path = folder / "app.hex";
        writeFile(path, ":0400000001020304F2\n:00000001FF\n");
        return path.string();
    }
    bool isEnabled(int id) {
        FRONTEND_Get().updateMenu();
        return item(id).isEnabled();
    }
    QAction& item(int id) {
        auto* action = frame().findChild<QAction*>(QString::number(id));
        if (action == nullptr) {
            throw std::runtime_error("no item " + std::to_string(id));
        }
        return *action;
    }

    HexDumpArea& dumpArea() {
        auto& note = control<QWidget>(frame(), "comparisonNote");
        return dynamic_cast<HexDumpArea&>(*note.parentWidget()->focusProxy());
    }
    static QWidget* help() {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() == "HELP") {
                return window;
            }
        }
        return nullptr;
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

    Texts boxes;
    BoxAnswer exitAnswer = ANSWER_CANCEL;
};

// The frame over a virtual chip on COM1. Every box is answered.
struct ChipWorld : VirtualTime, DesktopWorld {
    explicit ChipWorld(const ChipOptions& options = {})
        : DesktopWorld("[Settings PORTS]\nCOM1 = \"sim://desktop\"\n") {
        copyDevices(folder.path());
        DEVICE_Init();
        DEVICE_FindByName("VT-B128");
        DEVPROPS_SelectAllBlocks();
        DEVPROPS_SetResetByPC(true);
        HEXDATA_AddData(0, data);
        SUMMARY_Refresh();
        line = SIMPORT_Offer("desktop", CHIP_Create(DEVICE_Selected(), options));
        SIO_SetConfig({1, 115200, 0});
        answerBoxes();
        TARGET_Init(nullptr, TERMINAL_ReceiveByte);
        begin(&frame());
    }
    ~ChipWorld() {
        end();
        SIMPORT_Withdraw("desktop");
    }

    QDialog& progress() { return control<QDialog>(frame(), "900"); }

    const Bytes data = Bytes(20000, 0x5A);
    SimLinePtr line;
};

// Runs the program's loop until `done` holds; false when it does not within a minute, in virtual
// time within ten.
inline bool runUntil(const Condition& done) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const Moment virtualLimit = CLOCK_After(600'000);
    while (!done() && std::chrono::steady_clock::now() < limit && CLOCK_Now() < virtualLimit) {
        EVENTS_WaitOne();
    }
    return done();
}
