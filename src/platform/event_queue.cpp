#include "platform/event_queue.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace {

constexpr int64_t kStepMs = 50; // a window system's events do not wake other waits
constexpr int kMostInARow = 20; // between two looks at what is awaited

std::mutex queueMutex;
std::deque<Event> queue;
bool open = false;
std::thread::id userInterfaceThread;
std::function<void()> wakeLoop;

// The user-interface thread's own.
EventLoop loop;
int tickerInterval = 0;
Event ticker;
Moment nextTick = kNever;

std::optional<Event> takeEvent() {
    const std::lock_guard lock(queueMutex);
    if (queue.empty()) {
        return std::nullopt;
    }
    Event event = std::move(queue.front());
    queue.pop_front();
    return event;
}

bool hasEvent() {
    const std::lock_guard lock(queueMutex);
    return !queue.empty();
}

// False when the queue is closed; the event is dropped then.
bool enqueue(Event event) {
    std::function<void()> wake;
    {
        const std::lock_guard lock(queueMutex);
        if (!open) {
            return false;
        }
        queue.push_back(std::move(event));
        wake = wakeLoop;
    }
    if (wake) {
        wake();
    }
    CLOCK_Notify();
    return true;
}

bool runDueTicker() {
    if (CLOCK_Now() < nextTick) {
        return false;
    }
    nextTick = CLOCK_After(tickerInterval);
    const Event tick = ticker; // the tick may replace itself
    tick();
    return true;
}

} // namespace

void EVENTS_Post(Event event) {
    enqueue(std::move(event));
}

bool EVENTS_PostAndWait(Event event) {
    if (std::this_thread::get_id() == userInterfaceThread) {
        event();
        return true;
    }
    enum { waiting, ran, dropped };
    auto state = std::make_shared<std::atomic<int>>(waiting);
    // The guard lives in the event: an event that is dropped without having run releases the
    // waiter.
    auto guard = std::shared_ptr<void>(nullptr, [state](void*) {
        int expected = waiting;
        state->compare_exchange_strong(expected, dropped);
        CLOCK_Notify();
    });
    const bool queued = enqueue([event = std::move(event), state, guard] {
        event();
        *state = ran;
    });
    guard.reset();
    if (!queued) {
        return false;
    }
    CLOCK_Wait(kNever, [state] { return *state != waiting; });
    return *state == ran;
}

bool EVENTS_RunPosted() {
    const auto event = takeEvent();
    if (event) {
        (*event)();
    }
    return event.has_value();
}

bool EVENTS_ProcessOne() {
    if (EVENTS_RunPosted() || runDueTicker()) {
        return true;
    }
    return loop.processOne && loop.processOne();
}

void EVENTS_WaitOne() {
    while (!EVENTS_ProcessOne()) {
        if (loop.waitOne) {
            loop.waitOne(nextTick);
            return;
        }
        CLOCK_Wait(nextTick, hasEvent);
    }
}

bool EVENTS_WaitBeside(Moment deadline, const std::function<bool(Moment)>& awaited) {
    while (!awaited(std::min(deadline, CLOCK_After(kStepMs)))) {
        for (int i = 0; i < kMostInARow && EVENTS_ProcessOne(); ++i) {
        }
        if (CLOCK_Now() >= deadline) {
            return false;
        }
    }
    return true;
}

void EVENTS_Sleep(int64_t ms) {
    EVENTS_WaitBeside(CLOCK_After(ms),
                      [](Moment step) { return CLOCK_Wait(step, [] { return false; }); });
}

void EVENTS_SetTicker(int intervalMs, Event tick) {
    tickerInterval = intervalMs;
    ticker = std::move(tick);
    nextTick = intervalMs > 0 ? CLOCK_After(intervalMs) : kNever;
}

void EVENTS_Open() {
    const std::lock_guard lock(queueMutex);
    userInterfaceThread = std::this_thread::get_id();
    queue.clear();
    open = true;
}

void EVENTS_Close() {
    std::deque<Event> dropped; // destroyed after the lock: dropping an event wakes its waiter
    {
        const std::lock_guard lock(queueMutex);
        open = false;
        std::swap(dropped, queue);
    }
}

void EVENTS_SetLoop(EventLoop newLoop) {
    const std::lock_guard lock(queueMutex);
    wakeLoop = newLoop.wake;
    loop = std::move(newLoop);
}
