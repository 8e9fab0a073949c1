// The chip's side of a recorded conversation, played to a host: what the log has as sent by the
// host is waited for, what it has as received is sent. The first thing that the host does otherwise
// ends it. Passive and not thread-safe, as a chip is; moments must not decrease.
#pragma once

#include "platform/clock.h"
#include "sim/replay_log.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

class Replay {
public:
    // `hasLines`: whether the line shows the host's rate and control lines; without it they are
    // passed over.
    Replay(std::vector<ReplayItem> items, bool hasLines);

    void take(const HostEvent& event, Moment now);
    // When bytes are due next.
    std::optional<Moment> nextOutput() const;
    std::vector<uint8_t> takeOutput(Moment now);

    // The line of the log where the host differs, what it has and what came; empty while it does
    // not.
    const std::string& difference() const { return difference_; }
    bool isAtEnd() const { return at_ == items_.size() && outputs_.empty(); }
    // What the log has next and the host has not done; empty at the end.
    std::string missing() const;

private:
    struct Output {
        Moment at;
        std::vector<uint8_t> bytes;
        size_t index = 0; // of the item
    };

    void takeByte(uint8_t value, Moment now);
    void takeLine(HostEvent::Kind what, uint32_t value, Moment now);
    void finishHostItem(Moment now);
    bool isPoll(Moment now);
    void advance(Moment now);
    void queueChip(const ReplayItem& item, Moment now);
    bool mayGoOn(Moment now);
    void differ(const std::string& came);
    const ReplayItem* next() const { return at_ < items_.size() ? &items_[at_] : nullptr; }

    std::vector<ReplayItem> items_;
    bool hasLines_;
    size_t at_ = 0;
    std::vector<uint8_t> turn_;  // of the host, since the item at `at_` began
    std::vector<uint8_t> frame_; // of the host, in the items that are over, back to the last answer
    size_t frameAt_ = 0;         // the item that it began with
    std::deque<Output> outputs_;
    std::vector<uint8_t> pollReply_; // to polls that the log has no more
    bool polled_ = false;            // the log has a poll
    bool begun_ = false;             // the host has done something that the log has
    Moment anchor_;                  // when the last item was over,
    int64_t anchorMs_ = 0;           // and its time in the log
    uint32_t rate_ = 0;
    uint32_t dtr_ = 0;
    uint32_t rts_ = 1;
    std::string difference_;
};
