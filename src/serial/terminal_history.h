// What went over the line while it was the terminal's, in the order in which it happened: pieces
// of received and of sent bytes with the time of day, and notes between them. The oldest go when
// there are too many. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum class TerminalSource { received, sent, note };

struct TerminalPiece {
    TerminalSource source = TerminalSource::received;
    uint32_t timeMs = 0; // of its first byte, since midnight, local time
    std::string bytes;   // of a note: its text
};

// What is kept: at least the bytes of kHistoryBytes, in pieces of a line each; of lines of a few
// bytes only the last kHistoryPieces.
inline constexpr size_t kHistoryBytes = size_t{512} * 1024;
inline constexpr size_t kHistoryPieces = size_t{128} * 1024;

void TERMHISTORY_Add(TerminalSource source, std::span<const uint8_t> bytes);
// A note is a line of its own.
void TERMHISTORY_Note(std::string_view text);

// A position counts all bytes that there have ever been; 0 is before the first.
struct TerminalNews {
    std::vector<TerminalPiece> pieces;
    uint64_t missing = 0; // bytes behind the position asked for that are not kept any more
    uint64_t end = 0;     // where to ask next
};
// What has come since a position that an earlier call gave.
TerminalNews TERMHISTORY_Since(uint64_t position);
// Forgets all; positions go on.
void TERMHISTORY_Clear();
