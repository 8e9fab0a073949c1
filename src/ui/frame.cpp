#include "ui/frame.h"

#include "platform/event_queue.h"
#include "shell/cmdline.h"
#include "shell/command_ids.h"
#include "shell/frame_rules.h"
#include "shell/identity.h"
#include "shell/port_notice.h"
#include "shell/program_on_change.h"
#include "shell/session.h"
#include "shell/startup.h"
#include "shell/terminal_log.h"
#include "ui/artwork.h"
#include "ui/frame_menu.h"
#include "ui/modal.h"
#include "ui/notice_bar.h"
#include "ui/placement.h"
#include "ui/status_bar.h"
#include "ui/tool_bar.h"
#include "ui/view_windows.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMimeData>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <memory>

namespace {

// The area of the view windows, with the logo where they leave it free.
class LogoArea : public QMdiArea {
public:
    using QMdiArea::QMdiArea;

protected:
    void resizeEvent(QResizeEvent* event) override {
        QMdiArea::resizeEvent(event);
        VIEWS_FollowArea();
    }

    void paintEvent(QPaintEvent* event) override {
        QMdiArea::paintEvent(event);
        QPainter painter(viewport());
        ART_PaintLogo(painter, viewport()->rect(), palette());
    }
};

constexpr QSize kUsualSize(800, 600); // which the settings start with

constexpr int kGlanceMs = 250;

bool placed = false;
bool closeWanted = false; // the frame was closed over an open box

QString droppedFile(const QMimeData* data) {
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile()) {
            return url.toLocalFile();
        }
    }
    return {};
}

class MainFrame : public QMainWindow {
public:
    MainFrame() {
        setObjectName("MAINFRAME");
        setWindowTitle(QString::fromStdString(IDENTITY_Title()));
        setAcceptDrops(true);
        area_ = new LogoArea(this);
        area_->setObjectName("140");
        area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        addArea();
        setStatusBar(STATUSBAR_Create(this));
        VIEWS_Init(area_, FRAMERULES_DataViewsClosed);
        FRAMEMENU_Build(menuBar(), area_, FRAMERULES_Run, FRAMERULES_MayRun);
        addToolBar();
        addShortcuts();
        connect(&glance_, &QTimer::timeout, this, [this] {
            showIcon();
            PORTNOTICE_Watch();
            TERMLOG_Write();
            ONCHANGE_Glance();
            NOTICEBAR_Refresh();
            TOOLBAR_Refresh();
            STATUSBAR_ShowLink();
        });
        glance_.start(kGlanceMs);
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
        if (!FRAMERULES_MayClose()) {
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
            EVENTS_Post(FRAMERULES_Activated);
        }
    }

    void showEvent(QShowEvent* event) override {
        QMainWindow::showEvent(event);
        EVENTS_Post([] {
            VIEWS_FollowArea();
            VIEWS_BringBack();
        });
    }

    void dragEnterEvent(QDragEnterEvent* event) override {
        if (FRAMERULES_IsFree() && !droppedFile(event->mimeData()).isEmpty()) {
            event->acceptProposedAction();
        }
    }

    // Opened after the drop has ended: a question must not keep the file manager waiting.
    void dropEvent(QDropEvent* event) override {
        event->acceptProposedAction();
        EVENTS_Post(
            [path = droppedFile(event->mimeData()).toStdString()] { FRAMERULES_OpenFile(path); });
    }

private:
    // Drawing it in all sizes takes a tenth of the start, so the first picture does not wait for
    // it.
    void showIcon() {
        if (windowIcon().isNull()) {
            setWindowIcon(ART_Icon(Art::program));
        }
    }

    void addArea() {
        auto* centre = new QWidget(this);
        auto* layout = new QVBoxLayout(centre);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(NOTICEBAR_Create(centre));
        layout->addWidget(area_, 1);
        setCentralWidget(centre);
    }

    void addToolBar() {
        QToolBar* bar = TOOLBAR_Create(this);
        QMainWindow::addToolBar(bar);
        bar->setVisible(SESSION_Get().showToolBar != 0);
        FRAMEMENU_AddToggle(bar->toggleViewAction());
        connect(bar->toggleViewAction(), &QAction::triggered,
                [](bool shown) { SESSION_Get().showToolBar = shown ? 1 : 0; });
    }

    void addShortcuts() {
        const auto add = [this](const char* key, const std::function<void()>& action) {
            auto* shortcut = new QShortcut(QKeySequence(key), this);
            connect(shortcut, &QShortcut::activated, this, action);
        };
        add("F1", [] { FRAMERULES_Run(CMD_HELP_CONTENTS); });
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
    QTimer glance_{this}; // of the eye, at what tool bar and status bar tell of the state
};

std::unique_ptr<MainFrame> frame;

// The last box or dialog has ended.
void dialogsLeft() {
    if (closeWanted) {
        closeWanted = false;
        EVENTS_Post([] {
            if (frame) {
                MODAL_AcceptAgain(); // the frame may ask before it closes
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

// Two thirds of the screen, in its middle, but no less than the usual size.
QRect firstPlace(const QRect& screen) {
    const QSize size = (screen.size() * 2 / 3).expandedTo(kUsualSize).boundedTo(screen.size());
    return {screen.center() - QPoint(size.width() / 2, size.height() / 2), size};
}

QRect screenFor(const QRect& wanted) {
    const QScreen* screen = QGuiApplication::screenAt(wanted.center());
    screen = screen != nullptr ? screen : QGuiApplication::primaryScreen();
    return screen->availableGeometry();
}

} // namespace

void FRAME_Create() {
    FRAMERULES_Reset();
    ONCHANGE_Reset();
    placed = false;
    closeWanted = false;
    frame = std::make_unique<MainFrame>();
    MODAL_Init(frame.get(), dialogOpens, dialogsLeft);
    FRAMEMENU_Update();
}

void FRAME_Destroy() {
    MODAL_Init(nullptr, {}, {});
    STATUSBAR_Detach();
    TOOLBAR_Detach();
    NOTICEBAR_Detach();
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
    const QRect back =
        wanted == QRect(QPoint(), kUsualSize) // never placed
            ? firstPlace(screen)
            : PLACEMENT_BroughtBack(QRect(wanted.topLeft(), wanted.size().boundedTo(screen.size())),
                                    screen);
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

bool FRAME_Close() {
    return !frame->isVisible() || frame->close();
}

void FRAME_SetTitle(const std::string& title) {
    if (frame) {
        frame->setWindowTitle(QString::fromStdString(title));
        VIEWS_RefreshTitles();
    }
}

void FRAME_UpdateMenu() {
    if (frame) {
        FRAMEMENU_Update();
        FRAMERULES_CatchUp();
    }
}
