#include "link/target_link.h"

#include "link/target_state.h"
#include "notice/error.h"
#include "notice/progress.h"
#include "platform/clock.h"

#include <atomic>

namespace {

constexpr int kDisconnectPauseMs = 100;
constexpr int kLongestExchangeMs = 2000; // of a loader that the link has been taken from

constexpr int64_t kQuietUs = 2'000'000;

std::atomic<int> bootState{BOOT_UNSYNCED};
std::atomic<bool> chipInRom{false};

} // namespace

int BOOT_GetState() {
    return bootState;
}

void BOOT_SetState(int state) {
    bootState = state;
}

bool BOOT_IsChipInRom() {
    return chipInRom;
}

void BOOT_SetChipInRom(bool inRom) {
    chipInRom = inRom;
}

void BOOT_NoteUnaskedByte() {
    if (CLOCK_Now().us - TARGET_State().IdleSinceUs > kQuietUs) {
        chipInRom = false;
    }
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

void TARGET_ReportError(std::string_view text, int exitCode, const Hint& hint) {
    ERROR_Out(nullptr, text, exitCode, hint);
    _BootReset();
}
