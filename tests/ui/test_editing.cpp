// Editing in the desktop: keys typed into the dump, the commands of the Edit menu, undo.
#include "data/data_rows.h"
#include "desktop_world.h"
#include "notice/status.h"
#include "shell/edit_history.h"
#include "shell/edit_operations.h"
#include "shell/program_files.h"
#include "support/test_line.h"

// Offers a key to the shortcuts first, as the toolkit's own test library does.
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject* object, ulong timestamp, int key,
                                               Qt::KeyboardModifiers modifiers, const QString& text,
                                               bool repeated, ushort count);

namespace {

constexpr char kLoaded[] = "01 02 03 04 -- -- -- -- AA";

struct EditingWorld : DesktopWorld {
    EditingWorld() : DesktopWorld("[Settings PORTS]\nCOM1 = \"test://terminal\"\n") {
        _AddDevice(makeDevice("VT-1", {{0, 0x100}}));
        const std::string path = folder / "app.hex";
        writeFile(path, ":0400000001020304F2\n:01000800AA4D\n:00000001FF\n");
        SESSION_Get().showHexListView = 1;
        PROGRAM_Open(path);
        area = &dumpArea();
    }

    // '<' and '>' move, '+' extends the selection, '=' goes to the end, '!' is Escape.
    void type(const QString& keys) {
        const std::map<QChar, std::pair<int, Qt::KeyboardModifiers>> named = {
            {'<', {Qt::Key_Left, {}}},   {'>', {Qt::Key_Right, {}}},
            {'=', {Qt::Key_End, {}}},    {'+', {Qt::Key_Right, Qt::ShiftModifier}},
            {'!', {Qt::Key_Escape, {}}}, {'\t', {Qt::Key_Tab, {}}},
        };
        for (const QChar letter : keys) {
            const auto found = named.find(letter);
            const bool isText = found == named.end();
            QKeyEvent press(QEvent::KeyPress, isText ? 0 : found->second.first,
                            isText ? Qt::NoModifier : found->second.second,
                            isText ? QString(letter) : QString());
            QApplication::sendEvent(area, &press);
        }
    }
    std::string dump() const { return HEXDUMPVIEW_CopyHex(HEXDUMPVIEW_GetRange()); }
    int undoAll() {
        int count = 0;
        for (; isEnabled(CMD_EDIT_UNDO); ++count) {
            item(CMD_EDIT_UNDO).trigger();
        }
        return count;
    }
    bool isMarked() { return frame().windowTitle().endsWith(" *"); }

    HexDumpArea* area = nullptr;
};

} // namespace

TEST(Editing, KeysTypeOverTheBytes) {
    const struct {
        const char* keys;
        const char* dump;
        int steps;
        uint32_t caret;
    } cases[] = {
        {"4", "41 02 03 04 -- -- -- -- AA", 1, 0},
        {"4f5", "4F 52 03 04 -- -- -- -- AA", 1, 1},
        {"4!5!", kLoaded, 0, 0}, // a half-typed byte is left as it was
        {"4>5", "41 52 03 04 -- -- -- -- AA", 2, 1},
        {"1122<<33", "33 22 03 04 -- -- -- -- AA", 2, 1},
        {"0102", kLoaded, 0, 2},
        {">>>4f1!", "01 02 03 4F -- -- -- -- AA", 1, 4},
        {">>>>12", "01 02 03 04 12 -- -- -- AA", 1, 5}, // held from the second digit on
        {">>>>>1>2", "01 02 03 04 -- -- -- -- AA", 0, 6},
        {"=1234<5", "01 02 03 04 -- -- -- -- 52", 2, 8}, // nothing is typed behind the end
        {"+++ff", "FF 02 03 04 -- -- -- -- AA", 1, 1},   // where the selection begins
        {"\tG a", "47 20 61 04 -- -- -- -- AA", 1, 3},
        {"g \t\u20ac\t", kLoaded, 0, 0},
    };
    EditingWorld world;
    EXPECT_EQ(STATUS_GetText(STATUS_GENERAL),
              "00000000  block 0  8: 01  16: 0102/0201  32: 01020304/04030201");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.keys);
        world.type(QString::fromUtf8(c.keys));
        EXPECT_EQ(world.dump(), c.dump);
        EXPECT_EQ(world.area->caret().address, c.caret);
        EXPECT_EQ(control<QLabel>(world.frame(), "bytes").text().toStdString(),
                  "Number of bytes: " + std::to_string(HEXDATA_GetNumBytes()));
        EXPECT_EQ(world.isMarked(), c.steps > 0);
        EXPECT_EQ(world.undoAll(), c.steps);
        EXPECT_EQ(world.dump(), kLoaded);
        EXPECT_FALSE(world.isMarked());
        FRONTEND_Get().closeView(View::hexDump); // the next one begins at its start
        FRONTEND_Get().openView(View::hexDump);
        world.area = &world.dumpArea();
    }
    for (const auto& [keys, refusal] :
         {std::pair("g", "Only hex digits can be typed here; Tab goes to the characters"),
          std::pair("\t\u20ac", "Only Latin-1 characters are allowed")}) {
        world.type(QString::fromUtf8(keys));
        EXPECT_EQ(STATUS_GetText(STATUS_GENERAL), refusal);
    }
    EXPECT_TRUE(pressKey(*world.area, Qt::Key_Up, Qt::ControlModifier));
    EXPECT_TRUE(pressKey(*world.area, Qt::Key_Right, Qt::ShiftModifier));
    EXPECT_TRUE(pressKey(*world.area, Qt::Key_Escape));
    EXPECT_FALSE(pressKey(*world.area, Qt::Key_Escape)) << "there is nothing to end";
    EXPECT_TRUE(pressKey(*world.area, Qt::Key_End) &&
                pressKey(*world.area, Qt::Key_Home, Qt::ShiftModifier));
    EXPECT_FALSE(pressKey(*world.area, Qt::Key_F12));
    const TargetBusy busy;
    world.type("12");
    EXPECT_EQ(world.dump(), kLoaded);
    EXPECT_EQ(STATUS_GetText(STATUS_GENERAL), "A command is under way");
}

TEST(Editing, CommandsChangeTheBytesOrSayWhyNot) {
    const struct {
        int command;
        std::optional<int32_t> start, end;
        const char* text;   // bytes, the clipboard or the contents of the file
        const char* result; // the dump, or what is reported
    } cases[] = {
        {CMD_EDIT_FILL, 1, 2, "0xA5, 5a", "01 A5 5A 04 -- -- -- -- AA"},
        {CMD_EDIT_FILL, 5, 9, "12 34", "01 02 03 04 -- 12 34 12 34 12"},
        {CMD_EDIT_FILL, 2, 1, "FF", "End Address < Start Address!"},
        {CMD_EDIT_FILL, 1, 2, " ", "Empty Bytes!"},
        {CMD_EDIT_FILL, 1, 2, "1", "Bytes: Line 1, column 1: a digit is without its pair"},
        {CMD_EDIT_FILL, 0, 0x4000000, "FF", "At most 67108864 bytes can be filled at once."},
        {CMD_EDIT_PASTE_HEX, 2, {}, "11,0x22\n33", "01 02 11 22 33 -- -- -- AA"},
        {CMD_EDIT_PASTE_HEX,
         2,
         {},
         "11 2Q",
         "The clipboard does not hold hex alone.\nLine 1, column 5: \"Q\" is no hex digit"},
        {CMD_EDIT_PASTE_HEX, 2, {}, "", "The clipboard holds no hex."},
        {CMD_EDIT_INSERT_FILE, 7, {}, "12", "01 02 03 04 -- -- -- 31 32"},
        {CMD_EDIT_INSERT_FILE, -1, {}, "12", "2 bytes at FFFFFFFF would end behind FFFFFFFF"},
        {CMD_EDIT_INSERT_FILE, {}, {}, "12", "Empty value!"},
        {CMD_EDIT_INSERT_FILE, 0, {}, "", "bytes.bin: The file is empty"},
    };
    EditingWorld world;
    FILEDIALOG_SetResponder([&](const FileRequest&) {
        return FileChoice{world.folder / "bytes.bin", 0};
    });
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        bool asked = false;
        FRONTEND_Get().editValue = [&](ValueRequest& request) {
            request.value0 = c.start;
            request.value1 = c.end;
            request.bytes = c.text;
            return std::exchange(asked, true) ? kDialogCancel : kDialogOk;
        };
        writeFile(world.folder / "bytes.bin", c.text);
        QGuiApplication::clipboard()->setText(c.text);
        world.area->placeCaret(static_cast<uint32_t>(c.start.value_or(0)) % 9);
        ASSERT_TRUE(world.isEnabled(c.command));
        if (c.command == CMD_EDIT_PASTE_HEX) {
            pressKey(*world.area, Qt::Key_V, Qt::ControlModifier);
        } else {
            world.item(c.command).trigger();
        }
        if (world.reports.empty()) {
            EXPECT_EQ(world.dump(), c.result);
            EXPECT_EQ(world.area->selection()->range().start, static_cast<uint32_t>(*c.start));
            EXPECT_EQ(world.undoAll(), 1);
        } else {
            EXPECT_TRUE(std::exchange(world.reports, {}).front().ends_with(c.result));
            EXPECT_FALSE(world.isMarked());
        }
        EXPECT_EQ(world.dump(), kLoaded);
    }
    PROGRAM_Close(); // a file of bytes can begin a program
    writeFile(world.folder / "bytes.bin", "12");
    FRONTEND_Get().editValue = [](ValueRequest& request) {
        request.value0 = 0x10;
        return kDialogOk;
    };
    world.item(CMD_EDIT_INSERT_FILE).trigger();
    EXPECT_EQ(world.dump(), "31 32");
    EXPECT_TRUE(world.frame().windowTitle().endsWith("New program *"));
    EXPECT_EQ(world.undoAll(), 1);
    EXPECT_TRUE(HEXDATA_IsEmpty());
}

TEST(Editing, OffersTheSelectionToFillAndCopy) {
    EditingWorld world;
    EXPECT_FALSE(world.isEnabled(CMD_EDIT_COPY_TEXT)) << "nothing is selected";
    world.area->select({7, 2});
    EXPECT_TRUE(runUntil([&] { return world.item(CMD_EDIT_COPY_TEXT).isEnabled(); }));
    driveDialog([&] { world.item(CMD_EDIT_FILL).trigger(); },
                [](QDialog& dialog) {
                    expectNamed(dialog);
                    EXPECT_EQ(control<QLineEdit>(dialog, "704").text(), "2");
                    EXPECT_EQ(control<QLineEdit>(dialog, "705").text(), "7");
                    control<QLineEdit>(dialog, "707").setText("41 42 4");
                    control<QLineEdit>(dialog, "707").insert("3");
                    click(dialog, "1");
                });
    world.item(CMD_EDIT_COPY_TEXT).trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "ABCABC");
    FRONTEND_Get().closeView(View::hexDump);
    EXPECT_FALSE(world.isEnabled(CMD_EDIT_COPY_TEXT));
    EXPECT_FALSE(world.isEnabled(CMD_EDIT_PASTE_HEX));
    EXPECT_TRUE(world.isEnabled(CMD_EDIT_FILL));
    FRONTEND_Get().revealData(AddressRange::of(2, 3));
    EXPECT_EQ(world.dumpArea().selection()->range(), AddressRange::of(2, 3));
}

TEST(Editing, KeysOfUndoGoToTheChipFromTheTerminal) {
    TestLines lines({"terminal"}); // before the port that uses it
    EditingWorld world;
    SIO_SetConfig({1, 38400, 0});
    TARGET_Init(nullptr, TERMINAL_ReceiveByte);
    FRONTEND_Get().openView(View::terminal);
    world.type("5");
    world.isEnabled(CMD_EDIT_UNDO);
    QApplication::setActiveWindow(&world.frame());
    auto& send = control<QPlainTextEdit>(world.frame(), "Send");
    // What the key of a control character does; false: it came to the widget.
    const auto press = [](QWidget& widget, Qt::Key key, const QString& text) {
        widget.setFocus();
        if (qt_sendShortcutOverrideEvent(&widget, 0, key, Qt::ControlModifier, text, false, 1)) {
            return true;
        }
        QKeyEvent event(QEvent::KeyPress, key, Qt::ControlModifier, text);
        QApplication::sendEvent(&widget, &event);
        return false;
    };
    EXPECT_FALSE(press(send, Qt::Key_Z, "\x1a"));
    EXPECT_FALSE(press(send, Qt::Key_Y, "\x19"));
    EXPECT_EQ(world.dump().substr(0, 2), "51");
    EXPECT_TRUE(press(*world.area, Qt::Key_Z, "\x1a"));
    EXPECT_EQ(world.dump(), kLoaded);
    const std::lock_guard lock(lines["terminal"].mutex);
    EXPECT_EQ(lines["terminal"].fromProgram, (Texts{"\x1a", "\x19"}));
}

TEST(Editing, AsksBeforeTheLastViewTakesChangesWithIt) {
    EditingWorld world;
    NOTIFIERS_Register();
    int asked = 0;
    int answer = ANSWER_CANCEL;
    BOX_SetResponder([&](const BoxRequest& request) {
        asked += request.caption == "Unsaved changes" ? 1 : 0;
        return answer;
    });
    world.type("55");
    ASSERT_EQ(world.windows().size(), 2U);
    world.windows()[0]->close();
    EXPECT_EQ(asked, 0) << "another view shows the data";
    QApplication::processEvents();
    world.windows()[0]->close();
    EXPECT_EQ(HEXDATA_GetNumBytes(), 5U);
    ASSERT_EQ(world.windows().size(), 1U);
    EXPECT_TRUE(world.windows()[0]->isVisible());
    answer = ANSWER_OK;
    world.windows()[0]->close();
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(HEXDATA_IsEmpty());
}
