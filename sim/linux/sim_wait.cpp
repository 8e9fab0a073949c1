#include "sim/sim_line.h"

#include <algorithm>
#include <csignal>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

int signalDescriptor = -1;

timespec untilDeadline(Moment deadline) {
    const int64_t us = std::max<int64_t>(0, deadline.us - CLOCK_Now().us);
    return {us / 1000000, us % 1000000 * 1000};
}

} // namespace

void SIMWAIT_CatchSignals() {
    // Paced bytes are some 87 us apart: the usual slack of 50 us would show.
    prctl(PR_SET_TIMERSLACK, 1UL);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGUSR1}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    signalDescriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

SimSignal SIMWAIT_Wait(const std::vector<int>& descriptors, Moment deadline) {
    std::vector<pollfd> waits{{signalDescriptor, POLLIN, 0}};
    for (const int descriptor : descriptors) {
        waits.push_back({descriptor, POLLIN, 0});
    }
    const timespec time = deadline == kNever ? timespec{} : untilDeadline(deadline);
    if (ppoll(waits.data(), waits.size(), deadline == kNever ? nullptr : &time, nullptr) <= 0) {
        return SimSignal::none;
    }
    signalfd_siginfo info{};
    if (read(signalDescriptor, &info, sizeof info) != sizeof info) {
        return SimSignal::none;
    }
    return info.ssi_signo == SIGUSR1 ? SimSignal::saveFlash : SimSignal::end;
}
