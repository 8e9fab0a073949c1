#include "desktop_world.h"
#include "link/target_state.h"
#include "shell/image_origin.h"
#include "shell/program_files.h"
#include "shell/startup.h"
#include "target/operation.h"

TEST(Closing, ReleasesAWorkerThatWaitsForAnAnswer) {
    DesktopWorld world;
    std::atomic<int> answer{-1};
    std::thread worker([&answer] { answer = BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO); });
    onModal([&world] { world.frame().close(); });
    EXPECT_TRUE(runUntil([] { return SESSION_Get().quit; }));
    worker.join();
    EXPECT_EQ(answer, ANSWER_NONE);
    EXPECT_FALSE(world.frame().isVisible());
    EXPECT_EQ(BOX_Ask(nullptr, "Afterwards", "", BOX_OK), ANSWER_NONE);
}

TEST(Closing, EndsDialogsWhenTheProgramIsToldToEnd) {
    DesktopWorld world;
    int inner = ANSWER_OK;
    onModal([&inner] {
        later(1, [] {
            EVENTS_Post([] {});
            EVENTS_Post([] { SESSION_Get().quit = true; });
        });
        inner = BOX_Ask(nullptr, "Really?", "Question", BOX_OK_CANCEL);
    });
    EXPECT_EQ(BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO), ANSWER_NONE);
    EXPECT_EQ(inner, ANSWER_NONE);
}

TEST(Closing, StoresTheViewsThatAreOpenAndThePlace) {
    for (const bool byMenu : {false, true}) {
        SCOPED_TRACE(byMenu);
        DesktopWorld world;
        DesktopWorld::open({View::log, View::terminal});
        world.frame().move(30, 40);
        world.frame().resize(700, 500);
        world.window("Log")->setGeometry(20, 10, 300, 200);
        if (byMenu) { // which leaves the place as it was
            world.frame().showMaximized();
        }
        byMenu ? world.item(CMD_EXIT).trigger() : static_cast<void>(world.frame().close());
        EXPECT_TRUE(SESSION_Get().quit);
        STARTUP_Finish();
        const std::string kept = readFile(world.folder / "tool.ini");
        for (const char* part :
             {"ShowLog = 1", "ShowTerminal = 1", "ShowDevice = 0", "Rect = 20, 10, 300, 200",
              byMenu ? "Rect = 0, 0, 800, 600" : "Rect = 30, 40, 730, 540"}) {
            EXPECT_NE(kept.find(part), std::string::npos) << part << "\n" << kept;
        }
    }
}

namespace {

enum class When { loaderIsSent, operationRuns, questionIsOpen, chipIsChanged };

// Closes the frame at that moment of a command, which the user has cancelled just before or not.
void closeDuringCommand(When when, bool cancelled) {
    SCOPED_TRACE(static_cast<int>(when));
    ChipOptions slow;
    slow.faults = {{FaultKind::slow, ChipStep::blankCheck, 0, 0, 100}};
    slow.programUs = 5000;
    ChipWorld world(slow);
    world.exitAnswer = ANSWER_OK;
    const bool asks = when == When::questionIsOpen;
    DEVPROPS_SetResetByPC(!asks);
    if (asks) {
        BOX_SetResponder({});
    }
    bool isClosed = false;
    const auto hasCome = [&] {
        if (asks) {
            return QApplication::activeModalWidget() != nullptr;
        }
        return when == When::loaderIsSent ? SIMPORT_BytesToChip(world.line) > 100
                                          : TARGET_State().Operation != 0;
    };
    world.watch = [&] {
        if (isClosed || !hasCome()) {
            return;
        }
        isClosed = true;
        if (cancelled) {
            click(world.progress(), "2");
        }
        world.boxes.clear();
        world.frame().close();
        EXPECT_EQ(when == When::chipIsChanged,
                  !world.boxes.empty() && world.boxes[0].starts_with("Exit: "));
    };
    const int command =
        when == When::chipIsChanged ? CMD_TARGET_PROGRAM : CMD_TARGET_BLANK_CHECK_CHIP;
    EXPECT_TRUE(world.isEnabled(command));
    world.item(command).trigger();
    EXPECT_TRUE(runUntil([] { return SESSION_Get().quit; }));
    EXPECT_TRUE(isClosed) << "the moment did not come";
    EXPECT_FALSE(SESSION_Get().targetBusy);
    EXPECT_FALSE(SIO_IsOpen());
}

} // namespace

TEST(Closing, EndsACommandThatIsBeforeTheChip) {
    closeDuringCommand(When::questionIsOpen, false);
    closeDuringCommand(When::loaderIsSent, false);
    closeDuringCommand(When::loaderIsSent, true);
}

TEST(Closing, EndsARunningOperationAndAsksWhenItChangesTheChip) {
    closeDuringCommand(When::operationRuns, true);
    closeDuringCommand(When::chipIsChanged, false);
}

// A box that is open is ended first; whoever stays then can go on as before.
TEST(Closing, AsksBeforeChangesAreLostAlsoOverABox) {
    ChipWorld world;
    PROGRAM_Open(world.programFile());
    ORIGIN_MarkChanged();
    for (const BoxAnswer answer : {ANSWER_CANCEL, ANSWER_OK}) {
        Texts asked;
        BOX_SetResponder([&](const BoxRequest& request) {
            asked.push_back(request.caption);
            return request.caption == "Unsaved changes" ? std::optional<int>(answer) : std::nullopt;
        });
        onModal([&world] { world.frame().close(); });
        EXPECT_EQ(BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO), ANSWER_NONE);
        EXPECT_EQ(BOX_Ask(nullptr, "And now?", "Question", BOX_YES_NO), ANSWER_NONE);
        EXPECT_TRUE(runUntil([&asked] { return asked.size() == 2; }));
        EXPECT_EQ(SESSION_Get().quit, answer == ANSWER_OK);
        EXPECT_EQ(world.frame().isVisible(), answer == ANSWER_CANCEL);
    }
}
