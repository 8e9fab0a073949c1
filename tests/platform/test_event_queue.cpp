#include "platform/event_queue.h"

#include <atomic>
#include <gtest/gtest.h>
#include <vector>

namespace {

struct EventQueue : testing::Test {
    EventQueue() { EVENTS_Open(); }
    ~EventQueue() override { EVENTS_Close(); }
};

} // namespace

TEST_F(EventQueue, RunsPostedEventsInOrderAndWakesTheWaitingThread) {
    std::vector<int> order;
    EVENTS_Post([&] { order.push_back(1); });
    EVENTS_Post([&] { order.push_back(2); });
    while (EVENTS_ProcessOne()) {
    }
    const auto thread = CLOCK_StartThread([&] {
        CLOCK_Sleep(5);
        EVENTS_Post([&] { order.push_back(3); });
    });
    EVENTS_WaitOne();
    CLOCK_JoinThread(thread);
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(EventQueue, AnswersAThreadThatWaitsAndReleasesItAtTheEnd) {
    std::atomic<int> answer{0};
    std::atomic<int> ran{-1};
    auto thread = CLOCK_StartThread([&] { ran = EVENTS_PostAndWait([&] { answer = 42; }); });
    EVENTS_WaitOne();
    CLOCK_JoinThread(thread);
    EXPECT_EQ(answer, 42);
    EXPECT_EQ(ran, 1);

    // The user interface ends without having run the event: the thread goes on all the same.
    thread = CLOCK_StartThread([&] { ran = EVENTS_PostAndWait([&] { answer = 43; }); });
    CLOCK_Sleep(5);
    EVENTS_Close();
    CLOCK_JoinThread(thread);
    EXPECT_EQ(answer, 42);
    EXPECT_EQ(ran, 0);
}

TEST_F(EventQueue, TicksWhileItWaitsAndLetsWindowEventsThrough) {
    int ticks = 0;
    EVENTS_SetTicker(2, [&] { ++ticks; });
    EVENTS_WaitOne();
    EVENTS_WaitOne();
    EXPECT_EQ(ticks, 2);
    bool seen = false;
    EVENTS_SetLoop({[&seen] { return !std::exchange(seen, true); }, {}, {}});
    EVENTS_Sleep(10);
    EXPECT_TRUE(seen);
    EVENTS_SetTicker(0, {});
    EVENTS_SetLoop({});
    EXPECT_FALSE(EVENTS_ProcessOne());
}
