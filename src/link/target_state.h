// The state that the user-interface thread and the worker share about the connection to the target.
// Both write them, so all are atomic; what an operation works on is handed over with it.
#pragma once

#include <atomic>
#include <cstdint>

enum LinkStateCode : int {
    LINK_IDLE = 0,    // not connected; the worker passes received bytes to the terminal
    LINK_BOOTROM = 1, // the user-interface thread talks to the boot ROM; the worker keeps off
    LINK_RAMCODE = 2, // the RAM loader runs; the worker owns the port
};

struct TargetState {
    std::atomic<int> LinkState{LINK_IDLE};
    std::atomic<int64_t> IdleSinceUs{0}; // when the link became idle last
    std::atomic<int> Operation{0};       // its code; 0: none, the worker then polls the loader
    std::atomic<int> Cancel{0};
    std::atomic<int> Stop{0};
    std::atomic<int> Exchanging{0}; // the worker has a frame under way and takes its answer
    std::atomic<int> Identified{0}; // the loader has answered an identify frame

    std::atomic<uint32_t> PageLen{0};    // bytes; 0: word mode
    std::atomic<uint32_t> PacketSize{0}; // bytes
};

// The one state of the process.
TargetState& TARGET_State();
// Sets the link state and wakes whoever waits for it. Entering LINK_RAMCODE forgets what an earlier
// loader said of itself. Any thread.
void TARGET_SetLinkState(int linkState);
// Changes the link state only if it still is `from`; whether it did. For the worker, which must not
// take back what the user-interface thread has decided meanwhile.
bool TARGET_LeaveLinkState(int from, int to);
// The loader has identified itself: wakes whoever waits for that. Any thread.
void TARGET_SetIdentified();
