// Keeps the communication log short while nothing happens: a question that is asked again and again
// and answered in the same way each time is written once, then counted. Pure; times in ms.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct LogEntry {
    uint32_t atMs = 0;
    std::string text;
};

// What is to be written is appended to `out`, in order.
class PollFold {
public:
    // The entries from here to the end belong to one poll, those of others excepted.
    void beginPoll();
    void endPoll(uint32_t nowMs, std::vector<LogEntry>& out);
    void take(LogEntry entry, bool ofPoll, std::vector<LogEntry>& out);
    // Writes the count, if there is one, and what is held back.
    void flush(std::vector<LogEntry>& out);

private:
    std::vector<std::string> last_;    // of the poll that was written last; empty: there is none to
                                       // count as the same
    std::vector<std::string> current_; // of the poll under way, as far as it is written
    std::vector<LogEntry> held_;       // of the poll under way, while it is like the last one
    bool writing_ = false;             // it is not
    bool mixed_ = false;               // something else came in between
    uint32_t times_ = 0;
    uint32_t firstMs_ = 0;
    uint32_t lastMs_ = 0;
};
