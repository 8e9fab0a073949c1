#include "platform/system_clock.h"

#include "platform/linux/descriptor_wait.h"

#include <algorithm>
#include <ctime>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

struct SystemThread : ClockThread {
    std::jthread thread;
};

constexpr int64_t kNanosecondsPerUs = 1000;
constexpr int64_t kUsPerSecond = 1'000'000;

// The threads that wait right now, by the event descriptor that wakes each.
std::mutex waitersMutex;
std::vector<int> waiters;

// Registers the calling thread as a waiter while it lives. Registration comes before the first look
// at the condition, so that a change between the look and the poll is not missed.
class Waiter {
public:
    Waiter() {
        drain();
        const std::lock_guard lock(waitersMutex);
        waiters.push_back(descriptor());
    }
    ~Waiter() {
        const std::lock_guard lock(waitersMutex);
        std::erase(waiters, descriptor());
    }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    static int descriptor() {
        thread_local const OwnedDescriptor own;
        return own.value;
    }
    static void drain() {
        uint64_t count = 0;
        while (read(descriptor(), &count, sizeof count) > 0) {
        }
    }

private:
    struct OwnedDescriptor {
        int value = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        ~OwnedDescriptor() { close(value); }
    };
};

Moment systemNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return Moment{time.tv_sec * kUsPerSecond + time.tv_nsec / kNanosecondsPerUs};
}

void pollUntil(pollfd* descriptors, nfds_t count, Moment deadline) {
    if (deadline == kNever) {
        ppoll(descriptors, count, nullptr, nullptr);
        return;
    }
    const int64_t left = std::max<int64_t>(0, deadline.us - systemNow().us);
    const timespec timeout{left / kUsPerSecond, (left % kUsPerSecond) * kNanosecondsPerUs};
    ppoll(descriptors, count, &timeout, nullptr);
}

bool systemWait(Moment deadline, const Condition& ready) {
    waitDescriptor(-1, 0, deadline, ready);
    return ready();
}

void systemNotify() {
    const std::lock_guard lock(waitersMutex);
    for (const int descriptor : waiters) {
        const uint64_t one = 1;
        // A full counter means that the waiter is being woken already.
        [[maybe_unused]] const ssize_t written = write(descriptor, &one, sizeof one);
    }
}

CivilTime systemLocalTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    return CivilTime{local.tm_year + 1900,
                     local.tm_mon + 1,
                     local.tm_mday,
                     local.tm_hour,
                     local.tm_min,
                     local.tm_sec,
                     static_cast<int>(now.tv_nsec / 1'000'000)};
}

ClockThreadPtr systemStartThread(std::function<void()> body) {
    auto thread = std::make_shared<SystemThread>();
    thread->thread = std::jthread(std::move(body));
    return thread;
}

void systemJoinThread(const ClockThreadPtr& thread) {
    std::jthread& own = static_cast<SystemThread&>(*thread).thread;
    if (own.joinable()) {
        own.join();
    }
}

} // namespace

short waitDescriptor(int descriptor, short events, Moment deadline, const Condition& stop) {
    const Waiter waiter;
    pollfd descriptors[2] = {{Waiter::descriptor(), POLLIN, 0}, {descriptor, events, 0}};
    while (true) {
        if (stop && stop()) {
            return 0;
        }
        pollUntil(descriptors, 2, deadline);
        if (descriptors[1].revents != 0) {
            return descriptors[1].revents;
        }
        if (descriptors[0].revents != 0) {
            Waiter::drain();
        }
        if (systemNow() >= deadline) {
            return 0;
        }
    }
}

const ClockFace& SYSTEMCLOCK_Face() {
    static const ClockFace face{systemNow,       systemWait,        systemNotify,
                                systemLocalTime, systemStartThread, systemJoinThread};
    return face;
}
