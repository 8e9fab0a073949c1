#include "platform/clock.h"

#include "platform/system_clock.h"

namespace {

// Read by every thread, changed only while no other thread runs.
const ClockFace* currentFace = nullptr;

const ClockFace& face() {
    return currentFace != nullptr ? *currentFace : SYSTEMCLOCK_Face();
}

} // namespace

Moment CLOCK_Now() {
    return face().now();
}

Moment CLOCK_After(int64_t ms) {
    return CLOCK_AfterUs(ms * 1000);
}

Moment CLOCK_AfterUs(int64_t us) {
    return Moment{CLOCK_Now().us + us};
}

uint32_t CLOCK_Tick() {
    return static_cast<uint32_t>(CLOCK_Now().us / 1000);
}

bool CLOCK_Wait(Moment deadline, const Condition& ready) {
    return face().wait(deadline, ready);
}

void CLOCK_Notify() {
    face().notify();
}

void CLOCK_Sleep(int64_t ms) {
    CLOCK_Wait(CLOCK_After(ms), [] { return false; });
}

CivilTime CLOCK_LocalTime() {
    return face().localTime();
}

ClockThreadPtr CLOCK_StartThread(std::function<void()> body) {
    return face().startThread(std::move(body));
}

void CLOCK_JoinThread(const ClockThreadPtr& thread) {
    if (thread) {
        face().joinThread(thread);
    }
}

void CLOCK_SetFace(const ClockFace* face) {
    currentFace = face;
}
