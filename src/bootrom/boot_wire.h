// The words of a conversation with the boot ROM: reading what must come, checking it, failing. The
// functions return 0 when the conversation may go on and 1 when it has failed.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

inline constexpr uint32_t kReplyMs = 1000;

// Whether waiting for the boot ROM has become pointless: the run was interrupted, or the port is
// lost or closed.
bool _BootIsHopeless();
// Reads the whole buffer, processing events until its first byte comes. 1, without a message, when
// fewer bytes came in `timeoutMs` or waiting is pointless.
int _BootRead(std::span<uint8_t> buffer, uint32_t timeoutMs);

// Reports the text and leaves the boot ROM unsynchronised.
void _BootFail(std::string_view text);
// 0 when the condition holds, else _BootFail and 1.
int _BootCheck(bool condition, std::string_view text);

// Sends a byte that the boot ROM answers with `answer`.
int _BootExchange(uint8_t sent, uint8_t answer, std::string_view text);
// Sends a command byte that the boot ROM echoes.
int _BootCommand(uint8_t command, std::string_view text);
// Awaits one byte that must be `answer`.
int _BootAwait(uint8_t answer, std::string_view text, uint32_t timeoutMs = kReplyMs);

// Whether _BootFail has reported anything since the last _BootForgetReports, so that a failure that
// nobody has explained can be told from one that was.
bool _BootHasReported();
void _BootForgetReports();
// The user has ended the conversation and needs no explanation.
void _BootNeedsNoReport();

// The two's complement of the sum of the bytes: a block and this byte add up to 0.
uint8_t _BootChecksum(std::span<const uint8_t> bytes);
