#include "platform/clock.h"

#include <atomic>
#include <gtest/gtest.h>

TEST(SystemClock, LosesNoNotification) {
    // Two threads hand a word back and forth; one lost wake-up would cost a minute.
    std::atomic<int> word{0};
    constexpr int kRounds = 2000;
    const Moment start = CLOCK_Now();
    const auto thread = CLOCK_StartThread([&] {
        for (int round = 0; round < kRounds; ++round) {
            CLOCK_Wait(CLOCK_After(60'000), [&] { return word == 2 * round + 1; });
            ++word;
            CLOCK_Notify();
        }
    });
    for (int round = 0; round < kRounds; ++round) {
        ++word;
        CLOCK_Notify();
        CLOCK_Wait(CLOCK_After(60'000), [&] { return word == 2 * round + 2; });
    }
    CLOCK_JoinThread(thread);
    EXPECT_EQ(word, 2 * kRounds);
    EXPECT_LT(CLOCK_Now().us - start.us, 60'000'000);
}
