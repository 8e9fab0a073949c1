#include "desktop_world.h"
#include "support/test_line.h"
#include "ui/terminal_keys.h"

#include <QClipboard>
#include <QListView>
#include <QPlainTextEdit>

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
