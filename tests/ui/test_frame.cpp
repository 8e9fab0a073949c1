#include "desktop_world.h"
#include "device/devprops_store.h"
#include "notice/status.h"
#include "serial/terminal_buffer.h"
#include "shell/command_ids.h"
#include "shell/notifiers.h"
#include "shell/program_files.h"
#include "sim/chip.h"
#include "sim/sim_port.h"
#include "support/test_line.h"
#include "ui/placement.h"
#include "ui/status_bar.h"
#include "ui/terminal_keys.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTextBrowser>
#include <QTreeWidget>

namespace {

const std::string kProgram = ":0400000001020304F2\n:00000001FF\n";

std::string programFile(const UiWorld& world) {
    const auto path = world.folder / "app.hex";
    writeFile(path, kProgram);
    return path.string();
}

bool isEnabled(DesktopWorld& world, int id) {
    FRONTEND_Get().updateMenu();
    return world.item(id).isEnabled();
}

[[maybe_unused]] auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new ApplicationEnvironment); // which owns it

// The rules themselves are tested where they are written.
TEST(Menu, FollowsTheState) {
    DesktopWorld world;
    EXPECT_FALSE(isEnabled(world, CMD_FILE_SAVE_AS));
    HEXDATA_AddData(0, std::vector<uint8_t>{1});
    EXPECT_TRUE(isEnabled(world, CMD_FILE_SAVE_AS));
    EXPECT_TRUE(isEnabled(world, CMD_TARGET_VERIFY));
    SESSION_Get().targetBusy = true;
    EXPECT_FALSE(isEnabled(world, CMD_TARGET_VERIFY));
}

TEST(Menu, ChecksOpenViewsAndListsThem) {
    DesktopWorld world;
    world.item(CMD_VIEW_LOG).trigger();
    world.item(CMD_VIEW_TERMINAL).trigger();
    world.item(CMD_VIEW_TERMINAL).trigger(); // open already
    EXPECT_EQ(world.windows().size(), 2U);
    EXPECT_TRUE(world.item(CMD_VIEW_LOG).isChecked());
    EXPECT_FALSE(world.item(CMD_VIEW_DEVICE).isChecked());

    auto& menu = control<QMenu>(world.frame(), "&Window");
    emit menu.aboutToShow();
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        texts << action->text() + (action->isChecked() ? "*" : "");
    }
    EXPECT_TRUE(texts.contains("&1 Log"));
    EXPECT_TRUE(texts.contains("&2 Terminal I/O*"));

    world.window("Log")->close();
    FRONTEND_Get().updateMenu();
    EXPECT_FALSE(world.item(CMD_VIEW_LOG).isChecked());
}

TEST(Placement, ComesBackIntoTheArea) {
    const QRect area(0, 0, 800, 500);
    const struct {
        QRect wanted, expected;
    } cases[] = {
        {{-50, 0, 100, 100}, {-50, 0, 100, 100}}, // enough to be dragged
        {{-70, 0, 100, 100}, {0, 0, 100, 100}},   // too little
        {{10, -5, 100, 100}, {10, 0, 100, 100}},  // no title bar
        {{900, 700, 100, 100}, {700, 400, 100, 100}}, {{900, 700, 2000, 90}, {0, 410, 800, 90}},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(PLACEMENT_BroughtBack(one.wanted, area), one.expected);
    }
}

TEST(Placement, TilesFillTheArea) {
    for (int count = 1; count <= 9; ++count) {
        for (const bool wide : {false, true}) {
            const QSize size(801, 503);
            const std::vector<QRect> tiles = PLACEMENT_Tiles(count, size, wide);
            ASSERT_EQ(tiles.size(), static_cast<size_t>(count));
            int area = 0;
            QRegion covered;
            for (const QRect& tile : tiles) {
                area += tile.width() * tile.height();
                covered += tile;
            }
            EXPECT_EQ(area, size.width() * size.height());
            EXPECT_EQ(covered, QRegion(QRect(QPoint(), size)));
        }
    }
    EXPECT_EQ(PLACEMENT_Tiles(2, {100, 80}, true)[1], QRect(0, 40, 100, 40));
    EXPECT_EQ(PLACEMENT_Tiles(2, {100, 80}, false)[1], QRect(50, 0, 50, 80));
}

TEST(Placement, IsKeptAndRestored) {
    DesktopWorld world("[Settings TERMINAL]\nRect = 5000,5000,300,100\n");
    world.show();
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry(), QRect(450, 420, 342, 114));
    world.window("Log")->setGeometry(20, 30, 400, 200);
    world.window("Log")->close();
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry(), QRect(20, 30, 400, 200));

    world.window("Log")->showMaximized();
    FRONTEND_Get().closeView(View::log);
    FRONTEND_Get().openView(View::log);
    EXPECT_EQ(world.window("Log")->geometry(), QRect(20, 30, 400, 200));

    FRONTEND_Get().openView(View::terminal);
    const QRect area = world.frame().findChild<QMdiArea*>()->viewport()->rect();
    EXPECT_TRUE(area.contains(world.window("Terminal I/O")->geometry()));

    world.item(CMD_WINDOW_RESTORE_DEFAULT).trigger();
    EXPECT_EQ(world.window("Log")->geometry(), QRect(450, 420, 342, 114));
    EXPECT_EQ(world.window("Terminal I/O")->geometry(), QRect(0, 420, 449, 114));
    EXPECT_EQ(readFile(world.folder / "tool.ini").find("Rect"), std::string::npos);
}

TEST(DataViews, UnloadWhenTheLastIsClosedByTheUser) {
    DesktopWorld world;
    const std::string path = programFile(world);
    SESSION_Get().showHexListView = 1;
    PROGRAM_Open(path);
    ASSERT_EQ(world.windows().size(), 2U);
    world.windows()[0]->close();
    EXPECT_FALSE(HEXDATA_IsEmpty());

    // Opening again closes and reopens the list; nothing is lost on the way.
    PROGRAM_Open(path);
    world.window(path)->close();
    PROGRAM_Open(path);
    EXPECT_FALSE(HEXDATA_IsEmpty());

    SESSION_Get().targetBusy = true;
    while (!world.windows().empty()) {
        world.windows()[0]->close();
    }
    EXPECT_FALSE(HEXDATA_IsEmpty()) << "unloaded under a running operation";
    SESSION_Get().targetBusy = false;
    FRONTEND_Get().updateMenu();
    EXPECT_TRUE(HEXDATA_IsEmpty());
    EXPECT_FALSE(SESSION_Get().loaded);
}

TEST(Boxes, AnswerEitherThread) {
    DesktopWorld world;
    NOTIFIERS_Register();
    std::vector<std::string> asked;
    const std::thread::id here = std::this_thread::get_id();
    BOX_SetResponder([&](const BoxRequest& request) -> std::optional<int> {
        EXPECT_EQ(std::this_thread::get_id(), here);
        asked.push_back(request.caption + ": " + request.text);
        return request.boxType == BOX_YES_NO ? ANSWER_YES : ANSWER_OK;
    });
    EXPECT_EQ(ERROR_Ask(nullptr, "Here?", "A", BOX_YES_NO), ANSWER_YES);
    std::atomic<int> answer{-1};
    std::thread worker([&answer] {
        ERROR_Out(nullptr, "There", 1);
        answer = ERROR_Ask(nullptr, "There?", "B", BOX_YES_NO);
    });
    EXPECT_TRUE(runUntil([&answer] { return answer != -1; }));
    worker.join();
    EXPECT_EQ(answer, ANSWER_YES);
    EXPECT_EQ(asked, (std::vector<std::string>{"A: Here?", "Error: There", "B: There?"}));
}

TEST(Boxes, HaveTheButtonsAndDefaultsOfTheirType) {
    DesktopWorld world;
    const struct {
        unsigned type;
        const char* defaultButton;
        int accepted, escaped;
    } cases[] = {{BOX_OK, "OK", ANSWER_OK, ANSWER_OK},
                 {BOX_OK_CANCEL, "OK", ANSWER_OK, ANSWER_CANCEL},
                 {BOX_YES_NO, "Yes", ANSWER_YES, ANSWER_NO},
                 {BOX_YES_NO | BOX_DEFAULT_SECOND, "No", ANSWER_NO, ANSWER_NO}};
    for (const auto& one : cases) {
        int answer = 0;
        const auto ask = [&] {
            answer = BOX_Ask(nullptr, "Text", "Caption", one.type);
            return 0;
        };
        driveDialog(ask, [&](QDialog& dialog) {
            auto& box = dynamic_cast<QMessageBox&>(dialog);
            EXPECT_EQ(box.defaultButton()->text().remove('&'), one.defaultButton);
            box.defaultButton()->click();
        });
        EXPECT_EQ(answer, one.accepted);
        driveDialog(ask, [](QDialog& dialog) { pressKey(dialog, Qt::Key_Escape); });
        EXPECT_EQ(answer, one.escaped);
    }
}

TEST(Closing, ReleasesAWorkerThatWaitsForAnAnswer) {
    DesktopWorld world;
    world.show();
    std::atomic<int> answer{-1};
    std::thread worker([&answer] { answer = BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO); });
    QTimer::singleShot(100, [&world] {
        EXPECT_NE(QApplication::activeModalWidget(), nullptr);
        world.frame().close();
    });
    EXPECT_TRUE(runUntil([] { return SESSION_Get().quit; }));
    worker.join();
    EXPECT_EQ(answer, ANSWER_NONE);
    EXPECT_FALSE(world.frame().isVisible());
    EXPECT_EQ(BOX_Ask(nullptr, "Afterwards", "", BOX_OK), ANSWER_NONE);
}

TEST(Closing, EndsDialogsWhenTheProgramIsToldToEnd) {
    DesktopWorld world;
    QTimer::singleShot(50, [] { EVENTS_Post([] { SESSION_Get().quit = true; }); });
    EXPECT_EQ(BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO), ANSWER_NONE);
}

TEST(Closing, EndsARunningOperation) {
    DesktopWorld world;
    world.show();
    TARGET_Init(nullptr, TERMINAL_ReceiveByte);
    FRONTEND_Get().openView(View::log);
    FRONTEND_Get().openView(View::terminal);
    world.frame().move(30, 40);
    world.frame().resize(700, 500);
    TARGET_BeginCommand("Programming");
    QTimer::singleShot(100, [&world] { world.frame().close(); });
    PROGRESS_Run("Busy", TARGET_Cancel);
    EXPECT_TRUE(SESSION_Get().quit);
    const std::string kept = readFile(world.folder / "tool.ini");
    for (const char* flag : {"ShowLog = 1", "ShowTerminal = 1", "ShowDevice = 0"}) {
        EXPECT_NE(kept.find(flag), std::string::npos) << flag;
    }
    const int32_t* rect = SESSION_Get().frameRect;
    EXPECT_EQ(std::vector<int32_t>(rect, rect + 4), (std::vector<int32_t>{30, 40, 730, 540}));
}

TEST(Closing, EndsACommandThatConnects) {
    for (const int ms : {0, 600, 1500}) { // as the progress opens, in the download, behind it
        SCOPED_TRACE(ms);
        DesktopWorld world("[Settings PORTS]\nCOM1 = \"sim://desktop\"\n");
        std::filesystem::copy(CALVORIN_DEVICES, world.folder.path(),
                              std::filesystem::copy_options::recursive);
        DEVICE_Init();
        DEVICE_FindByName("VT-B128");
        DEVPROPS_SelectAllBlocks();
        DEVPROPS_SetResetByPC(true);
        HEXDATA_AddData(0, std::vector<uint8_t>(20000, 0x5A));
        const auto chip = CHIP_Create(DEVICE_Selected(), {});
        const auto line = SIMPORT_Offer("desktop", chip);
        SIO_SetConfig({1, 115200, 0});
        NOTIFIERS_Register();
        BOX_SetResponder([](const BoxRequest&) { return ANSWER_OK; });
        TARGET_Init(nullptr, TERMINAL_ReceiveByte);
        world.show();
        QTimer::singleShot(ms, [&world] { world.frame().close(); });
        world.item(CMD_TARGET_BLANK_CHECK_CHIP).trigger();
        EXPECT_TRUE(runUntil([] { return SESSION_Get().quit; }));
        EXPECT_FALSE(SESSION_Get().targetBusy);
        EXPECT_FALSE(SIO_IsOpen());
        SIMPORT_Withdraw("desktop");
    }
}

TEST(Progress, ShowsTheStateAndCancels) {
    DesktopWorld world;
    world.show();
    PROGRESS_Open("Programming", nullptr);
    auto& dialog = control<QDialog>(world.frame(), "900");
    EXPECT_EQ(dialog.windowTitle(), "Programming");
    std::atomic<bool> cancelled{false};
    std::thread worker([] {
        PROGRESS_SetText("Writing");
        PROGRESS_SetMax(1000);
        PROGRESS_SetPos(250);
    });
    QTimer::singleShot(400, [&dialog] {
        EXPECT_EQ(control<QLabel>(dialog, "901").text(), "Writing");
        EXPECT_EQ(control<QLabel>(dialog, "902").text(), "250 of 1000 bytes");
        EXPECT_TRUE(control<QLabel>(dialog, "903").text().startsWith("Elapsed time: 0:"));
        EXPECT_EQ(control<QWidget>(dialog, "904").accessibleName(), "25%");
        click(dialog, "2");
    });
    PROGRESS_Run("Writing", [&cancelled] {
        cancelled = true;
        PROGRESS_Done();
    });
    worker.join();
    EXPECT_TRUE(cancelled);
    EXPECT_FALSE(dialog.isVisible());

    PROGRESS_Open("Verifying", nullptr);
    EXPECT_TRUE(control<QLabel>(dialog, "901").text().isEmpty()) << "of the operation before";
    PROGRESS_ShowCancel(false);
    EXPECT_TRUE(runUntil([&dialog] { return control<QWidget>(dialog, "2").isHidden(); }));
    dialog.close();
    EXPECT_TRUE(dialog.isVisible()) << "without Cancel there is no way out";
    PROGRESS_Close();
}

TEST(Terminal, TranslatesAndEchoesKeys) {
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        const char* text;
        int value; // -1: nothing is sent
        const char* echo;
    } cases[] = {
        {Qt::Key_A, {}, "a", 'a', "a"},
        {Qt::Key_Percent, Qt::ShiftModifier, "%", 0x25, "%"}, // the number of the left arrow
        {Qt::Key_Left, {}, "", 0x25, "<LEFT>"},
        {Qt::Key_Delete, {}, "\x7f", 0x2E, "<DEL>"},
        {Qt::Key_Period, {}, ".", 0x2E, "."},
        {Qt::Key_Return, {}, "\r", 0x0D, ""},
        {Qt::Key_Return, Qt::ControlModifier, "\r", 0x0A, "\n"},
        {Qt::Key_Backtab, Qt::ShiftModifier, "", 0x09, "<TAB>"},
        {Qt::Key_Backspace, {}, "\b", 0x08, ""},
        {Qt::Key_Shift, Qt::ShiftModifier, "", 0x10, ""},
        {Qt::Key_unknown, {}, "\u00e9", 0xE9, "\u00e9"},
        {Qt::Key_unknown, {}, "\u20ac", -1, ""},
        {Qt::Key_VolumeUp, {}, "", -1, ""},
    };
    for (const auto& one : cases) {
        const auto key =
            TERMINALKEYS_Translate(one.key, one.modifiers, QString::fromUtf8(one.text));
        EXPECT_EQ(key ? key->value : -1, one.value) << one.text;
        if (key) {
            EXPECT_EQ(TERMINALKEYS_Echo(*key), QString::fromUtf8(one.echo));
        }
    }
}

TEST(Terminal, WorksBothWays) {
    TestLines lines({"terminal"}); // before the port that uses it
    DesktopWorld world("[Settings PORTS]\nCOM1 = \"test://terminal\"\n");
    TestLine& line = lines["terminal"];
    SIO_SetConfig({1, 38400, 0});
    TARGET_Init(nullptr, TERMINAL_ReceiveByte);
    TERMINAL_Clear();
    world.show();
    FRONTEND_Get().openView(View::terminal);
    auto& receive = control<QPlainTextEdit>(world.frame(), "Receive");
    auto& send = control<QPlainTextEdit>(world.frame(), "Send");

    line.send("OK\r\nmoreX\b");
    EXPECT_TRUE(runUntil([&receive] { return receive.toPlainText() == "OK\nmore"; }));
    for (const auto key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_F8}) {
        pressKey(send, key);
    }
    EXPECT_EQ(send.toPlainText(), " <LEFT>") << "F8 is the menu's, though disabled";
    const std::lock_guard lock(line.mutex);
    EXPECT_EQ(line.fromProgram, (std::vector<std::string>{" ", "\x25"}));
}

TEST(LogView, FiltersAndCopies) {
    DesktopWorld world;
    world.show();
    FRONTEND_Get().openView(View::log);
    LOG_Add("Erasing Chip started");
    std::thread([] { LOG_Add("Error: Timeout error"); }).join();
    auto& list = control<QListView>(world.frame(), "LogList");
    EXPECT_TRUE(runUntil([&list] { return list.model()->rowCount() == 3; }));
    EXPECT_EQ(list.currentIndex().row(), 2);
    control<QAction>(world.frame(), "ErrorsOnly").trigger();
    ASSERT_EQ(list.model()->rowCount(), 1);
    list.selectAll();
    for (QAction* action : list.actions()) {
        if (action->text() == "&Copy") {
            action->trigger();
        }
    }
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith(" Error: Timeout error"));
}

TEST(StatusBar, FollowsTheTextsAndNamesTheDevice) {
    DesktopWorld world("[Settings PORTS]\nCOM3 = \"/no/such/device\"\n");
    world.frame().resize(800, 600);
    world.show();
    std::thread([] {
        STATUS_SetText("MCU: a device with quite a long name", STATUS_DEVICE);
    }).join();
    auto& label = control<QLabel>(world.frame(), "500.3");
    EXPECT_TRUE(runUntil([&label] { return label.text().startsWith("MCU: a device"); }));
    EXPECT_GE(label.width(), label.sizeHint().width()) << "the text is cut";
    EXPECT_EQ(control<QLabel>(world.frame(), "500.4").geometry().right() + 2, 780);
    SIO_SetPort(3);
    EXPECT_EQ(STATUSBAR_PortText(), "COM3 is /no/such/device (not present)");
}

TEST(FileDialog, FollowsTheFilterWithTheExtension) {
    EXPECT_EQ(FILEDIALOG_WithExtension("/a.b/app.v1.hex", "*.mot"), "/a.b/app.mot");
    DesktopWorld world;
    const std::string path = programFile(world);
    const FileRequest request{
        true,
        "Save file",
        {{"Intel Hex file (*.hex)", "*.hex"}, {"Motorola S file (*.mot)", "*.mot"}},
        (world.folder / "app.old.txt").string()};
    writeFile(world.folder / "app.mot", "is replaced without a question");
    std::optional<FileChoice> choice;
    driveDialog(
        [&] {
            choice = FILEDIALOG_Choose(request);
            return 0;
        },
        [](QDialog& dialog) {
            auto& name = control<QLineEdit>(dialog, "fileNameEdit");
            EXPECT_EQ(name.text(), "app.hex");
            auto& files = dynamic_cast<QFileDialog&>(dialog);
            const QString second = files.nameFilters().at(1);
            files.selectNameFilter(second);
            emit files.filterSelected(second);
            EXPECT_EQ(name.text(), "app.mot");
            files.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
        });
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->path, (world.folder / "app.mot").string());
    EXPECT_EQ(choice->filterIndex, 2);
}

TEST(Frame, AsksOnceAboutAChangedFileWhenActivated) {
    DesktopWorld world;
    const std::string path = programFile(world);
    PROGRAM_Open(path);
    const auto activate = [&world] {
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(&world.frame());
        bool passed = false;
        EVENTS_Post([&passed] { passed = true; }); // behind what the activation has posted
        return runUntil([&passed] { return passed; });
    };
    world.show();
    SESSION_Get().programTime = 1;
    const std::vector<std::string> once = {"Reload request: File has changed. Reload?"};
    ASSERT_TRUE(activate());
    EXPECT_EQ(world.reports, once);
    ASSERT_TRUE(activate());
    EXPECT_EQ(world.reports, once);
}

TEST(Help, ShowsTheDocumentWithItsContents) {
    DesktopWorld world;
    writeFile(world.folder / "Calvorin.hlp",
              readFile(std::filesystem::path(CALVORIN_BIN) / "Calvorin.hlp"));
    FRONTEND_Get().helpOnHelp();
    QWidget* help = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        help = window->objectName() == "HELP" ? window : help;
    }
    ASSERT_NE(help, nullptr);
    auto& contents = control<QTreeWidget>(*help, "HelpContents");
    EXPECT_EQ(contents.currentItem()->text(0), "How to use this help");
    const QString text = control<QTextBrowser>(*help, "HelpPage").toPlainText();
    for (const QAction* action : world.frame().findChildren<QAction*>()) {
        const QString name = action->text().section('\t', 0, 0).remove('&').remove("...").trimmed();
        if (action->data().toInt() != 0) {
            EXPECT_TRUE(text.contains(name)) << name.toStdString() << " is not explained";
        }
    }
}

} // namespace
