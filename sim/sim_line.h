// How calvorin-sim reaches its host: a pseudo-terminal or a TCP connection. Linux sources.
#pragma once

#include "platform/clock.h"
#include "sim/telnet.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

using HostSink = std::function<void(const HostEvent&)>;

// A line that the server waits on. One thread.
struct SimServerLine {
    // The descriptors to wait on; below 0 none.
    std::function<std::vector<int>()> descriptors;
    // Reads what has come, once, and passes it on in order. False: the line is gone.
    std::function<bool(const HostSink& sink)> receive;
    // Sends bytes to the host; what nobody takes is dropped.
    std::function<void(std::span<const uint8_t>)> send;
    std::string address; // what is printed: a path or host:port
};
using SimServerLinePtr = std::shared_ptr<SimServerLine>;

// A raw pseudo-terminal whose other side stays open, so that hosts may come and go. `link` becomes
// a symbolic link to it when it is not empty. `rate` 0: the rate is read from the terminal.
SimServerLinePtr SIMPTY_Open(const std::string& link, uint32_t rate, std::string& error);
// An RFC 2217 server on loopback, one host at a time.
SimServerLinePtr SIMTCP_Open(int port, std::string& error);

// What a signal asks for.
enum class SimSignal { none, end, saveFlash };

// Catches SIGTERM, SIGINT and SIGUSR1 from now on; before any thread is started.
void SIMWAIT_CatchSignals();
// Waits until a descriptor can be read, a signal has come or the deadline has passed.
SimSignal SIMWAIT_Wait(const std::vector<int>& descriptors, Moment deadline);
