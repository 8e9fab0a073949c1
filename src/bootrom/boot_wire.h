// The words of a conversation with the boot ROM: reading what must come, checking it, failing. An
// answer that does not come is a failure without a reason; whoever began the conversation reports.
#pragma once

#include "link/failure.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

inline constexpr uint32_t kReplyMs = 1000;

// Whether waiting for the boot ROM has become pointless: the run was interrupted, or the port is
// lost or closed.
bool bootIsHopeless();
// Reads the whole buffer, processing events until its first byte comes. TERR_TIMEOUT when fewer
// bytes came in `timeoutMs`, beside the time that command and answer take on the line, or waiting
// is pointless.
Result<> bootRead(std::span<uint8_t> buffer, uint32_t timeoutMs);

// Reports why a conversation failed and leaves the boot ROM unsynchronised: whatever it waits for
// now, a reset ends it. A failure that has no reason and needs one is reported as `otherwise`,
// unless that is empty. A lost port is named behind either. What the user has done himself is said
// as such: a Cancel as "Action canceled", an interruption by whoever ends the run.
void _BootFail(const Failure& failure, std::string_view otherwise = "");
// The result of a step, with this text as all that is to be said where a chip that is there did not
// answer in it: for silences whose cause is known not to be the password.
Result<> bootSilence(const Result<>& step, std::string_view text);
// A failure for this reason unless the condition holds.
Result<> _BootCheck(bool condition, std::string_view text);

// Sends a byte that the boot ROM answers with `answer`.
Result<> bootExchange(uint8_t sent, uint8_t answer, std::string_view text);
// Sends a command byte that the boot ROM echoes.
Result<> bootCommand(uint8_t command, std::string_view text);
// Awaits one byte that must be `answer`.
Result<> bootAwait(uint8_t answer, std::string_view text, uint32_t timeoutMs = kReplyMs);

// Awaits `answer` among other bytes, which are passed over: late or stray ones. TERR_TIMEOUT when
// nothing came at all, else a failure for this reason. What was passed over is added to `others`.
Result<> bootAwaitAmong(uint8_t answer, std::string_view text, uint32_t timeoutMs,
                        std::string* others = nullptr);
// A failure for this reason unless what was received is the answer.
Result<> bootMatches(uint8_t received, uint8_t answer, std::string_view text);

// The two's complement of the sum of the bytes: a block and this byte add up to 0.
uint8_t bootChecksum(std::span<const uint8_t> bytes);
