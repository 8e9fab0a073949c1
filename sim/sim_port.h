// A serial port kind that leads to a virtual chip in the same process: the device name "sim://NAME"
// opens the line that was offered under that name. It waits through platform/clock.h alone, so it
// works under the virtual clock as under the system's.
#pragma once

#include "platform/clock.h"
#include "platform/serial_port.h"
#include "sim/chip.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

// A call of the program to the line, for tests that look at the order and the pauses.
struct LineCall {
    enum class Kind { open, close, configure, setDtr, setRts } kind = Kind::open;
    Moment at;
    uint32_t value = 0; // the rate, or 0 and 1 for off and on
    bool operator==(const LineCall&) const = default;
};

struct SimLine;
using SimLinePtr = std::shared_ptr<SimLine>;

// Makes a chip reachable as "sim://NAME", in place of any that was. Any thread.
SimLinePtr SIMPORT_Offer(std::string_view name, ChipPtr chip);
// No longer to be found; a port that is open stays open.
void SIMPORT_Withdraw(std::string_view name);

// The operations below may be called on any thread.
// The line goes dead, as when the adapter is pulled out; opening it then fails with the reason.
void SIMPORT_Unplug(const SimLinePtr& line, const std::string& reason = "No such device");
// Every byte of the chip comes that much later, as over a port server that is far away, and the
// port tells so (roundTripMs).
void SIMPORT_SetDelay(const SimLinePtr& line, int64_t ms);
void SIMPORT_Plug(const SimLinePtr& line);
uint64_t SIMPORT_BytesToChip(const SimLinePtr& line);
// How many write calls the program made.
uint64_t SIMPORT_Writes(const SimLinePtr& line);
std::vector<LineCall> SIMPORT_Calls(const SimLinePtr& line);
// Runs `look` on the chip while nobody else uses it.
void SIMPORT_WithChip(const SimLinePtr& line, const std::function<void(Chip&)>& look);
