// What the RAM loader answers, and the exchange of one command with its reply. Worker thread only,
// but for the pure functions.
#pragma once

#include "link/failure.h"
#include "target/frame.h"

#include <cstdint>
#include <span>
#include <vector>

enum class ReplyKind {
    malformed, // too short, or its inner length is wrong
    identify,
    data,
    crc,
    sum,
    nak,
    error,
    acknowledge, // any other
};

struct Reply {
    ReplyKind kind = ReplyKind::malformed;
    uint16_t value = 0;   // packet size, CRC or SUM
    uint32_t address = 0; // as the chip names it, of the image once it is handled
    uint8_t code = 0;     // of an error
    uint8_t contents = 0;
    std::vector<uint8_t> data;
};

// Takes a payload apart. Pure.
Reply parseReply(std::span<const uint8_t> payload);

// The reply in a payload; a failure when it is an error reply or not of the kind that the command
// must be answered with. Pure but for the selected device, whose addresses it takes to the image's.
Result<Reply> TARGET_HandleReply(std::span<const uint8_t> payload, ReplyKind wanted);

// Sends a command and awaits its reply.
Result<Reply> exchange(const PayloadWriter& command, std::span<const uint8_t> data,
                       uint32_t timeoutMs, ReplyKind wanted);
// Reads `count` bytes from an image address on; a reply about anything else is a link error, since
// nothing can be concluded from it.
Result<Reply> readTarget(uint32_t address, uint32_t count, uint32_t timeoutMs);
// The same for up to `count` bytes, at least one, for callers who then ask for the rest.
Result<Reply> readSome(uint32_t address, uint32_t count, uint32_t timeoutMs);

// An image address as the chip knows it.
uint32_t TARGET_ToChipAddress(uint32_t address);
// How many of `count` image addresses from `address` on are neighbours on the chip as well.
uint32_t mappedRun(uint32_t address, uint32_t count);
