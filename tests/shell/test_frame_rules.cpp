#include "platform/event_queue.h"
#include "shell/command_ids.h"
#include "shell/frame_rules.h"
#include "shell/program_files.h"
#include "shell/shell_world.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

// A frame without windows over an opened program file that has been changed since.
struct FrameWorld : ShellWorld {
    FrameWorld() {
        EVENTS_Open();
        FRAMERULES_Reset();
        FRONTEND_Get().updateMenu = FRAMERULES_CatchUp;
        FRONTEND_Get().isDialogOpen = [this] { return dialogOpen; };
        FRONTEND_Get().isViewOpen = [this](View) { return viewOpen; };
        PROGRAM_Open(file("app.hex", kAppHex));
        SESSION_Get().image.time = 1;
    }
    ~FrameWorld() { EVENTS_Close(); }

    // How often it was asked whether to reload.
    size_t asked() const {
        while (EVENTS_ProcessOne()) {
        }
        return screen.questions.size();
    }

    bool dialogOpen = false;
    bool viewOpen = false;
};

// Runs the script while the frame is busy in one of the three ways.
using Script = std::function<void()>;
void inCommand(const Script& script) {
    FRONTEND_Get().aboutDialog = script;
    FRAMERULES_Run(CMD_HELP_ABOUT);
}
void inOperation(const Script& script) {
    const TargetBusy marked;
    script();
}
void onCommandLine(const Script& script) {
    EXPECT_TRUE(CMDLINE_Read({"-TargetGetCRC"}) && CMDLINE_Apply());
    script();
    CMDLINE_Reset();
    FRONTEND_Get().updateMenu();
}

} // namespace

TEST(FrameRules, PutOffWhatTouchesTheDataUntilTheFrameIsIdle) {
    for (const auto& busyWith : {inCommand, inOperation, onCommandLine}) {
        for (const bool reopened : {false, true}) {
            FrameWorld world;
            busyWith([&world, reopened] {
                EXPECT_FALSE(FRAMERULES_IsFree());
                FRAMERULES_OpenFile(world.file("b.hex", ":00000001FF\n"));
                FRAMERULES_DataViewsClosed();
                FRAMERULES_Activated();
                FRONTEND_Get().updateMenu();
                EXPECT_FALSE(HEXDATA_IsEmpty()) << "under a running operation";
                EXPECT_EQ(world.asked(), 0U);
                world.viewOpen = reopened;
            });
            EXPECT_EQ(HEXDATA_IsEmpty(), !reopened);
            EXPECT_EQ(world.asked(), reopened ? 1U : 0U) << "about what is still loaded";
            EXPECT_TRUE(FRAMERULES_IsFree());
        }
    }
}

TEST(FrameRules, LetOneCommandRunAndHarmlessOnesBesideIt) {
    FrameWorld world;
    const auto expect = [](bool harmless, bool other) {
        for (const int id : {CMD_VIEW_HEX_LIST, CMD_VIEW_INTERRUPT_VECTORS, CMD_WINDOW_CASCADE,
                             CMD_WINDOW_RESTORE_DEFAULT, CMD_HELP_CONTENTS, CMD_HELP_ABOUT}) {
            EXPECT_EQ(FRAMERULES_MayRun(id), harmless) << id;
        }
        for (const int id : {CMD_FILE_OPEN, CMD_EXIT, CMD_PROJECT_OPEN, CMD_EDIT_RELOCATE,
                             CMD_TARGET_AUTO, CMD_OPTIONS, CMD_RECENT_PROGRAM_FIRST}) {
            EXPECT_EQ(FRAMERULES_MayRun(id), other) << id;
        }
    };
    expect(true, true);
    inCommand([&] {
        expect(true, false);
        FRAMERULES_Run(CMD_FILE_CLOSE);
        EXPECT_FALSE(HEXDATA_IsEmpty());
    });
    world.dialogOpen = true;
    expect(false, false);
    FRAMERULES_Activated();
    EXPECT_EQ(world.asked(), 0U);
    world.dialogOpen = false;
    FRAMERULES_Run(CMD_FILE_CLOSE);
    EXPECT_TRUE(HEXDATA_IsEmpty());
    SESSION_Get().quit = true;
    expect(false, false);
}

TEST(FrameRules, OpenABroughtFileByItsName) {
    FrameWorld world;
    FRAMERULES_OpenFile(world.file("a.TPU", "Baudrate = 2400\n"));
    EXPECT_EQ(SIO_GetBaudrate(), 2400U);
    FRAMERULES_OpenFile(world.file("b.hex", kBootHex));
    EXPECT_EQ(HEXDATA_GetFirstAddr(), 0x20U);
    world.screen.answer = ANSWER_YES;
    world.file("b.hex", kAppHex);
    SESSION_Get().image.time = 1;
    FRAMERULES_Activated();
    EXPECT_EQ(HEXDATA_GetFirstAddr(), 0U);
}
