#include "desktop_world.h"
#include "shell/terminal_settings.h"
#include "support/test_line.h"
#include "ui/terminal_keys.h"

#include <QMenu>
#include <QToolButton>
#include <numeric>

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

// The terminal over a line in memory.
struct TerminalWorld : VirtualTime {
    TerminalWorld() {
        SIO_SetConfig({1, 115200, 0});
        world.answerBoxes();
        FILEDIALOG_SetResponder([this](const FileRequest&) { return FileChoice{chosen, 0}; });
        TARGET_Init(nullptr, TERMINAL_ReceiveByte);
        FRONTEND_Get().openView(View::terminal);
        begin(&world.frame());
    }
    ~TerminalWorld() { end(); }

    void choose(const char* item) { control<QAction>(world.frame(), item).trigger(); }
    QPlainTextEdit& pane() { return control<QPlainTextEdit>(world.frame(), "Terminal"); }
    bool shows(const QString& text) {
        return runUntil([this, &text] { return pane().toPlainText() == text; }) ||
               (ADD_FAILURE() << pane().toPlainText().toStdString(), false);
    }
    std::string sent() {
        const std::lock_guard lock(line.mutex);
        return std::accumulate(line.fromProgram.begin(), line.fromProgram.end(), std::string());
    }

    TestLines lines{{"terminal"}}; // before the port that uses it
    TestLine& line = lines["terminal"];
    DesktopWorld world{"[Settings PORTS]\nCOM1 = \"test://terminal\"\n"};
    Texts& boxes = world.boxes;
    std::string chosen; // in file dialogs
};

TEST(Terminal, WorksBothWaysInTwoPanes) {
    TerminalWorld two;
    auto& receive = control<QPlainTextEdit>(two.world.frame(), "Receive");
    auto& send = control<QPlainTextEdit>(two.world.frame(), "Send");
    two.line.send("OK\r\nmoreX\b");
    EXPECT_TRUE(runUntil([&receive] { return receive.toPlainText() == "OK\nmore"; }));
    receive.moveCursor(QTextCursor::Start);
    receive.moveCursor(QTextCursor::EndOfLine, QTextCursor::KeepAnchor);
    two.line.send("!");
    EXPECT_TRUE(runUntil([&receive] { return receive.toPlainText() == "OK\nmore!"; }));
    EXPECT_EQ(receive.textCursor().selectedText(), "OK");
    for (const auto key : {Qt::Key_Space, Qt::Key_Left, Qt::Key_F8}) {
        pressKey(send, key);
    }
    EXPECT_EQ(send.toPlainText(), " <LEFT>") << "F8 is the menu's, though disabled";
    EXPECT_EQ(two.sent(), " \x25");
    emit send.customContextMenuRequested({});
    auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->actions().back()->text(), "One P&ane");
    popup->close();
    FRONTEND_Get().closeView(View::terminal);
    EXPECT_FALSE(two.world.item(CMD_VIEW_TERMINAL).isChecked());
    FRONTEND_Get().openView(View::terminal);
    EXPECT_EQ(control<QPlainTextEdit>(two.world.frame(), "Receive").toPlainText(), "OK\nmore!");
}

TEST(TerminalPane, ShowsTheOrderAndLeavesSelectionsAlone) {
    TerminalWorld one;
    one.choose("OnePane");
    one.line.send("> ");
    EXPECT_TRUE(one.shows("> "));
    one.choose("LineEnd2"); // CR LF
    for (const auto key : {Qt::Key_Space, Qt::Key_F8, Qt::Key_Return, Qt::Key_Backtab}) {
        pressKey(one.pane(), key);
    }
    EXPECT_EQ(one.sent(), " \r\n") << "F8 is the menu's, Shift+Tab leads to the tools";
    QMdiSubWindow& window = *one.world.window("Terminal I/O");
    EXPECT_EQ(window.focusWidget()->accessibleName(), "One Pane");
    pressKey(*window.focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(window.focusWidget(), &one.pane());
    pressKey(one.pane(), Qt::Key_F10, Qt::ShiftModifier);
    QStringList items;
    for (const QAction* action : QApplication::activePopupWidget()->actions()) {
        items << action->text();
    }
    EXPECT_EQ(items.join(" ").toStdString(),
              "&Copy Selec&t All Clea&r F&ind...  &Send &Log to File... "
              "Settin&gs One P&ane");
    QApplication::activePopupWidget()->close();
    one.line.send("ok\x1B\n");
    EXPECT_TRUE(one.shows(">  \nok\n"));
    one.choose("Controls2"); // as hex
    EXPECT_TRUE(one.shows(">  <0D><0A>\nok<1B><0A>\n"));
    one.choose("Echo");
    EXPECT_TRUE(one.shows("> ok<1B><0A>\n"));

    one.pane().selectAll();
    const QString selected = one.pane().textCursor().selectedText();
    one.choose("TerminalCopy");
    EXPECT_EQ(QApplication::clipboard()->text(), "> ok<1B><0A>\n");
    one.line.send(std::string(500, '\n') + "AAA");
    EXPECT_TRUE(runUntil([&] { return one.pane().toPlainText().endsWith("AAA"); }));
    EXPECT_EQ(one.pane().textCursor().selectedText(), selected);
    QScrollBar& bar = *one.pane().verticalScrollBar();
    EXPECT_EQ(bar.value(), bar.maximum()) << "it was at the end";
    bar.setValue(100);
    one.line.send("B\nB\n");
    EXPECT_TRUE(runUntil([&] { return one.pane().toPlainText().endsWith("B<0A>\n"); }));
    EXPECT_EQ(bar.value(), 100);

    one.choose("Controls0"); // as text
    for (const auto& [sent, end] : {std::pair("ab", "\nab"), std::pair("\b\b\bc", "\nc")}) {
        one.line.send(sent);
        EXPECT_TRUE(
            runUntil([&, shown = end] { return one.pane().toPlainText().endsWith(shown); }));
    }
    one.choose("Controls2");
    bar.setValue(bar.maximum());
    one.line.send(std::string(400'000, '\x1B')); // four characters each
    EXPECT_TRUE(runUntil([&] {
        return one.pane().document()->characterCount() < 1'500'000 &&
               one.pane().document()->characterCount() > 1'200'000;
    }));
    one.choose("TerminalClear");
    one.line.send("ok\x1B\n");
    EXPECT_TRUE(runUntil([&] { return one.pane().toPlainText().endsWith("<0A>\n"); }));
    one.choose("TerminalFind");
    QWidget& terminal = *window.widget();
    const auto find = [&](const char* text) {
        control<QLineEdit>(terminal, "findText").setText(text);
        click(terminal, "findNext");
        return one.pane().textCursor().selectedText();
    };
    EXPECT_EQ(find("ok"), "ok");
    control<QComboBox>(terminal, "findKind").setCurrentIndex(0);
    EXPECT_EQ(find("1B 0A"), "<1B><0A>");
    find("1B 0A");
    EXPECT_EQ(control<QLabel>(terminal, "findMessage").text(), "Continued from the start");
    one.choose("TerminalClear");
    EXPECT_TRUE(one.shows(""));
    one.line.lose("it was pulled out");
    EXPECT_TRUE(
        runUntil([&] { return one.pane().toPlainText().startsWith("-- port lost: COM1 "); }));
    SIO_Restart();
    EXPECT_TRUE(runUntil(
        [&] { return one.pane().toPlainText().endsWith("-- port open again: COM1 --\n"); }));
    one.choose("Rate9600");
    EXPECT_TRUE(runUntil([&] { return one.pane().toPlainText().endsWith("-- 9600 Bd --\n"); }));
    EXPECT_EQ(one.line.calls.back(), "rate 9600");
    EXPECT_EQ(TERMSETTINGS_Read().baudrate, 9600U);
    EXPECT_EQ(TERMSETTINGS_Read().controls, TerminalControls::hex);
    EXPECT_EQ(TERMSETTINGS_Read().lineEnd, TerminalLineEnd::crLf);

    const auto follows = [&window] {
        int count = 0;
        for (const QTimer* timer : window.findChildren<QTimer*>()) {
            count += timer->isActive() ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(follows(), 2) << "the pane and its log";
    window.showMinimized();
    EXPECT_EQ(follows(), 0) << "what is not seen";
    window.showNormal();
    one.pane().setPalette(QPalette(QColor(30, 30, 30)));
    EXPECT_TRUE(one.pane().toPlainText().endsWith("-- 9600 Bd --\n"));
    window.resize(window.width(), 90);
    EXPECT_EQ(bar.value(), bar.maximum());
    one.choose("OnePane");
    EXPECT_EQ(window.focusWidget()->objectName(), "Send");
}

TEST(TerminalPane, SendsFilesAndHexAndWritesALog) {
    TerminalWorld one;
    one.choose("OnePane");
    const TempFolder& folder = one.world.folder;
    const auto& message = control<QLabel>(one.world.frame(), "hexMessage");
    auto& hex = control<QLineEdit>(one.world.frame(), "hexText");
    one.choose("SendHex");
    EXPECT_EQ(one.world.frame().focusWidget(), &hex);
    for (const auto& [text, fault] :
         {std::pair{"41 4g", "No hex digit at character 5"},
          std::pair{"41 4", "A hex digit is missing: 3 make no pairs"},
          std::pair{" ", "No hex digits"}, std::pair{"41 00\t0d", ""}}) {
        hex.setText(text);
        EXPECT_EQ(message.text(), "") << "of what stood there before";
        pressKey(hex, Qt::Key_Return);
        EXPECT_EQ(message.text(), fault);
    }
    EXPECT_EQ(hex.selectedText(), hex.text()) << "to be typed over";
    pressKey(hex, Qt::Key_Escape);
    EXPECT_TRUE(!hex.isVisible() && one.world.frame().focusWidget() == &one.pane());
    EXPECT_TRUE(runUntil([&] { return one.sent() == std::string("A\0\r", 3); }));

    const std::string contents = std::string(20'000, 'x') + "end";
    writeFile(folder / "big.bin", contents);
    writeFile(folder / "empty.bin", "");
    const auto sendFile = [&](const std::string& name) {
        one.chosen = (folder / name).string();
        one.choose("SendFile");
    };
    const auto& progress = control<QLabel>(one.world.frame(), "sendProgress");
    sendFile("big.bin");
    EXPECT_TRUE(progress.text().startsWith("big.bin: ")) << progress.text().toStdString();
    sendFile("big.bin");
    EXPECT_LT(one.sent().size(), 10'000U) << "in portions";
    EXPECT_TRUE(runUntil([&] { return one.sent().ends_with("end"); }));
    EXPECT_EQ(one.sent().substr(3), contents);
    EXPECT_TRUE(runUntil([&] { return !progress.isVisible(); }));
    sendFile("big.bin");
    click(one.world.frame(), "sendCancel");
    EXPECT_FALSE(progress.isVisible());
    EXPECT_LT(one.sent().size(), 2 * contents.size());
    sendFile("empty.bin");
    sendFile("missing.bin");
    sendFile("big.bin");
    one.line.lose("gone");
    EXPECT_TRUE(runUntil([&] { return one.boxes.size() == 4; }));
    const std::string cannot = "Error: The file cannot be sent: " + folder.path().string() + "/";
    EXPECT_EQ(one.boxes[0], cannot + "big.bin (something is being sent already)");
    EXPECT_EQ(one.boxes[1], cannot + "empty.bin (it is empty)");
    EXPECT_EQ(one.boxes[2], cannot + "missing.bin (No such file or directory)");
    EXPECT_TRUE(one.boxes[3].starts_with("Error: Not all was sent: big.bin: ")) << one.boxes[3];
    EXPECT_TRUE(one.boxes[3].ends_with(" of 20003 bytes sent (COM1 is test://terminal: gone)"))
        << one.boxes[3];

    SIO_Restart();
    writeFile(folder / "run.log", "before|");
    one.boxes.clear();
    one.chosen = (folder / "no" / "run.log").string();
    one.choose("LogToFile");
    EXPECT_EQ(one.boxes, std::vector{"Error: The terminal's log cannot be written (" + one.chosen +
                                     ": No such file or directory)"});
    one.chosen = (folder / "run.log").string();
    one.choose("LogToFile");
    one.line.send("a\x1B\r\n");
    EXPECT_TRUE(runUntil([&] { return readFile(folder / "run.log") == "before|a\x1B\r\n"; }));
    const auto isOn = [&one] {
        int on = control<QAction>(one.world.frame(), "LogToFile").isChecked() ? 1 : 0;
        for (const auto* button : one.world.frame().findChildren<QToolButton*>()) {
            on += button->accessibleName() == "Log to File" && button->isChecked() ? 1 : 0;
        }
        return on;
    };
    EXPECT_EQ(isOn(), 2) << "the item and its button";
    one.choose("LogToFile");
    EXPECT_EQ(isOn(), 0);
}

TEST(LogView, FiltersAndCopies) {
    DesktopWorld world;
    FRONTEND_Get().openView(View::log);
    LOG_Add("Erasing Chip started");
    std::thread([] { LOG_Add("Error: Timeout error"); }).join();
    auto& list = control<QListView>(world.frame(), "LogList");
    EXPECT_TRUE(runUntil([&list] { return list.model()->rowCount() == 3; }));
    EXPECT_EQ(list.currentIndex().row(), 2);
    control<QAction>(world.frame(), "ErrorsOnly").trigger();
    ASSERT_EQ(list.model()->rowCount(), 1);
    list.selectAll();
    trigger(list, "&Copy");
    EXPECT_TRUE(QApplication::clipboard()->text().endsWith(" Error: Timeout error"));
    FRONTEND_Get().restoreDefaultPlacement();
    LOG_Add("Error: Cable");
    auto& restarted = control<QListView>(world.frame(), "LogList");
    ASSERT_TRUE(runUntil([&] { return restarted.model()->rowCount() > 0; }));
    EXPECT_EQ(restarted.model()->index(0, 0).data().toString().left(10), "0:00:00:00");
}
