#include "sim/virtual_clock.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

enum class Turn { running, ready, waiting, finished };

// A thread that takes part.
struct Participant {
    Turn turn = Turn::ready;
    Moment deadline = kNever;
    const Condition* condition = nullptr;
    uint64_t seenNotifications = 0; // when the condition was last looked at
    // Shared: whoever gives the turn still signals it when the thread may have ended already.
    std::shared_ptr<std::condition_variable> chosen = std::make_shared<std::condition_variable>();
};

thread_local Participant* self = nullptr;

constexpr int64_t kLongestRun = int64_t{24} * 3600 * 1'000'000; // us
constexpr int kMostLooks = 5'000'000; // at the clock, between two waits of all threads

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "virtual clock: %s\n", what);
    std::abort();
}

struct VirtualThread : ClockThread {
    Participant participant;
    std::thread thread;
};

VirtualThread& ownThread(const ClockThreadPtr& thread) {
    return static_cast<VirtualThread&>(*thread);
}

} // namespace

struct VirtualClock::World {
    explicit World(uint64_t seed) : order(seed) {}

    std::mutex mutex;
    std::mt19937_64 order;
    int64_t now = 1'000'000;
    int looks = 0;
    uint64_t notifications = 0;
    Participant main;
    std::vector<Participant*> participants;

    Moment look();
    bool canRun(Participant& participant);
    Participant& chooseNext();
    void handOver(std::unique_lock<std::mutex>& lock, Participant& next);
    bool wait(Moment deadline, const Condition& ready);
    void run(VirtualThread& thread, const std::function<void()>& body);
    ClockThreadPtr start(std::function<void()> body);
    void join(const ClockThreadPtr& thread);
};

Moment VirtualClock::World::look() {
    const std::lock_guard lock(mutex);
    if (++looks > kMostLooks) {
        fail("a thread looks at the clock again and again without waiting");
    }
    return Moment{now};
}

bool VirtualClock::World::canRun(Participant& participant) {
    if (participant.turn != Turn::waiting) {
        return participant.turn == Turn::ready;
    }
    if (participant.deadline.us <= now) {
        return true;
    }
    if (participant.seenNotifications == notifications) {
        return false;
    }
    if ((*participant.condition)()) {
        return true; // also when another is chosen first: it is looked at again
    }
    participant.seenNotifications = notifications;
    return false;
}

// The next thread to run; time passes when none can run now.
Participant& VirtualClock::World::chooseNext() {
    while (true) {
        std::vector<Participant*> candidates;
        int64_t earliest = kNever.us;
        for (Participant* participant : participants) {
            if (canRun(*participant)) {
                candidates.push_back(participant);
            } else if (participant->turn == Turn::waiting) {
                earliest = std::min(earliest, participant->deadline.us);
            }
        }
        if (!candidates.empty()) {
            return *candidates[order() % candidates.size()];
        }
        if (earliest == kNever.us) {
            fail("every thread waits for ever");
        }
        now = earliest;
        looks = 0;
        if (now > kLongestRun) {
            fail("the run takes more than a day");
        }
    }
}

// Gives the turn to `next` and returns when the calling thread has it again (unless it has ended).
void VirtualClock::World::handOver(std::unique_lock<std::mutex>& lock, Participant& next) {
    next.turn = Turn::running;
    if (&next == self) {
        return;
    }
    const std::shared_ptr<std::condition_variable> signal = next.chosen;
    lock.unlock(); // else the thread would wake up only to wait for the lock
    signal->notify_one();
    lock.lock();
    if (self->turn != Turn::finished) {
        self->chosen->wait(lock, [] { return self->turn == Turn::running; });
    }
}

bool VirtualClock::World::wait(Moment deadline, const Condition& ready) {
    if (self == nullptr) {
        fail("a thread that takes no part waits");
    }
    const bool readyNow = ready();
    std::unique_lock lock(mutex);
    // A wait that is over at once is still a turn: another thread may go first.
    self->turn = readyNow || deadline.us <= now ? Turn::ready : Turn::waiting;
    self->deadline = deadline;
    self->condition = &ready;
    self->seenNotifications = notifications;
    handOver(lock, chooseNext());
    self->condition = nullptr;
    lock.unlock();
    return ready();
}

void VirtualClock::World::run(VirtualThread& thread, const std::function<void()>& body) {
    self = &thread.participant;
    {
        std::unique_lock lock(mutex);
        self->chosen->wait(lock, [] { return self->turn == Turn::running; });
    }
    body();
    std::unique_lock lock(mutex);
    self->turn = Turn::finished;
    ++notifications;
    std::erase(participants, self);
    handOver(lock, chooseNext());
}

ClockThreadPtr VirtualClock::World::start(std::function<void()> body) {
    auto thread = std::make_shared<VirtualThread>();
    {
        const std::lock_guard lock(mutex);
        participants.push_back(&thread->participant);
    }
    // The thread refers to its record, which whoever joins it keeps alive.
    thread->thread =
        std::thread([this, record = thread.get(), body = std::move(body)] { run(*record, body); });
    return thread;
}

void VirtualClock::World::join(const ClockThreadPtr& thread) {
    const auto finished = [&thread] {
        return ownThread(thread).participant.turn == Turn::finished;
    };
    wait(kNever, finished);
    ownThread(thread).thread.join();
}

VirtualClock::VirtualClock(uint64_t seed) : world_(std::make_unique<World>(seed)) {
    World* world = world_.get();
    self = &world->main;
    world->main.turn = Turn::running;
    world->participants.push_back(self);
    face_.now = [world] { return world->look(); };
    face_.wait = [world](Moment deadline, const Condition& ready) {
        return world->wait(deadline, ready);
    };
    face_.notify = [world] {
        const std::lock_guard lock(world->mutex);
        ++world->notifications;
    };
    face_.localTime = [world] {
        const int64_t ms = world->look().us / 1000;
        const int64_t seconds = ms / 1000;
        return CivilTime{2026,
                         1,
                         2,
                         static_cast<int>(8 + seconds / 3600 % 16),
                         static_cast<int>(seconds / 60 % 60),
                         static_cast<int>(seconds % 60),
                         static_cast<int>(ms % 1000)};
    };
    face_.startThread = [world](std::function<void()> body) {
        return world->start(std::move(body));
    };
    face_.joinThread = [world](const ClockThreadPtr& thread) {
        if (ownThread(thread).thread.joinable()) {
            world->join(thread);
        }
    };
    CLOCK_SetFace(&face_);
}

VirtualClock::~VirtualClock() {
    if (world_->participants.size() != 1) {
        fail("threads still run at the end");
    }
    CLOCK_SetFace(nullptr);
    self = nullptr;
}
