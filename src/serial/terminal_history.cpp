#include "serial/terminal_history.h"

#include "platform/clock.h"

#include <algorithm>
#include <deque>
#include <mutex>

namespace {

constexpr size_t kLongestPiece = 4096; // bytes; what is dropped goes a piece at a time

struct KeptPiece {
    uint64_t begin = 0;
    TerminalPiece piece;
};

std::mutex historyMutex;
std::deque<KeptPiece> keptPieces;
uint64_t historyEnd = 0;

uint32_t timeOfDayMs() {
    const CivilTime now = CLOCK_LocalTime();
    return static_cast<uint32_t>(((now.hour * 60 + now.minute) * 60 + now.second) * 1000 +
                                 now.millisecond);
}

// Whether bytes that come now stand in one piece with the last: a line begins a new one, for its
// time.
bool continuesLast(TerminalSource source, std::string_view bytes) {
    if (keptPieces.empty() || source == TerminalSource::note) {
        return false;
    }
    const TerminalPiece& last = keptPieces.back().piece;
    const char end = last.bytes.back();
    const bool lineEnded = end == '\n' || (end == '\r' && bytes.front() != '\n');
    return last.source == source && !lineEnded && last.bytes.size() + bytes.size() <= kLongestPiece;
}

void dropOldest() {
    while (keptPieces.size() > kHistoryPieces ||
           (keptPieces.size() > 1 && historyEnd - keptPieces[1].begin >= kHistoryBytes)) {
        keptPieces.pop_front();
    }
}

void addPiece(TerminalSource source, std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    const std::lock_guard lock(historyMutex);
    if (continuesLast(source, bytes)) {
        keptPieces.back().piece.bytes += bytes;
    } else {
        keptPieces.push_back({historyEnd, {source, timeOfDayMs(), std::string(bytes)}});
    }
    historyEnd += bytes.size();
    dropOldest();
}

} // namespace

void TERMHISTORY_Add(TerminalSource source, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), kLongestPiece));
        addPiece(source, {reinterpret_cast<const char*>(part.data()), part.size()});
        bytes = bytes.subspan(part.size());
    }
}

void TERMHISTORY_Note(std::string_view text) {
    addPiece(TerminalSource::note, text);
}

TerminalNews TERMHISTORY_Since(uint64_t position) {
    const std::lock_guard lock(historyMutex);
    TerminalNews news;
    news.end = historyEnd;
    const uint64_t first = keptPieces.empty() ? historyEnd : keptPieces.front().begin;
    news.missing = first > position ? first - position : 0;
    const uint64_t from = std::max(first, position);
    const auto behind = std::ranges::upper_bound(keptPieces, from, {}, &KeptPiece::begin);
    for (auto it = behind == keptPieces.begin() ? behind : behind - 1; it != keptPieces.end();
         ++it) {
        const uint64_t seen = from > it->begin ? from - it->begin : 0;
        if (seen < it->piece.bytes.size()) {
            news.pieces.push_back({it->piece.source, it->piece.timeMs,
                                   it->piece.bytes.substr(static_cast<size_t>(seen))});
        }
    }
    return news;
}

void TERMHISTORY_Clear() {
    const std::lock_guard lock(historyMutex);
    keptPieces.clear();
}
