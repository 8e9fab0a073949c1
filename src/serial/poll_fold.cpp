#include "serial/poll_fold.h"

#include "platform/format.h"

#include <utility>

namespace {

constexpr uint32_t kLongestCountMs = 10'000; // so that whoever follows the file sees it live

} // namespace

void PollFold::beginPoll() {
    current_.clear();
    held_.clear();
    writing_ = false;
    mixed_ = false;
}

void PollFold::endPoll(uint32_t nowMs, std::vector<LogEntry>& out) {
    if (writing_) {
        last_ = mixed_ ? std::vector<std::string>() : std::exchange(current_, {});
        return;
    }
    if (held_.empty()) {
        return;
    }
    if (held_.size() < last_.size()) { // the answer did not come, or not all of it
        flush(out);
        last_.clear();
        return;
    }
    if (times_++ == 0) {
        firstMs_ = held_.front().atMs;
    }
    lastMs_ = nowMs;
    held_.clear();
    if (lastMs_ - firstMs_ >= kLongestCountMs) {
        flush(out);
    }
}

void PollFold::take(LogEntry entry, bool ofPoll, std::vector<LogEntry>& out) {
    if (ofPoll && !writing_ && held_.size() < last_.size() && last_[held_.size()] == entry.text) {
        held_.push_back(std::move(entry));
        return;
    }
    flush(out);
    if (ofPoll) {
        current_.push_back(entry.text);
    } else {
        last_.clear();
        mixed_ = true;
    }
    writing_ = true;
    out.push_back(std::move(entry));
}

void PollFold::flush(std::vector<LogEntry>& out) {
    if (times_ > 0) {
        out.push_back({lastMs_, formatText("           The %zu lines above came %u times more "
                                           "within %u ms",
                                           last_.size(), times_, lastMs_ - firstMs_)});
        times_ = 0;
    }
    writing_ = writing_ || !held_.empty();
    for (LogEntry& entry : held_) {
        current_.push_back(entry.text);
        out.push_back(std::move(entry));
    }
    held_.clear();
}
