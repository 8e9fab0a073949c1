#include "notice/run.h"

#include <atomic>

namespace {

std::atomic<int> exitCode{0};
std::atomic<unsigned> judgements{0};
std::atomic<bool> failureReported{false};
std::atomic<bool> unattended{false};
std::atomic<bool> quiet{false};
std::atomic<bool> isolated{false};
std::atomic<bool> acceptDamaged{false};
std::atomic<bool> confirmed{false};
std::atomic<bool> interrupted{false};

} // namespace

void RUN_SetExitCode(int code) {
    exitCode = code;
    ++judgements;
}

unsigned RUN_Judgements() {
    return judgements;
}

int RUN_GetExitCode() {
    return interrupted || (RUN_IsQuiet() && failureReported) ? 1 : exitCode.load();
}

void RUN_NoteFailure() {
    failureReported = true;
}

void RUN_ForgetFailure() {
    failureReported = false;
    exitCode = 0;
}

void RUN_SetUnattended(bool on) {
    unattended = on;
}

bool RUN_IsUnattended() {
    return unattended;
}

void RUN_SetQuiet(bool on) {
    quiet = on;
}

bool RUN_IsQuiet() {
    return unattended || quiet;
}

void RUN_SetIsolated(bool on) {
    isolated = on;
}

bool RUN_IsIsolated() {
    return isolated;
}

void RUN_SetAcceptDamaged(bool accept) {
    acceptDamaged = accept;
}

bool RUN_AcceptsDamaged() {
    return acceptDamaged;
}

void RUN_SetConfirmed(bool on) {
    confirmed = on;
}

bool RUN_IsConfirmed() {
    return confirmed;
}

void RUN_Interrupt() {
    interrupted = true;
}

bool RUN_IsInterrupted() {
    return interrupted;
}

void RUN_Reset() {
    exitCode = 0;
    failureReported = false;
    unattended = false;
    quiet = false;
    isolated = false;
    acceptDamaged = false;
    confirmed = false;
    interrupted = false;
}
