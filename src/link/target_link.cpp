#include "link/target_link.h"

#include "link/target_state.h"
#include "notice/error.h"
#include "notice/progress.h"
#include "platform/clock.h"

#include <atomic>

namespace {

constexpr int kDisconnectPauseMs = 100;

std::atomic<int> bootState{BOOT_UNSYNCED};
std::atomic<int> bootResult{0};

} // namespace

int BOOT_GetState() {
    return bootState;
}

void BOOT_SetState(int state) {
    bootState = state;
}

int BOOT_GetResult() {
    return bootResult;
}

void BOOT_SetResult(int result) {
    bootResult = result;
}

void _BootReset() {
    bootState = BOOT_UNSYNCED;
    bootResult = 0;
    PROGRESS_Done();
}

// The link state goes first: a command that the reset releases must not find a link that is about
// to be taken away.
void TARGET_Disconnect() {
    TARGET_SetLinkState(LINK_IDLE);
    _BootReset();
    CLOCK_Sleep(kDisconnectPauseMs);
}

void TARGET_ReportError(std::string_view text, int exitCode) {
    ERROR_Out(nullptr, text, exitCode);
    _BootReset();
}
