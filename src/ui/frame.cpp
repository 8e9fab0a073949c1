#include "ui/frame.h"

#include "data/hexdata.h"
#include "persist/mru.h"
#include "platform/event_queue.h"
#include "shell/cmdline.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/command_table.h"
#include "shell/identity.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell/session.h"
#include "shell/startup.h"
#include "shell/summary.h"
#include "ui/artwork.h"
#include "ui/frame_menu.h"
#include "ui/modal.h"
#include "ui/placement.h"
#include "ui/status_bar.h"
#include "ui/view_windows.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <memory>

namespace {

// The area of the view windows, with the logo where they leave it free.
class LogoArea : public QMdiArea {
public:
    using QMdiArea::QMdiArea;

protected:
    void paintEvent(QPaintEvent* event) override {
        QMdiArea::paintEvent(event);
        QPainter painter(viewport());
        ART_PaintLogo(painter, viewport()->rect(), palette());
    }
};

int commandsRunning = 0; // a command waits in a loop of its own while its operation runs
bool placed = false;
bool closeWanted = false;  // the frame was closed over an open box
bool unloadWanted = false; // the last data view was closed while the target was busy
bool checkWanted = false;  // the frame was activated while a command ran

bool mayRun(int id) {
    return !SESSION_Get().quit && !MODAL_IsOpen() &&
           (commandsRunning == 0 || COMMAND_IsHarmless(id));
}

bool isBusy() {
    return commandsRunning > 0 || SESSION_Get().targetBusy || CMDLINE_IsRunning();
}

void unload() {
    HEXDATA_Clear();
    SESSION_Get().loaded = false;
    SUMMARY_Refresh();
    FRAME_UpdateMenu();
}

// Closing the last view of the data unloads it, but never under a running operation.
void dataViewsClosed() {
    if (isBusy()) {
        unloadWanted = true;
    } else {
        unload();
    }
}

void checkChangedFile() {
    if (SESSION_Get().quit || MODAL_IsOpen()) {
        return;
    }
    checkWanted = isBusy();
    if (!checkWanted) {
        PROGRAM_CheckChanged();
    }
}

void doWhatWasPutOff() {
    if (isBusy() || SESSION_Get().quit) {
        return;
    }
    if (unloadWanted) {
        unloadWanted = false;
        if (!VIEWS_IsOpen(View::hexList) && !VIEWS_IsOpen(View::hexDump)) {
            unload();
        }
    }
    if (checkWanted) {
        EVENTS_Post(checkChangedFile);
    }
}

void run(int id) {
    if (!mayRun(id)) {
        return;
    }
    ++commandsRunning;
    MAINFRAME_Command(id);
    --commandsRunning;
    FRAME_UpdateMenu();
}

bool isProjectFile(const QString& path) {
    return path.endsWith(".tpu", Qt::CaseInsensitive);
}

QString droppedFile(const QMimeData* data) {
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile()) {
            return url.toLocalFile();
        }
    }
    return {};
}

void openDropped(const std::string& path) {
    if (isBusy() || !mayRun(CMD_FILE_OPEN)) {
        return;
    }
    ++commandsRunning;
    if (isProjectFile(QString::fromStdString(path))) {
        PROJECT_Open(path);
    } else {
        MRU_Add(MRU_PROGRAMS, path);
        PROGRAM_Open(path);
    }
    --commandsRunning;
    FRAME_UpdateMenu();
}

class MainFrame : public QMainWindow {
public:
    MainFrame() {
        setObjectName("MAINFRAME");
        setWindowTitle(QString::fromStdString(IDENTITY_Title()));
        setWindowIcon(ART_Icon(Art::program));
        setAcceptDrops(true);
        area_ = new LogoArea(this);
        area_->setObjectName("140");
        area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        setCentralWidget(area_);
        setStatusBar(STATUSBAR_Create(this));
        VIEWS_Init(area_, dataViewsClosed);
        FRAMEMENU_Build(menuBar(), area_, run, mayRun);
        addShortcuts();
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        if (SESSION_Get().quit) {
            return;
        }
        if (MODAL_IsOpen()) {
            // Whoever waits for the answer goes on first; then the frame is closed once more.
            closeWanted = true;
            MODAL_RefuseFurther();
            MODAL_EndAll();
            event->ignore();
            return;
        }
        storePlace();
        STARTUP_FrameClosed();
        VIEWS_StoreAll();
    }

    void changeEvent(QEvent* event) override {
        QMainWindow::changeEvent(event);
        if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
            EVENTS_Post(checkChangedFile);
        }
    }

    void showEvent(QShowEvent* event) override {
        QMainWindow::showEvent(event);
        EVENTS_Post([] { VIEWS_BringBack(); });
    }

    void dragEnterEvent(QDragEnterEvent* event) override {
        if (!isBusy() && mayRun(CMD_FILE_OPEN) && !droppedFile(event->mimeData()).isEmpty()) {
            event->acceptProposedAction();
        }
    }

    // Opened after the drop has ended: a question must not keep the file manager waiting.
    void dropEvent(QDropEvent* event) override {
        event->acceptProposedAction();
        EVENTS_Post([path = droppedFile(event->mimeData()).toStdString()] { openDropped(path); });
    }

private:
    void addShortcuts() {
        const auto add = [this](const char* key, const std::function<void()>& action) {
            auto* shortcut = new QShortcut(QKeySequence(key), this);
            connect(shortcut, &QShortcut::activated, this, action);
        };
        add("F1", [] { run(CMD_HELP_CONTENTS); });
        add("Ctrl+F6", [this] { area_->activateNextSubWindow(); });
        add("Ctrl+Shift+F6", [this] { area_->activatePreviousSubWindow(); });
    }

    void storePlace() const {
        if (isMaximized() || isMinimized()) {
            return;
        }
        int32_t* rect = SESSION_Get().frameRect;
        rect[0] = x(); // of the frame, while width and height are without it: so it does not creep
        rect[1] = y();
        rect[2] = x() + width();
        rect[3] = y() + height();
    }

    QMdiArea* area_ = nullptr;
};

std::unique_ptr<MainFrame> frame;

// The last box or dialog has ended.
void dialogsLeft() {
    if (closeWanted) {
        closeWanted = false;
        EVENTS_Post([] {
            if (frame) {
                frame->close();
            }
        });
    }
}

// Dialogs that come before the main loop has shown the frame stand over it, not alone.
void dialogOpens() {
    if (!CMDLINE_IsRunning()) {
        FRAME_Show(true);
    }
}

QRect screenFor(const QRect& wanted) {
    const QScreen* screen = QGuiApplication::screenAt(wanted.center());
    screen = screen != nullptr ? screen : QGuiApplication::primaryScreen();
    return screen->availableGeometry();
}

} // namespace

void FRAME_Create() {
    commandsRunning = 0;
    placed = false;
    closeWanted = false;
    unloadWanted = false;
    checkWanted = false;
    frame = std::make_unique<MainFrame>();
    MODAL_Init(frame.get(), dialogOpens, dialogsLeft);
    FRAMEMENU_Update();
}

void FRAME_Destroy() {
    MODAL_Init(nullptr, {}, {});
    STATUSBAR_Detach();
    FRAMEMENU_Exit();
    VIEWS_Exit();
    frame.reset();
}

QMainWindow* FRAME_Get() {
    return frame.get();
}

void FRAME_Place() {
    if (placed) {
        return;
    }
    placed = true;
    const int32_t* rect = SESSION_Get().frameRect;
    const QRect wanted(rect[0], rect[1], std::max(rect[2] - rect[0], 1),
                       std::max(rect[3] - rect[1], 1));
    const QRect screen = screenFor(wanted);
    const QRect back = PLACEMENT_BroughtBack(
        QRect(wanted.topLeft(), wanted.size().boundedTo(screen.size())), screen);
    frame->move(back.topLeft());
    frame->resize(back.size());
}

void FRAME_Show(bool visible) {
    if (frame->isVisible() == visible || SESSION_Get().quit) {
        return;
    }
    FRAME_Place();
    frame->setVisible(visible);
}

void FRAME_SetTitle(const std::string& title) {
    frame->setWindowTitle(QString::fromStdString(title));
}

void FRAME_UpdateMenu() {
    if (frame) {
        FRAMEMENU_Update();
        doWhatWasPutOff();
    }
}
