// A clock for tests: the threads that it starts and the one that made it take turns, one at a time,
// in an order that depends on the seed alone; when all of them wait, time jumps to the earliest
// deadline. So seconds of prescribed waits pass in no time and every run can be repeated.
//
// Stricter than the system clock: a condition is looked at only when its wait begins, at its
// deadline and after CLOCK_Notify, so that a forgotten notification shows. A run in which every
// thread waits for ever, or one never waits, is ended with a message.
#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <memory>

// While it lives it stands in the system clock's place. To be made and destroyed on one thread,
// with no other thread of the program running.
class VirtualClock {
public:
    explicit VirtualClock(uint64_t seed);
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

private:
    struct World;
    std::unique_ptr<World> world_;
    ClockFace face_;
};
