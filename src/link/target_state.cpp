#include "link/target_state.h"

#include "notice/status.h"
#include "platform/clock.h"
#include "platform/event_queue.h"

#include <mutex>

namespace {

void wakeWaiters() {
    CLOCK_Notify();
    EVENTS_Post([] {}); // the user-interface thread waits for events, not for words
}

void noteIdle(TargetState& state, int linkState) {
    if (linkState == LINK_IDLE) {
        state.IdleSinceUs = CLOCK_Now().us;
    }
}

// Connected is a loader that has identified itself, nothing before it.
void showConnection() {
    static std::mutex order; // what is shown last is what holds last
    const std::lock_guard lock(order);
    const TargetState& state = TARGET_State();
    const bool connected = state.LinkState == LINK_RAMCODE && state.Identified != 0;
    STATUS_SetText(connected ? "Connected" : "Disconnected", STATUS_CONNECTION);
}

// The loader that runs now has not said anything yet, whatever an earlier one said.
void forgetLoader(TargetState& state, int linkState) {
    if (linkState == LINK_RAMCODE) {
        state.Identified = 0;
    }
}

} // namespace

TargetState& TARGET_State() {
    static TargetState state;
    return state;
}

void TARGET_SetLinkState(int linkState) {
    TargetState& state = TARGET_State();
    if (state.LinkState != linkState) {
        forgetLoader(state, linkState);
        noteIdle(state, linkState);
    }
    state.LinkState = linkState;
    showConnection();
    wakeWaiters();
}

bool TARGET_LeaveLinkState(int from, int to) {
    noteIdle(TARGET_State(), to);
    if (!TARGET_State().LinkState.compare_exchange_strong(from, to)) {
        return false;
    }
    showConnection();
    wakeWaiters();
    return true;
}

void TARGET_SetIdentified() {
    if (TARGET_State().Identified.exchange(1) == 0) {
        showConnection();
        wakeWaiters();
    }
}
