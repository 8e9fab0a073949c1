// Undo of what changes the image, and the dialogs of Relocate, Delete Range and Read Back, driven
// by a front end that types.
#include "data/program_format.h"
#include "persist/ini.h"
#include "platform/format.h"
#include "shell/edit_bytes.h"
#include "shell/edit_history.h"
#include "shell/edit_operations.h"
#include "shell/frame_rules.h"
#include "shell/program_files.h"
#include "shell/project.h"
#include "shell_world.h"

#include <gtest/gtest.h>

namespace {

using Value = std::optional<int32_t>;

std::string fieldText(Value value, bool negative) {
    const uint32_t bits = static_cast<uint32_t>(value.value_or(0));
    return !value ? "none" : negative ? formatText("-%X", 0U - bits) : formatText("%X", bits);
}

// What the dialog shows each time while the user types these values and then cancels.
std::string shownBy(void (*dialog)(), std::vector<std::pair<Value, Value>> typed,
                    const std::string& file) {
    std::string shown;
    FrontEnd frontEnd;
    frontEnd.editValue = [&](ValueRequest& request) {
        shown += fieldText(request.value0, request.sign < 0) + "," +
                 fieldText(request.value1, false) + " ";
        if (typed.empty()) {
            return kDialogCancel;
        }
        std::tie(request.value0, request.value1) = typed.front();
        typed.erase(typed.begin());
        return kDialogOk;
    };
    frontEnd.chooseFile = [&file](const FileRequest&) { return FileChoice{file, 0}; };
    FRONTEND_Set(frontEnd);
    dialog();
    return shown;
}

int stepsUndone() {
    int count = 0;
    for (; HISTORY_CanUndo(); ++count) {
        HISTORY_Undo();
    }
    return count;
}

} // namespace

// Every way of changing the image is taken back and done again, with the origin that the title
// shows.
TEST(EditHistory, TakesBackAndDoesAgain) {
    ShellWorld world;
    const std::string app = world.file("app.hex", kAppHex);
    const std::vector<std::function<void()>> edits = {
        [] { EDIT_Relocate(0x10); },
        [] { EDIT_Relocate(INT32_MIN); },
        [] { EDIT_DeleteRange(0x80000011, 0x80000012); },
        [] {
            EDIT_Fill(AddressRange::upTo(0x20, 0x22), std::array<uint8_t, 2>{0xAB, 0xCD});
        },
        [] {
            EDIT_TypeByte(0x22, 0x10);
            EDIT_TypeByte(0x23, 0x11);
        },
        [&] { PROGRAM_Merge(world.file("boot.hex", kBootHex)); },
        [&] { PROGRAM_Open(world.file("cut.hex", kCutHex)); }, // fails and leaves nothing
        [] { EDIT_DeleteRange(0, 5); },                        // changes nothing
    };
    ASSERT_TRUE(PROGRAM_Open(app));
    std::vector<std::pair<std::string, std::string>> states;
    const auto state = [] { return std::pair(ORIGIN_Text(), ShellWorld::image()); };
    for (const auto& edit : edits) {
        if (const auto now = state(); states.empty() || states.back() != now) {
            states.push_back(now);
        }
        edit();
    }
    ASSERT_EQ(states.back(), std::pair(std::string(), std::string()));
    for (size_t i = states.size() - 1; i-- > 0;) {
        HISTORY_Undo();
        EXPECT_EQ(state(), states[i]) << i;
    }
    EXPECT_FALSE(HISTORY_CanUndo());
    for (size_t i = 1; i < states.size(); ++i) {
        HISTORY_Redo();
        EXPECT_EQ(state(), states[i]) << i;
    }
    EXPECT_FALSE(HISTORY_CanRedo());
    HISTORY_Undo();
    EDIT_Relocate(1);
    EXPECT_FALSE(HISTORY_CanRedo()) << "another way was taken";
    ASSERT_TRUE(PROGRAM_Open(app));
    EXPECT_FALSE(HISTORY_CanUndo());
}

TEST(EditHistory, KnowsWhichStateIsSavedAndWhatTypingIsOne) {
    ShellWorld world;
    const std::string app = world.file("app.hex", kAppHex);
    const std::string copy = world.folder / "copy.hex";
    ASSERT_TRUE(PROGRAM_Open(app));
    EDIT_TypeByte(1, 0x50);
    EDIT_TypeByte(1, 0x56);
    EDIT_TypeByte(2, 3); // as it was
    EDIT_TypeByte(3, 9);
    EXPECT_EQ(stepsUndone(), 1);
    EXPECT_EQ(ShellWorld::image(), "0:01020304 ");
    EXPECT_EQ(ORIGIN_Text(), app);
    HISTORY_Redo();
    EXPECT_EQ(ORIGIN_Text(), app + " *");
    ASSERT_TRUE(PROGRAM_Save(copy, FILETYPE_SRECORD));
    EXPECT_NE(readFile(copy).find("01560309"), std::string::npos);
    HISTORY_Undo();
    EXPECT_EQ(ORIGIN_Text(), copy + " *");
    EXPECT_EQ(SESSION_Get().image.fileType, FILETYPE_SRECORD);
    EXPECT_EQ(SESSION_Get().image.time, FILES_WriteTime(copy));
    HISTORY_Redo();
    EXPECT_EQ(ORIGIN_Text(), copy);
    EDIT_TypeByte(4, 7); // goes on where that ends, but that was done again
    EDIT_TypeByte(5, 7);
    HISTORY_EndTyping();
    EDIT_TypeByte(6, 7);
    EXPECT_EQ(stepsUndone(), 3);
}

// What a step keeps is counted, and the oldest steps go first.
TEST(EditHistory, KeepsNoMoreThanItsLimit) {
    const ShellWorld world;
    constexpr uint32_t kSize = 48 * 1024 * 1024;
    const std::vector<uint8_t> other(kSize, 2);
    HISTORY_Clear();
    for (uint32_t i = 0; i < 7; ++i) {
        HEXDATA_AddData(0, other);
        EDIT_DeleteRange(0, kSize - 1);
    }
    EXPECT_EQ(stepsUndone(), 5);
}

// Where the image would be given up, the user is asked first, with windows alone.
TEST(EditHistory, ChangesAreNotLostWithoutAQuestion) {
    ShellWorld world;
    const std::string app = world.file("app.hex", kAppHex);
    FRONTEND_Get().hasWindows = true;
    FRONTEND_Get().chooseFile = [&](const FileRequest&) { return FileChoice{app, 0}; };
    const std::function<void()> losses[] = {PROGRAM_OpenDialog,   [&] { PROGRAM_OpenRecent(app); },
                                            PROGRAM_CloseCurrent, [&] { PROJECT_Open(app); },
                                            PROJECT_New,          [] { FRAMERULES_MayClose(); }};
    for (const auto& lose : losses) {
        ASSERT_TRUE(PROGRAM_Open(app));
        EDIT_Relocate(0x10);
        lose();
        EXPECT_EQ(ORIGIN_Text(), app + " *");
        EXPECT_EQ(world.screen.takeAll(world.screen.questions).size(), 1U);
        RUN_SetUnattended(true);
        EXPECT_TRUE(PROGRAM_MayLoseChanges());
        RUN_SetUnattended(false);
        HISTORY_Undo();
        EXPECT_TRUE(PROGRAM_MayLoseChanges()) << "nothing to lose";
        EXPECT_EQ(world.screen.takeAll(world.screen.questions).size(), 0U);
    }
}

TEST(EditDialogs, AskUntilTheValuesAreGoodAndKeepThem) {
    ShellWorld world("Device = \"VT-1\"\nManufacturer = \"Acme\"\nBank = 4000, 100\n");
    INI_Load();
    ShellWorld::load(0x100, {1, 2, 3, 4});
    const std::string file = world.file("insert.bin", "abc");
    const struct {
        void (*dialog)();
        std::vector<std::pair<Value, Value>> typed;
        const char* shown;
        const char* errors;
        const char* left;
    } cases[] = {
        {EDIT_RelocateDialog, {{-0x10, {}}}, "0,none ", "", "F0:01020304 "},
        {EDIT_RelocateDialog, {{{}, {}}}, "-10,none -10,none ", "Empty value!", "F0:01020304 "},
        {EDIT_DeleteRangeDialog,
         {{{}, 0xFF}, {0x200, {}}, {0x200, 0x100}, {0, 0xF1}},
         "0,0 none,FF 200,none 200,100 ",
         "Empty Start Address!\nEmpty End Address!\nEnd Address < Start Address!",
         "F2:0304 "},
        {EDIT_DeleteRangeDialog, {}, "200,F1 ", "", "F2:0304 "}, // a 0 is not kept
        {EDIT_FillDialog,
         {{0xFF, 0xFE}, {0, 0x7FFFFFFF}, {0xF3, 0xF4}},
         "F2,F2 FF,FE 0,7FFFFFFF ",
         "End Address < Start Address!\nAt most 67108864 bytes can be filled at once.",
         "F2:03FFFF "},
        {EDIT_InsertFileDialog,
         {{{}, {}}, {-2, {}}, {0x10, {}}},
         "F2,none none,none FFFFFFFE,none ",
         "Empty value!\n3 bytes at FFFFFFFE would end behind FFFFFFFF",
         "10:616263 F2:03FFFF "},
        {EDIT_ReadBackDialog,
         {{2, 1}},
         "10,F4 2,1 ",
         "End Address < Start Address!",
         "10:616263 F2:03FFFF "},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shownBy(c.dialog, c.typed, file), c.shown);
        EXPECT_EQ(world.screen.take(), c.errors);
        EXPECT_EQ(ShellWorld::image(), c.left);
    }
    EXPECT_NE(readFile(world.folder / "tool.ini").find("EAdr = 241"), std::string::npos);
    HEXDATA_Clear();
    EXPECT_EQ(shownBy(EDIT_ReadBackDialog, {}, file), "4000,40FF ") << "the flash of the device";
}
