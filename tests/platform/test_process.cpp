#include "platform/clock.h"
#include "platform/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

TEST(Process, LeavesAHangUpAloneThatTheUserHasHadIgnored) {
    const auto run = [] {
        std::signal(SIGHUP, SIG_IGN);
        PROCESS_CatchSignals([] { _exit(1); });
        kill(getpid(), SIGHUP);
        CLOCK_Sleep(20);
        _exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
