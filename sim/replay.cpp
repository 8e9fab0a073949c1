#include "sim/replay.h"

#include "platform/format.h"

#include <algorithm>
#include <span>
#include <utility>

namespace {

constexpr int64_t kOneReplyMs = 100; // a pause in the log that still counts as the same answer
constexpr size_t kShownBefore = 8;   // bytes before a difference and from it on
constexpr size_t kShownFrom = 8;

std::string bytesText(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += formatText(" %02X", unsigned{byte});
    }
    return text;
}

bool begins(std::span<const uint8_t> whole, std::span<const uint8_t> part) {
    return part.size() <= whole.size() && std::ranges::equal(whole.first(part.size()), part);
}

std::string itemText(const ReplayItem& item, size_t matched) {
    if (item.kind == ReplayItem::Kind::line) {
        return REPLAY_LineText(item.what, item.value);
    }
    const size_t from = matched - std::min(matched, kShownBefore);
    const size_t end = std::min(matched + kShownFrom, item.bytes.size());
    const std::string_view direction = item.kind == ReplayItem::Kind::host ? "WRITE" : "READ";
    return std::string(direction) + (from > 0 ? " ..." : "") +
           bytesText(std::span(item.bytes).subspan(from, end - from)) +
           (end < item.bytes.size() ? " ..." : "");
}

std::string place(const ReplayItem& item) {
    return formatText("line %zu (%s)", item.line, REPLAY_Stamp(item.atMs).c_str());
}

} // namespace

Replay::Replay(std::vector<ReplayItem> items, bool hasLines)
    : items_(std::move(items)), hasLines_(hasLines) {
    const auto poll = std::ranges::find(items_, true, &ReplayItem::poll);
    polled_ = poll != items_.end();
    if (polled_ && poll + 1 != items_.end() && (poll + 1)->kind == ReplayItem::Kind::chip) {
        pollReply_ = (poll + 1)->bytes;
    }
    anchorMs_ = items_.empty() ? 0 : items_.front().atMs;
}

void Replay::take(const HostEvent& event, Moment now) {
    if (anchor_.us == 0) {
        anchor_ = now;
        advance(now);
        frameAt_ = at_;
    }
    if (event.kind != HostEvent::Kind::data) {
        takeLine(event.kind, event.value, now);
        return;
    }
    for (const uint8_t byte : event.bytes) {
        if (!difference_.empty()) {
            return;
        }
        takeByte(byte, now);
    }
}

// A host that goes on while the chip has still to send part of its answer does not go by the log;
// what an application sends by itself is left where the host goes on with another conversation.
bool Replay::mayGoOn(Moment now) {
    while (!outputs_.empty() && outputs_.front().at > now) {
        const ReplayItem& unsent = items_[outputs_.front().index];
        const ReplayItem* following = next();
        if (begun_ && following != nullptr && following->epoch == unsent.epoch) {
            return false;
        }
        outputs_.pop_front();
    }
    return true;
}

void Replay::takeByte(uint8_t value, Moment now) {
    if (turn_.empty() && !mayGoOn(now)) {
        const ReplayItem& unsent = items_[outputs_.front().index];
        difference_ = place(unsent) + "\n  log:  " + itemText(unsent, 0) +
                      "\n  came:" + bytesText({&value, 1}) + " before that was sent\n";
        return;
    }
    turn_.push_back(value);
    const ReplayItem* item = next();
    const bool fits = item != nullptr && item->kind == ReplayItem::Kind::host;
    if (fits && begins(item->bytes, turn_)) {
        begun_ = true;
        if (turn_.size() == item->bytes.size()) {
            finishHostItem(now);
        }
        return;
    }
    if (!isPoll(now)) {
        differ(bytesText(turn_));
    }
}

// A frame is several items of the log, which begin alike whatever the frame is: until it is known
// for a poll that the log does not have here, it counts as what the log has.
void Replay::finishHostItem(Moment now) {
    frame_.insert(frame_.end(), turn_.begin(), turn_.end());
    turn_.clear();
    anchor_ = now;
    anchorMs_ = items_[at_].atMs;
    const size_t following = ++at_;
    const bool wasPoll = items_[at_ - 1].poll;
    advance(now);
    if (wasPoll || at_ != following || next() == nullptr ||
        next()->kind != ReplayItem::Kind::host) {
        frame_.clear();
        frameAt_ = at_;
    }
}

// Whether the turn is a poll, or may become one.
bool Replay::isPoll(Moment now) {
    std::vector<uint8_t> frame = frame_;
    frame.insert(frame.end(), turn_.begin(), turn_.end());
    if (!polled_ || !begins(kPollFrame, frame)) {
        return false;
    }
    if (!frame_.empty()) {
        frame_.clear();
        at_ = frameAt_;
        turn_ = std::move(frame);
    }
    if (turn_.size() == std::size(kPollFrame)) {
        turn_.clear();
        if (!pollReply_.empty()) {
            outputs_.push_front({now, pollReply_, at_});
        }
    }
    return true;
}

void Replay::takeLine(HostEvent::Kind what, uint32_t value, Moment now) {
    uint32_t& state = what == HostEvent::Kind::rate  ? rate_
                      : what == HostEvent::Kind::dtr ? dtr_
                                                     : rts_;
    if (!hasLines_ || !difference_.empty() || std::exchange(state, value) == value) {
        return;
    }
    const ReplayItem* item = next();
    const bool fits = item != nullptr && item->kind == ReplayItem::Kind::line &&
                      item->what == what && item->value == value && turn_.empty();
    if (!fits) {
        const bool logHasRate = item != nullptr && item->kind == ReplayItem::Kind::line &&
                                item->what == HostEvent::Kind::rate;
        if (begun_ || what != HostEvent::Kind::rate || logHasRate) {
            // Else the log begins on a line that is open already.
            differ(" " + REPLAY_LineText(what, value));
        }
        return;
    }
    begun_ = true;
    std::erase_if(outputs_, [now](const Output& output) { return output.at > now; });
    anchor_ = now;
    anchorMs_ = item->atMs;
    ++at_;
    advance(now);
    frameAt_ = at_;
}

// What needs nothing of the host.
void Replay::advance(Moment now) {
    while (const ReplayItem* item = next()) {
        if (item->kind == ReplayItem::Kind::chip) {
            queueChip(*item, now);
        } else if (item->kind == ReplayItem::Kind::host || hasLines_) {
            return;
        }
        ++at_;
    }
}

// An answer is sent at once, as no host minds that; what the chip sends by itself, or long after
// the answer's beginning, comes as long after what is before it as it did.
void Replay::queueChip(const ReplayItem& item, Moment now) {
    const ReplayItem* before = at_ > 0 ? &items_[at_ - 1] : nullptr;
    const bool answers =
        before != nullptr &&
        (before->kind == ReplayItem::Kind::host ||
         (before->kind == ReplayItem::Kind::chip && item.atMs - before->atMs <= kOneReplyMs));
    if (before != nullptr && before->poll) {
        pollReply_ = item.bytes;
    }
    Moment at{anchor_.us + (item.atMs - anchorMs_) * 1000};
    if (answers) {
        at = outputs_.empty() ? now : outputs_.back().at;
    }
    outputs_.push_back({std::max(at, now), item.bytes, at_});
    anchor_ = outputs_.back().at;
    anchorMs_ = item.atMs;
}

std::optional<Moment> Replay::nextOutput() const {
    return outputs_.empty() || !difference_.empty() ? std::nullopt
                                                    : std::optional(outputs_.front().at);
}

std::vector<uint8_t> Replay::takeOutput(Moment now) {
    std::vector<uint8_t> bytes;
    while (!outputs_.empty() && outputs_.front().at <= now) {
        bytes.insert(bytes.end(), outputs_.front().bytes.begin(), outputs_.front().bytes.end());
        outputs_.pop_front();
    }
    return bytes;
}

void Replay::differ(const std::string& came) {
    const ReplayItem* item = next();
    if (item == nullptr) {
        difference_ = "the end of the log\n  came:" + came + "\n";
        return;
    }
    size_t matched = 0;
    while (matched < std::min(turn_.size(), item->bytes.size()) &&
           turn_[matched] == item->bytes[matched]) {
        ++matched;
    }
    const size_t from = matched - std::min(matched, kShownBefore);
    const std::string shown =
        turn_.empty() ? came : (from > 0 ? " ..." : "") + bytesText(std::span(turn_).subspan(from));
    difference_ = place(*item) + "\n  log:  " + itemText(*item, matched) + "\n  came:" + shown;
    difference_ += turn_.empty() ? "\n" : formatText(" (byte %zu)\n", matched + 1);
}

std::string Replay::missing() const {
    const ReplayItem* item = next();
    if (item == nullptr) {
        return isAtEnd() ? "" : "the chip's last bytes\n";
    }
    return place(*item) + "\n  log:  " + itemText(*item, turn_.size()) +
           "\n  came: " + (turn_.empty() ? "nothing" : formatText("only %zu bytes", turn_.size())) +
           "\n";
}
