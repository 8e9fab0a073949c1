#include "desktop_world.h"

TEST(Closing, ReleasesAWorkerThatWaitsForAnAnswer) {
    DesktopWorld world;
    world.show();
    std::atomic<int> answer{-1};
    std::thread worker([&answer] { answer = BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO); });
    later(100, [&world] {
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
    later(50, [] { EVENTS_Post([] { SESSION_Get().quit = true; }); });
    EXPECT_EQ(BOX_Ask(nullptr, "Go on?", "Question", BOX_YES_NO), ANSWER_NONE);
}

TEST(Closing, StoresTheViewsThatAreOpenAndThePlace) {
    DesktopWorld world;
    world.show();
    FRONTEND_Get().openView(View::log);
    FRONTEND_Get().openView(View::terminal);
    world.frame().move(30, 40);
    world.frame().resize(700, 500);
    world.frame().close();
    const std::string kept = readFile(world.folder / "tool.ini");
    for (const char* flag : {"ShowLog = 1", "ShowTerminal = 1", "ShowDevice = 0"}) {
        EXPECT_NE(kept.find(flag), std::string::npos) << flag;
    }
    const int32_t* rect = SESSION_Get().frameRect;
    EXPECT_EQ(std::vector<int32_t>(rect, rect + 4), (std::vector<int32_t>{30, 40, 730, 540}));
}

TEST(Closing, EndsACommandAtAnyMoment) {
    const struct {
        const char* moment;
        int ms;
        bool asks = false, cancels = false;
    } cases[] = {{"the loader is sent", 600},
                 {"the operation runs", 1500},
                 {"a question is open", 1500, true},
                 {"the connection is cancelled", 600, false, true},
                 {"the operation is cancelled", 1500, false, true}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.moment);
        ChipOptions slow;
        slow.checksumUsPerKiB = 20000; // of the blank check
        ChipWorld world(slow);
        DEVPROPS_SetResetByPC(!one.asks);
        if (one.asks) {
            BOX_SetResponder({});
        }
        later(one.ms, [&] {
            EXPECT_EQ(QApplication::activeModalWidget() != nullptr, one.asks);
            if (one.cancels) {
                click(world.progress(), "2");
            }
            world.frame().close();
        });
        world.item(CMD_TARGET_BLANK_CHECK_CHIP).trigger();
        EXPECT_TRUE(runUntil([] { return SESSION_Get().quit; }));
        EXPECT_FALSE(SESSION_Get().targetBusy);
        EXPECT_FALSE(SIO_IsOpen());
    }
}
