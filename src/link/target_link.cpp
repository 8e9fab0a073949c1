#include "link/target_link.h"

#include "link/target_state.h"
#include "notice/error.h"
#include "notice/progress.h"
#include "platform/clock.h"

#include <atomic>

namespace {

constexpr int kDisconnectPauseMs = 100;
constexpr int kLongestExchangeMs = 2000; // of a loader that the link has been taken from

std::atomic<int> bootState{BOOT_UNSYNCED};

} // namespace

int BOOT_GetState() {
    return bootState;
}

void BOOT_SetState(int state) {
    bootState = state;
}

void _BootReset() {
    bootState = BOOT_UNSYNCED;
    PROGRESS_Done();
}

void TARGET_AwaitPort() {
    CLOCK_Wait(CLOCK_After(kLongestExchangeMs), [] { return TARGET_State().Exchanging == 0; });
}

// The link state goes first: a command that the reset releases must not find a link that is about
// to be taken away.
void TARGET_Disconnect() {
    TARGET_SetLinkState(LINK_IDLE);
    _BootReset();
    CLOCK_Sleep(kDisconnectPauseMs);
    TARGET_AwaitPort();
}

void TARGET_ReportError(std::string_view text, int exitCode) {
    ERROR_Out(nullptr, text, exitCode);
    _BootReset();
}
