// What the RAM loader answers, and the exchange of one command with its reply. Worker thread only,
// but for the pure functions.
#pragma once

#include "link/failure.h"
#include "target/frame.h"
#include "target/loader_command.h"

#include <cstdint>
#include <span>
#include <vector>

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

// Sends a command with its numbers and data and awaits its reply, `replyData` bytes of data in it:
// as long as the command says and the bytes of both take on the line.
Result<Reply> exchange(const LoaderCommand& command, const Fields& fields = {},
                       std::span<const uint8_t> data = {}, size_t replyData = 0);
// Reads `count` bytes from an image address on; a reply about anything else is a link error, since
// nothing can be concluded from it.
Result<Reply> readTarget(const LoaderCommand& command, uint32_t address, uint32_t count);
// The same for up to `count` bytes, at least one, for callers who then ask for the rest.
Result<Reply> readSome(const LoaderCommand& command, uint32_t address, uint32_t count);

// An image address as the chip knows it.
uint32_t TARGET_ToChipAddress(uint32_t address);
// How many of `count` image addresses from `address` on are neighbours on the chip as well.
uint32_t mappedRun(uint32_t address, uint32_t count);
