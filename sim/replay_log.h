// A communication log read back: what the host sent and set, what the chip answered, in order.
#pragma once

#include "sim/telnet.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct ReplayItem {
    enum class Kind { host, chip, line } kind = Kind::host;
    std::vector<uint8_t> bytes;                   // host, chip
    HostEvent::Kind what = HostEvent::Kind::rate; // line: what is changed, never data
    uint32_t value = 0;                           // line: the rate, or 0 and 1
    bool poll = false;                            // host: asks the loader whether it is there
    int64_t atMs = 0;
    size_t line = 0;    // of the file, counted from 1
    uint32_t epoch = 0; // how often the port or its lines were touched before
};

// The frame that asks the loader whether it is there.
inline constexpr uint8_t kPollFrame[] = {0xEB, 0xED, 0x01, 0x00, 0x00, 0x01, 0xEC};

// Reads a log. A poll that was answered as the one before it is left out, counted ones too, so that
// the host may poll as often as it likes; a line that changes nothing is as well. Empty with a
// message in `error` when there is nothing to play or a line cannot be read.
std::vector<ReplayItem> REPLAY_ParseLog(std::string_view text, std::string& error);
// "H:MM:SS:mmm", as the log has it.
std::string REPLAY_Stamp(int64_t ms);
// What is set, in words.
std::string REPLAY_LineText(HostEvent::Kind what, uint32_t value);
