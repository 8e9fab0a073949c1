#include "ui/desktop.h"

#include "notice/run.h"
#include "persist/mru.h"
#include "platform/clock.h"
#include "shell/session.h"
#include "shell/shell.h"
#include "ui/boxes.h"
#include "ui/dialogs.h"
#include "ui/event_hook.h"
#include "ui/file_dialog.h"
#include "ui/frame.h"
#include "ui/help_window.h"
#include "ui/ivector_dialog.h"
#include "ui/log_view.h"
#include "ui/modal.h"
#include "ui/progress_dialog.h"
#include "ui/view_windows.h"

#include <QApplication>
#include <QClipboard>
#include <QLibrary>
#include <QPalette>
#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<QApplication> application;

// The program was told to end while a dialog runs Qt's own loop.
void endDialogsWithProgram() {
    if (SESSION_Get().quit || RUN_IsInterrupted()) {
        MODAL_EndAll();
    }
}

void start() {
    EVENTHOOK_Install(endDialogsWithProgram);
    FRAME_Create();
    PROGRESSDIALOG_Install(FRAME_Get());
    LOGVIEW_Install();
}

void stop() {
    LOGVIEW_Remove();
    PROGRESSDIALOG_Remove();
    HELP_Close();
    FRAME_Destroy();
    EVENTHOOK_Remove();
    application.reset();
}

void openView(View view) {
    if (FRAME_Get() == nullptr || SESSION_Get().quit) {
        return;
    }
    FRAME_Place(); // a view stands in an area of the right size
    VIEWS_Open(view);
}

void fillViews(FrontEnd& frontEnd) {
    frontEnd.openView = openView;
    frontEnd.closeView = VIEWS_Close;
    frontEnd.isViewOpen = VIEWS_IsOpen;
    frontEnd.refreshView = VIEWS_Refresh;
    frontEnd.showBytes = VIEWS_ShowBytes;
    frontEnd.revealData = [](const AddressRange& range) {
        openView(View::hexDump);
        VIEWS_ShowBytes(range);
    };
    frontEnd.cascade = VIEWS_Cascade;
    frontEnd.tileHorizontally = [] { VIEWS_Tile(true); };
    frontEnd.tileVertically = [] { VIEWS_Tile(false); };
    frontEnd.restoreDefaultPlacement = [] {
        VIEWS_RestoreDefault();
        IVECT_RestoreDefault();
    };
}

void fillBoxes(FrontEnd& frontEnd) {
    frontEnd.showError = BOX_ShowError;
    frontEnd.ask = BOX_Ask;
    frontEnd.chooseFile = FILEDIALOG_Choose;
    frontEnd.clipboardText = [] { return QGuiApplication::clipboard()->text().toStdString(); };
    frontEnd.setClipboard = [](const std::string& text) {
        QGuiApplication::clipboard()->setText(QString::fromStdString(text));
    };
    frontEnd.helpContents = HELP_ShowContents;
    frontEnd.helpOnHelp = HELP_ShowHelpOnHelp;
}

// Why there is no display; empty when there may be one.
std::string displayFault() {
    for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
        if (!qEnvironmentVariableIsEmpty(name)) {
            return {};
        }
    }
    return "there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set";
}

// The application object ends the process when the display cannot be reached. What it says before
// is the reason, and the program says the rest itself.
void catchFatal(QtMsgType type, const QMessageLogContext&, const QString& text) {
    static QString reason;
    if (type == QtFatalMsg) {
        SHELL_AnswerWithoutDesktop((reason.isEmpty() ? text : reason).toStdString());
        std::_Exit(RUN_GetExitCode());
    }
    reason = reason.isEmpty() ? text : reason;
}

// The toolkit ends the process from within its event loop when the display is lost. Objects that
// other threads still use must not be destroyed under them then.
void leaveWithoutDisplay() {
    if (application) {
        std::_Exit(1);
    }
}

// Some desktops' dark colours come without those of hints and disabled texts, which then are dark
// on dark.
void completeDarkColours() {
    constexpr int kHalf = 128;
    QPalette palette = QApplication::palette();
    if (palette.color(QPalette::Window).lightness() >= kHalf) {
        return;
    }
    QColor faint = palette.color(QPalette::Text);
    faint.setAlpha(kHalf);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faint);
    }
    QApplication::setPalette(palette);
}

// The toolkit reads the system's list of fonts when it measures the first text. Read here, beside
// the start of the application, it is there by then.
void readFonts() {
    if (const QFunctionPointer initialise = QLibrary::resolve("fontconfig", 1, "FcInit")) {
        initialise();
    }
}

void createApplication(char** argv) {
    static int count = 1; // the arguments behind the program's path are its own
    const ClockThreadPtr fonts = CLOCK_StartThread(readFonts);
    QtMessageHandler before = qInstallMessageHandler(catchFatal);
    application = std::make_unique<QApplication>(count, argv);
    CLOCK_JoinThread(fonts);
    qInstallMessageHandler(before);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationName("Calvorin");
    QApplication::setDesktopFileName("org.calvorin.Calvorin"); // by which a desktop finds the icon
    completeDarkColours();
    std::atexit(leaveWithoutDisplay);
}

} // namespace

FrontEnd DESKTOP_Create() {
    FrontEnd frontEnd;
    frontEnd.hasWindows = true;
    frontEnd.start = start;
    frontEnd.stop = stop;
    frontEnd.showFrame = FRAME_Show;
    frontEnd.closeFrame = FRAME_Close;
    frontEnd.setTitle = FRAME_SetTitle;
    frontEnd.updateMenu = FRAME_UpdateMenu;
    frontEnd.isDialogOpen = MODAL_IsOpen;
    fillViews(frontEnd);
    fillBoxes(frontEnd);
    DIALOGS_Fill(frontEnd);
    return frontEnd;
}

extern "C" __attribute__((visibility("default"))) bool
calvorinDesktop(int, char** argv, FrontEnd& frontEnd, std::string& error) {
    error = displayFault();
    if (!error.empty()) {
        return false;
    }
    createApplication(argv);
    frontEnd = DESKTOP_Create();
    return true;
}
