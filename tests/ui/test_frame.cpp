#include "desktop_world.h"
#include "notice/status.h"
#include "persist/mru.h"
#include "shell/frame_rules.h"
#include "shell/identity.h"
#include "shell/program_files.h"
#include "shell/quick_choice.h"
#include "shell/recent_choices.h"
#include "shell/startup.h"
#include "ui/status_bar.h"

#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QRegularExpression>
#include <QShortcut>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeWidget>
#include <map>
#include <set>

namespace {

[[maybe_unused]] auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment); // which owns it

} // namespace

TEST(Menu, ChecksOpenViewsAndListsThem) {
    DesktopWorld world;
    const QPixmap logo = world.frame().findChild<QMdiArea*>()->viewport()->grab();
    EXPECT_GT(pixelsOf(logo, QColor(28, 62, 108)), 5000) << "its chip";
    MRU_Init(MRU_PROGRAMS, 4);
    MRU_Add(MRU_PROGRAMS, "/a&b.hex");
    auto& file = control<QMenu>(world.frame(), "&File");
    const auto before = file.actions().size();
    for (int time = 0; time < 2; ++time) {
        emit file.aboutToShow();
        EXPECT_EQ(file.actions().size(), before + 1) << "the recent file";
    }
    world.item(CMD_VIEW_LOG).trigger();
    world.item(CMD_VIEW_TERMINAL).trigger();
    world.item(CMD_VIEW_TERMINAL).trigger(); // open already
    EXPECT_EQ(world.windows().size(), 2U);
    EXPECT_EQ(world.frame().windowTitle().toStdString(), IDENTITY_Title());
    EXPECT_TRUE(world.item(CMD_VIEW_LOG).isChecked());
    EXPECT_FALSE(world.item(CMD_VIEW_DEVICE).isChecked());

    auto& menu = control<QMenu>(world.frame(), "&Window");
    for (int time = 0; time < 2; ++time) {
        emit menu.aboutToShow();
    }
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        texts << action->text() + (action->isChecked() ? "*" : "");
    }
    EXPECT_EQ(texts.count("&1 Log"), 1);
    EXPECT_TRUE(texts.contains("&2 Terminal I/O*"));
    EXPECT_TRUE(texts.contains("&Tool Bar*")) << texts.join(", ").toStdString();
    world.window("Log")->showMinimized();
    trigger(menu, "&1 Log");
    EXPECT_FALSE(world.window("Log")->isMinimized());

    world.window("Log")->showMinimized();
    FRONTEND_Get().openView(View::log);
    EXPECT_FALSE(world.window("Log")->isMinimized());
    world.window("Log")->close();
    FRONTEND_Get().updateMenu();
    EXPECT_FALSE(world.item(CMD_VIEW_LOG).isChecked());
    const auto entries = menu.actions().size();
    world.window("Terminal I/O")->close();
    QApplication::processEvents();
    emit menu.aboutToShow();
    EXPECT_EQ(menu.actions().size(), entries - 3) << "the entries of two windows and their line";
}

// A command's letters in its popup are given, and some stand twice there.
TEST(Menu, GivesEveryKeyToOneCommandAndAllHasAName) {
    DesktopWorld world;
    DesktopWorld::open(
        {View::log, View::device, View::terminal, View::hexDump, View::hexList, View::memoryMap});
    std::map<QKeySequence, QString> used; // views may share theirs: one has the focus
    const auto take = [&used](const QKeySequence& key, const QString& text) {
        EXPECT_TRUE(key.isEmpty() || used.emplace(key, text).first->second == text)
            << key.toString().toStdString();
    };
    for (const QAction* popup : world.frame().menuBar()->actions()) {
        take(QKeySequence::mnemonic(popup->text()), popup->text());
    }
    for (const QWidget* widget : world.frame().findChildren<QWidget*>()) { // the find bar's
        take(QKeySequence::mnemonic(widget->property("text").toString()), widget->objectName());
    }
    std::set<std::string> inFront; // one after the other, by key
    for (QShortcut* shortcut : world.frame().findChildren<QShortcut*>()) {
        take(shortcut->key(), QString::number(used.size()));
        if (shortcut->key() == QKeySequence("F1")) {
            emit shortcut->activated();
            EXPECT_NE(DesktopWorld::help(), nullptr);
        }
        if (shortcut->key().toString().endsWith("F6")) {
            emit shortcut->activated();
            auto* front = control<QMdiArea>(world.frame(), "140").activeSubWindow();
            inFront.insert(front->windowTitle().toStdString());
        }
    }
    EXPECT_EQ(inFront, (std::set<std::string>{"Log", "Memory Map"})) << "forth and back";
    for (const QAction* action : world.frame().findChildren<QAction*>()) {
        take(action->shortcut(), action->text());
    }
    EXPECT_GE(used.size(), 20U);
    expectNamed(world.frame());
}

// With the menu while a command runs; its rules are tested where they are written.
TEST(Target, AutoShowsItsProgressAndCanBeCancelledInTheMiddle) {
    ChipOptions slow;
    slow.programUs = 5000;
    ChipWorld world(slow);
    std::set<std::string> percents;
    QString details; // the longest
    bool cancels = true;
    world.watch = [&] {
        const QDialog& dialog = world.progress();
        if (!dialog.isVisible() || dialog.windowTitle() != "Programming" ||
            !control<QLabel>(dialog, "902").text().endsWith(" of 20000 bytes")) {
            return;
        }
        percents.insert(control<QWidget>(dialog, "904").accessibleName().toStdString());
        EXPECT_TRUE(control<QLabel>(dialog, "901").text().startsWith("Programming"));
        const QString now = control<QLabel>(dialog, "details").text();
        details = now.size() > details.size() ? now : details;
        EXPECT_TRUE(control<QLabel>(dialog, "903").text().startsWith("Elapsed time: "));
        for (const auto& [id, enabled] : {std::pair(CMD_FILE_OPEN, false),
                                          {CMD_EXIT, false},
                                          {CMD_TARGET_VERIFY, false},
                                          {CMD_VIEW_INTERRUPT_VECTORS, true},
                                          {CMD_VIEW_LOG, true}}) {
            EXPECT_EQ(world.isEnabled(id), enabled) << id;
        }
        if (cancels) {
            click(dialog, "2");
        } else if (percents.size() == 5) {
            world.frame().close(); // which the user thinks better of
        }
    };
    const auto flash = [&world] {
        Bytes bytes;
        SIMPORT_WithChip(world.line, [&](Chip& chip) { bytes = CHIP_GetFlash(chip, 0, 20000); });
        return bytes;
    };
    EXPECT_TRUE(world.isEnabled(CMD_TARGET_AUTO));
    world.item(CMD_TARGET_AUTO).trigger();
    const Texts asked = {"Reset Vector: Reset vector does not point into flash memory!\nContinue?",
                         "Password Warning: File does not contain all password bytes!\nContinue?"};
    EXPECT_EQ(world.boxes, (Texts{asked[0], asked[1], "Error: Action canceled"}));
    EXPECT_FALSE(world.progress().isVisible());
    EXPECT_EQ(STATUS_GetText(STATUS_GENERAL), "Failed: Auto: Action canceled");
    EXPECT_EQ(flash()[0], 0x5A);
    EXPECT_EQ(flash()[19999], 0xFF);
    cancels = false;
    percents.clear();
    world.boxes.clear();
    EXPECT_TRUE(world.isEnabled(CMD_TARGET_AUTO));
    world.item(CMD_TARGET_AUTO).trigger();
    std::erase(world.boxes, "Exit: The chip is being changed and would be left half done.\n"
                            "End all the same?");
    EXPECT_EQ(world.boxes,
              (Texts{asked[0], asked[1], "Programming: All bytes\nwritten successfully"}));
    EXPECT_EQ(flash(), world.data);
    EXPECT_FALSE(SESSION_Get().quit);
    EXPECT_GT(percents.size(), 3U);
    EXPECT_TRUE(QRegularExpression(R"(^block [01] of \d+, [\d.]+ kB/s, 0:\d\d left$)")
                    .match(details)
                    .hasMatch())
        << details.toStdString();
    EXPECT_TRUE(STATUS_GetText(STATUS_GENERAL).starts_with("Passed: Auto, "));
}

TEST(Target, ProgramsWhenTheFileChangesAndTellsFailuresInTheBar) {
    ChipWorld world;
    EXPECT_FALSE(world.isEnabled(CMD_TARGET_PROGRAM_ON_CHANGE)) << "the image is of no file";
    const std::string path = world.programFile();
    PROGRAM_Open(path);
    EXPECT_FALSE(world.item(CMD_TARGET_PROGRAM_ON_CHANGE).isChecked());
    FRAMERULES_Run(CMD_TARGET_PROGRAM_ON_CHANGE);
    EXPECT_TRUE(world.item(CMD_TARGET_PROGRAM_ON_CHANGE).isChecked());
    const auto& notice = control<QFrame>(world.frame(), "notice");
    writeFile(path, ":0400000001020304F3\n:00000001FF\n");
    ASSERT_TRUE(runUntil([&notice] { return notice.isVisible(); }));
    EXPECT_TRUE(control<QLabel>(notice, "noticeText").text().contains("CheckSum error"));
    writeFile(path, ":0400000009020304EA\n:00000001FF\n");
    click(notice, "Try again");
    ASSERT_TRUE(runUntil([&] {
        return STATUS_GetText(STATUS_GENERAL).find("passed at ") != std::string::npos &&
               notice.isHidden();
    }));
    EXPECT_NE(world.window("Terminal I/O"), nullptr);
    EXPECT_EQ(world.boxes, Texts());
}

TEST(ToolBar, ChoosesRunsAndTellsOfTheLink) {
    ChipOptions slow;
    slow.faults = {{FaultKind::slow, ChipStep::blankCheck, 0, 0, 400}};
    ChipWorld world(slow);
    const auto& link = control<QLabel>(world.frame(), "link");
    const auto& cancel = control<QAction>(world.frame(), "toolCancel");
    const auto tells = [&link](const char* text) {
        return runUntil([&link, text] { return link.text() == text; });
    };
    EXPECT_TRUE(tells("Port open"));
    EXPECT_FALSE(world.frame().windowIcon().isNull());
    EXPECT_FALSE(cancel.isEnabled());
    auto& bar = control<QToolBar>(world.frame(), "toolBar");
    world.frame().resize(800, 600);
    EXPECT_LE(bar.sizeHint().width(), 800);
    EXPECT_EQ(control<QComboBox>(world.frame(), "Port").currentText(), "COM1: sim://desktop");
    std::set<std::string> seen;
    bool wasFree = false;
    world.watch = [&] {
        wasFree = wasFree || (cancel.isEnabled() && control<QComboBox>(bar, "Device").isEnabled());
        seen.insert(link.text().toStdString() + (cancel.isEnabled() ? ", Cancel" : ""));
    };
    world.item(CMD_TARGET_BLANK_CHECK_CHIP).trigger();
    EXPECT_TRUE(seen.contains("Busy, Cancel"));
    EXPECT_FALSE(wasFree) << "the choices, while it ran";
    EXPECT_TRUE(tells("Loader running"));
    const auto& notice = control<QWidget>(world.frame(), "notice");
    EXPECT_FALSE(notice.isVisible());
    SIMPORT_Unplug(world.line);
    EXPECT_TRUE(tells("Port lost"));
    EXPECT_TRUE(notice.isVisible());
    EXPECT_EQ(textOf(notice, "noticeHint").empty(),
              !control<QLabel>(notice, "noticeHint").isVisible());
    EXPECT_TRUE(control<QLabel>(notice, "noticeText")
                    .text()
                    .startsWith("The port is lost: COM1 is sim://desktop"));
    world.boxes.clear();
    click(notice, "Try again");
    EXPECT_TRUE(tells("No port"));
    EXPECT_TRUE(control<QLabel>(notice, "noticeText")
                    .text()
                    .startsWith("The port is not available: COM1 "));
    EXPECT_EQ(world.boxes, Texts{}) << "nobody asked for the port";
    SIMPORT_Plug(world.line);
    click(notice, "Try again");
    EXPECT_TRUE(tells("Port open"));
    EXPECT_FALSE(notice.isVisible());

    auto& device = control<QComboBox>(world.frame(), "Device");
    device.setCurrentIndex(device.findText("VT-B64S"));
    emit device.activated(device.currentIndex());
    EXPECT_EQ(DEVICE_GetName(), "VT-B64S");
    EXPECT_TRUE(runUntil([&device] { return device.itemText(0) == "VT-B64S"; }));
    RECENTCHOICES_Reset(); // as at the next start
    EXPECT_EQ(CHOICE_Devices().front(), "VT-B64S");
    EXPECT_TRUE(control<QAction>(world.frame(), "tool273").isEnabled());
    HEXDATA_Clear();
    FRONTEND_Get().updateMenu();
    EXPECT_FALSE(control<QAction>(world.frame(), "tool273").isEnabled()) << "nothing to program";
    SIO_SetConfig({0, 9600, 0});
    EXPECT_TRUE(tells("No port"));
}

TEST(StatusBar, FollowsTheTextsAndNamesTheDevice) {
    DesktopWorld world("[Settings PORTS]\nCOM3 = \"/no/such/device\"\n");
    world.frame().resize(800, 600);
    std::thread([] {
        STATUS_SetText("MCU: a device with quite a long name", STATUS_DEVICE);
    }).join();
    auto& label = control<QLabel>(world.frame(), "500.3");
    EXPECT_TRUE(runUntil([&label] { return label.text().startsWith("MCU: a device"); }));
    EXPECT_GE(label.width(), label.sizeHint().width()) << "the text is cut";
    EXPECT_EQ(control<QLabel>(world.frame(), "500.4").geometry().right() + 2, 780);
    STATUS_SetText("00000010  block 2  " + std::string(40, 'W'), STATUS_GENERAL);
    auto& general = control<QLabel>(world.frame(), "500.0");
    EXPECT_TRUE(runUntil([&general] { return general.text() == "00000010  block 2"; }));
    SIO_SetPort(3);
    EXPECT_EQ(STATUSBAR_PortText(), "COM3 is /no/such/device (not present)");
}

TEST(Frame, AsksOnceAboutAChangedFileWhenActivated) {
    DesktopWorld world;
    const std::string path = world.programFile();
    PROGRAM_Open(path);
    const auto activate = [&world] {
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(&world.frame());
        bool passed = false;
        EVENTS_Post([&passed] { passed = true; }); // behind what the activation has posted
        return runUntil([&passed] { return passed; });
    };
    SESSION_Get().image.time = 1;
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(activate());
        EXPECT_EQ(world.reports, Texts{"Reload request: File has changed. Reload?"});
    }
}

TEST(Help, ShowsTheDocumentWithItsContents) {
    DesktopWorld world;
    writeFile(world.folder / "Calvorin.hlp", readFile(builtFolder() / "Calvorin.hlp"));
    FRONTEND_Get().helpOnHelp();
    const QPointer<QWidget> help = DesktopWorld::help();
    ASSERT_TRUE(help && help->isVisible());
    auto& contents = control<QTreeWidget>(*help, "HelpContents");
    EXPECT_EQ(contents.currentItem()->text(0), "How to use this help");
    EXPECT_NE(contents.currentItem()->parent(), nullptr);
    const auto& page = control<QTextBrowser>(*help, "HelpPage");
    const QString text = page.toPlainText();
    for (QTreeWidgetItemIterator item(&contents); *item != nullptr; ++item) {
        contents.setCurrentItem(*item);
        EXPECT_EQ(page.textCursor().block().text(), (*item)->text(0));
        EXPECT_EQ(page.textCursor().block().blockFormat().headingLevel() > 1,
                  (*item)->parent() != nullptr);
    }
    auto& find = *help->findChild<QLineEdit*>();
    find.setText("boot ROM");
    std::set<int> places; // of the matches, until it begins again
    do {
        emit find.returnPressed();
        EXPECT_EQ(page.textCursor().selectedText().toLower(), "boot rom");
    } while (places.insert(page.textCursor().position()).second);
    EXPECT_EQ(static_cast<qsizetype>(places.size()), text.count("boot ROM", Qt::CaseInsensitive));
    for (const QAction* action : world.frame().findChildren<QAction*>()) {
        const QString name = action->text().section('\t', 0, 0).remove('&').remove("...").trimmed();
        if (action->data().toInt() != 0) {
            EXPECT_TRUE(text.contains(name)) << name.toStdString() << " is not explained";
        }
    }
    FRONTEND_Get().stop();
    EXPECT_TRUE(help.isNull());
}

TEST(Frame, OpensWhatIsDroppedOnIt) {
    DesktopWorld world;
    const auto drop = [&world](const std::string& path) {
        QMimeData data;
        data.setUrls({QUrl("https://example.org/app.hex"), QUrl::fromLocalFile(path.c_str())});
        QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&world.frame(), &enter);
        QDropEvent event({}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&world.frame(), &event);
    };
    const auto project = (world.folder / "a.TPU").string();
    writeFile(project, "Baudrate = 2400\n");
    drop(world.programFile());
    EXPECT_TRUE(runUntil([] { return SESSION_Get().loaded; }));
    drop(project);
    EXPECT_TRUE(runUntil([] { return SIO_GetBaudrate() == 2400; }));
}

extern "C" bool calvorinDesktop(int count, char** words, FrontEnd& frontEnd, std::string& error);

TEST(Start, TellsThatThereIsNoDisplay) {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
        qunsetenv(name);
    }
    FrontEnd frontEnd;
    std::string error;
    EXPECT_FALSE(calvorinDesktop(0, nullptr, frontEnd, error));
    EXPECT_EQ(error, "there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
    qputenv("QT_QPA_PLATFORM", platform);
}

TEST(Start, AsksForTheSettingsOverTheFrame) {
    UiWorld world("[Settings PORTS]\nCOM1 = \"/no/port\"\n"
                  "[Settings MAINFRAME]\nRect = 9000, 9000, 9600, 9500\n");
    copyDevices(world.folder.path());
    EVENTS_Open();
    FRONTEND_Set(DESKTOP_Create());
    BOX_SetResponder([](const BoxRequest&) { return ANSWER_OK; });
    const auto start = [] { return STARTUP_Run({}) ? kDialogOk : kDialogCancel; };
    EXPECT_EQ(driveDialog(start,
                          [](const QDialog& dialog) { // which is cancelled
                              EXPECT_EQ(dialog.objectName(), "600");
                              const QRect frame = FRAME_Get()->frameGeometry();
                              EXPECT_TRUE(FRAME_Get()->isVisible());
                              EXPECT_TRUE(dialog.screen()->geometry().contains(frame.center()));
                              EXPECT_EQ(dialog.parentWidget(), FRAME_Get());
                              const QPoint away = dialog.geometry().center() - frame.center();
                              EXPECT_LT(away.manhattanLength(), 8) << "over its middle";
                              EXPECT_TRUE(DEVPROPS_IsBlockSelected(0));
                          }),
              kDialogOk);
    EXPECT_TRUE((SIO_GetConfig() == SioConfig{1, 38400, 0}));
    STARTUP_Close();
    BOX_SetResponder({});
    FRONTEND_Set({});
}
