#include "platform/clock.h"
#include "platform/process.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

// The handler has run before any wait ends. The second signal that asks it to end ends it at once;
// others that the user has had ignored, and a pipe that nobody reads, do nothing.
TEST(Process, EndsAtTheSecondSignal) {
    const auto run = [](int signals) {
        std::signal(SIGHUP, SIG_IGN);
        static std::atomic<bool> heard{false};
        PROCESS_CatchSignals([] {
            CLOCK_Sleep(20);
            heard = true;
        });
        kill(getpid(), SIGHUP);
        kill(getpid(), SIGPIPE);
        if (signals > 0) {
            kill(getpid(), SIGTERM);
            CLOCK_Wait(CLOCK_After(60'000), PROCESS_IsEnding);
            if (!heard) {
                _exit(3);
            }
        }
        if (signals > 1) {
            kill(getpid(), SIGTERM);
        }
        CLOCK_Sleep(signals > 1 ? 60'000 : 20);
        _exit(PROCESS_IsEnding() ? 2 : 0);
    };
    EXPECT_EXIT(run(0), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(run(1), testing::ExitedWithCode(2), "");
    EXPECT_EXIT(run(2), testing::ExitedWithCode(1), "");
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
