#include "sim/replay_log.h"

#include "notice/log_text.h"
#include "platform/format.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

constexpr size_t kStampWidth = 11; // "0:00:02:031"
constexpr size_t kBodyAt = 12;     // behind the stamp and a blank
constexpr size_t kTextAt = 11;     // of the body: where an event's text or the first byte stands
constexpr int64_t kHoursWrapMs = 36'000'000;

std::optional<uint32_t> numberIn(std::string_view text, int base = 10) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    uint32_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc{} && stop == text.data() + text.size() ? std::optional(value)
                                                                     : std::nullopt;
}

std::optional<int64_t> parseStamp(std::string_view line) {
    if (line.size() <= kBodyAt || line[1] != ':' || line[4] != ':' || line[7] != ':' ||
        line[kStampWidth] != ' ') {
        return std::nullopt;
    }
    const auto hours = numberIn(line.substr(0, 1));
    const auto minutes = numberIn(line.substr(2, 2));
    const auto seconds = numberIn(line.substr(5, 2));
    const auto ms = numberIn(line.substr(8, 3));
    if (!hours || !minutes || !seconds || !ms) {
        return std::nullopt;
    }
    return ((int64_t{*hours} * 60 + *minutes) * 60 + *seconds) * 1000 + *ms;
}

// The bytes of a data entry; none when there are not as many as it says.
std::optional<std::vector<uint8_t>> parseBytes(std::string_view body) {
    const auto count = numberIn(body.substr(0, 4));
    std::vector<uint8_t> bytes;
    for (size_t at = kTextAt; at + 1 < body.size(); at += 3) {
        const auto value = numberIn(body.substr(at, 2), 16);
        if (!value) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<uint8_t>(*value));
    }
    return count && *count == bytes.size() ? std::optional(bytes) : std::nullopt;
}

class LogParser {
public:
    // False when a line looks like an entry and is none.
    bool take(std::string_view line) {
        ++lineNumber_;
        const auto stamp = parseStamp(line);
        if (!stamp) {
            return true; // the header, a rule
        }
        if (*stamp + wrappedMs_ < nowMs_ - kHoursWrapMs / 2) {
            wrappedMs_ += kHoursWrapMs;
        }
        nowMs_ = *stamp + wrappedMs_;
        return takeEntry(line.substr(kBodyAt));
    }
    size_t lineNumber() const { return lineNumber_; }
    std::vector<ReplayItem> items;

private:
    bool takeEntry(std::string_view body) {
        if (body.starts_with(std::string(kTextAt, ' '))) {
            takeEvent(body.substr(kTextAt));
            return true;
        }
        const std::string_view direction = body.size() > kTextAt ? body.substr(5, 5) : "";
        const auto bytes = parseBytes(body);
        if (!bytes || (direction != "WRITE" && direction != "READ ")) {
            return false;
        }
        ReplayItem& item = add();
        item.kind = direction == "WRITE" ? ReplayItem::Kind::host : ReplayItem::Kind::chip;
        item.bytes = *bytes;
        return true;
    }

    // "COM1 opened with 9600 Baud", "Rate 9600 Bd, DTR off, RTS on", "DTR on"; others say nothing
    // of the line.
    void takeEvent(std::string_view text) {
        using enum HostEvent::Kind;
        const std::string_view opened = " opened with ";
        const std::string_view rateWord = "Rate ";
        const size_t at = text.find(opened);
        const bool opens = text.starts_with("COM") && at != std::string_view::npos;
        if (opens || text.starts_with(rateWord)) {
            const std::string_view rest = text.substr(opens ? at + opened.size() : rateWord.size());
            if (const auto rate = numberIn(rest.substr(0, rest.find(' ')))) {
                epoch_ += opens ? 1 : 0;
                set(HostEvent::Kind::rate, *rate, rate_);
                set(dtr, 0, dtr_); // as every change of the rate leaves them
                set(rts, 1, rts_);
            }
        } else if (text == "DTR on" || text == "DTR off") {
            set(dtr, text == "DTR on" ? 1 : 0, dtr_);
        } else if (text == "RTS on" || text == "RTS off") {
            set(rts, text == "RTS on" ? 1 : 0, rts_);
        } else if (text.starts_with("Closing ")) {
            ++epoch_;
        }
    }

    void set(HostEvent::Kind what, uint32_t value, uint32_t& state) {
        if (state == value) {
            return;
        }
        state = value;
        ++epoch_;
        ReplayItem& item = add();
        item.kind = ReplayItem::Kind::line;
        item.what = what;
        item.value = value;
    }

    ReplayItem& add() {
        ReplayItem& item = items.emplace_back();
        item.atMs = nowMs_;
        item.line = lineNumber_;
        item.epoch = epoch_;
        return item;
    }

    size_t lineNumber_ = 0;
    int64_t nowMs_ = 0;
    int64_t wrappedMs_ = 0;
    uint32_t rate_ = 0;
    uint32_t dtr_ = 0;
    uint32_t rts_ = 1;
    uint32_t epoch_ = 0;
};

using Items = std::vector<ReplayItem>;

size_t endOfRun(const Items& items, size_t from) {
    size_t end = from;
    while (end < items.size() && items[end].kind == items[from].kind) {
        ++end;
    }
    return end;
}

std::vector<uint8_t> bytesOf(const Items& items, size_t from, size_t end) {
    std::vector<uint8_t> bytes;
    for (size_t i = from; i < end; ++i) {
        bytes.insert(bytes.end(), items[i].bytes.begin(), items[i].bytes.end());
    }
    return bytes;
}

// Makes each poll one item, and drops those that go as the one before.
Items withoutRepeatedPolls(const Items& items) {
    Items kept;
    std::vector<uint8_t> lastReply;
    for (size_t at = 0; at < items.size();) {
        const size_t end = endOfRun(items, at);
        const bool isPoll = items[at].kind == ReplayItem::Kind::host &&
                            std::ranges::equal(bytesOf(items, at, end), kPollFrame);
        if (!isPoll) {
            kept.insert(kept.end(), items.begin() + static_cast<ptrdiff_t>(at),
                        items.begin() + static_cast<ptrdiff_t>(end));
            at = end;
            continue;
        }
        const bool answered = end < items.size() && items[end].kind == ReplayItem::Kind::chip;
        const size_t replyEnd = answered ? endOfRun(items, end) : end;
        std::vector<uint8_t> reply = bytesOf(items, end, replyEnd);
        if (reply != lastReply || reply.empty()) {
            ReplayItem& poll = kept.emplace_back(items[at]);
            poll.bytes.assign(std::begin(kPollFrame), std::end(kPollFrame));
            poll.poll = true;
            if (answered) {
                kept.emplace_back(items[end]).bytes = reply;
            }
        }
        lastReply = std::move(reply);
        at = replyEnd;
    }
    return kept;
}

} // namespace

std::vector<ReplayItem> REPLAY_ParseLog(std::string_view text, std::string& error) {
    LogParser parser;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!parser.take(line)) {
            error = formatText("line %zu is no entry of a communication log", parser.lineNumber());
            return {};
        }
    }
    Items items = withoutRepeatedPolls(parser.items);
    if (items.empty()) {
        error = "no communication log, or an empty one";
    }
    return items;
}

std::string REPLAY_Stamp(int64_t ms) {
    return LOG_Stamp(static_cast<unsigned>(ms));
}

std::string REPLAY_LineText(HostEvent::Kind what, uint32_t value) {
    if (what == HostEvent::Kind::rate) {
        return formatText("a rate of %u Bd", value);
    }
    return std::string(what == HostEvent::Kind::dtr ? "DTR" : "RTS") +
           (value != 0 ? " on" : " off");
}
