// The frames of the RAM-code link: EB ED, length, payload, sum, EC. Worker thread only.
#pragma once

#include "platform/clock.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

inline constexpr size_t kMaxReply = 1000; // payload bytes of the longest reply
inline constexpr size_t kFrameBytes = 6;  // around the payload

// The numbers of a command, one behind the other, low byte first.
class Fields {
public:
    Fields& u8(uint8_t value);
    Fields& u16(uint32_t value);
    Fields& u32(uint32_t value);
    std::span<const uint8_t> bytes() const { return bytes_; }

private:
    std::vector<uint8_t> bytes_;
};

// Sends one frame whose payload is `head` followed by `data`; awaits nothing.
void TARGET_SendFrame(std::span<const uint8_t> head, std::span<const uint8_t> data = {});
// What ends the wait for a frame early: `now` as a timeout does, at once; `soon` when the frame has
// not begun 300 ms later, so that an answer that is on its way is still taken whole.
struct FrameStop {
    Condition now;
    Condition soon;
};
// Awaits one frame, its first byte until `deadline`: the payload's length, or -1 for anything
// that is not a good frame of at most kMaxReply bytes. What was read of a bad frame is dropped.
// A frame that has begun may pause, as a busy computer or a port server makes it: it ends when it
// is overdue (1000 ms beside the time that its bytes take) and the line was silent for 500 ms.
int TARGET_ReceiveFrame(std::vector<uint8_t>& payload, Moment deadline, const FrameStop& stop);
