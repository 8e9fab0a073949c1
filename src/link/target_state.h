// The state that the user-interface thread and the worker share about the connection to the target.
// Words that both write are atomic; the operation's context belongs to whoever runs: the command
// before it posts the operation, the worker until the operation has ended.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

enum LinkStateCode : int {
    LINK_IDLE = 0,    // not connected; the worker passes received bytes to the terminal
    LINK_BOOTROM = 1, // the user-interface thread talks to the boot ROM; the worker keeps off
    LINK_RAMCODE = 2, // the RAM loader runs; the worker owns the port
};

enum TargetErrorCode : int {
    TERR_NONE = 0,
    TERR_ERASE = 1,
    TERR_WRITE = 2,
    TERR_COMPARE = 3,
    TERR_NOT_BLANK = 4,
    TERR_NAK = 5,
    TERR_PROTECT = 6,
    TERR_TIMEOUT = 7,
    TERR_UNKNOWN = 0x100, // added to a code that the loader reports and nobody knows
};

inline constexpr size_t kMaxReply = 1000; // payload bytes of the longest reply

struct TargetState {
    std::atomic<int> LinkState{LINK_IDLE};
    std::atomic<int> Operation{0}; // 0: none; the worker then polls the loader
    std::atomic<int> OperationOk{0};
    std::atomic<int> Cancel{0};
    std::atomic<int> Stop{0};
    std::atomic<int> Exchanging{0}; // the worker has a frame under way and takes its answer
    std::atomic<int> Identified{0}; // the loader has answered an identify frame

    std::atomic<int> Error{TERR_NONE};
    uint32_t ErrorAddress = 0;
    uint8_t ErrorContents = 0;

    std::atomic<uint32_t> PageLen{0};    // bytes; 0: word mode
    std::atomic<uint32_t> PacketSize{0}; // bytes

    // Operation context, set by the command; what an operation counts for itself is its own.
    uint32_t RangeStart = 0;
    uint32_t RangeEnd = 0; // inclusive
    int AllBlocks = 0;

    // Last reply.
    uint32_t ReplyAddress = 0;
    uint32_t ReplyLength = 0;
    std::vector<uint8_t> ReplyData;
    uint16_t TargetCrc = 0;
    uint16_t TargetSum = 0;
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
