// The one home of time and waiting. Nothing else in the program reads a clock, sleeps or blocks.
//
// Every wait has one form: until a condition holds or a deadline has passed, woken by whoever makes
// the condition true (CLOCK_Notify). Two faces stand behind it: the system clock (the kernel's
// waits) and, in tests, a virtual clock that jumps to the next deadline when every thread waits.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

// A point in time in microseconds since the clock's own start; not a time of day.
struct Moment {
    int64_t us = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): taken for a null pointer by the check
    auto operator<=>(const Moment&) const = default;
};

inline constexpr Moment kNever{std::numeric_limits<int64_t>::max()};

// What a wait waits for. It may be called on any thread that waits or runs the clock, so it reads
// only atomics or state with its own lock, does not block and does not call the clock.
using Condition = std::function<bool()>;

// Any thread.
Moment CLOCK_Now();
// The moment `ms` milliseconds (`us` microseconds) from now.
Moment CLOCK_After(int64_t ms);
Moment CLOCK_AfterUs(int64_t us);
// Milliseconds since the system's start, modulo 2^32.
uint32_t CLOCK_Tick();

// Waits until `ready` holds or `deadline` has passed. Result: whether `ready` holds. The condition
// is looked at when the wait begins and after every CLOCK_Notify, never in between.
bool CLOCK_Wait(Moment deadline, const Condition& ready);

// Wakes every waiting thread to look at its condition again; called after whatever makes one true.
void CLOCK_Notify();

// A pause of the calling thread: a wait for nothing.
void CLOCK_Sleep(int64_t ms);

// The local date and time of day.
struct CivilTime {
    int year = 0;
    int month = 0; // 1 to 12
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};
CivilTime CLOCK_LocalTime();

// A thread that the clock knows. Destroying it joins it; the body must have been told to end.
// What is behind it is the face's own.
struct ClockThread {
    virtual ~ClockThread() = default;
};
using ClockThreadPtr = std::shared_ptr<ClockThread>;
ClockThreadPtr CLOCK_StartThread(std::function<void()> body);
// Waits until the thread's body has returned; any thread but the one waited for.
void CLOCK_JoinThread(const ClockThreadPtr& thread);

// The operations that a face of the clock offers; the meaning is that of the functions above.
struct ClockFace {
    std::function<Moment()> now;
    std::function<bool(Moment, const Condition&)> wait;
    std::function<void()> notify;
    std::function<CivilTime()> localTime;
    std::function<ClockThreadPtr(std::function<void()>)> startThread;
    std::function<void(const ClockThreadPtr&)> joinThread;
};

// Puts another face in place, or the system clock back (nullptr). Only while no other thread runs.
void CLOCK_SetFace(const ClockFace* face);
