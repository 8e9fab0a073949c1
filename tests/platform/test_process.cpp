#include "platform/clock.h"
#include "platform/process.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
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

TEST(Process, EndsWithAnErrorLineAtAnExceptionOnAnyThread) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { throw std::bad_alloc(); }, "^Error: the memory does not suffice\n$"},
        {[] { throw std::runtime_error("out of paper"); }, "^Error: out of paper\n$"},
        {[] { throw 1; }, "^Error: an unknown exception\n$"},
    };
    for (const auto& [fail, line] : cases) {
        const auto run = [thrower = fail] {
            PROCESS_ReportExceptions();
            std::thread(thrower).join();
        };
        EXPECT_EXIT(run(), testing::ExitedWithCode(1), line);
    }
}
