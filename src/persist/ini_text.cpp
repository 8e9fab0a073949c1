#include "persist/ini_text.h"

#include "persist/chars.h"
#include "persist/parse.h"

#include <algorithm>

namespace {

std::string sectionLine(std::string_view section) {
    return "[" + std::string(section) + "]";
}

} // namespace

int IniText::lineNumber(size_t position) const {
    const auto end = text_.begin() + static_cast<ptrdiff_t>(position);
    return 1 + static_cast<int>(std::count(text_.begin(), end, '\n'));
}

size_t IniText::afterLine(size_t position) const {
    const char* cursor = text_.c_str() + position;
    PARSE_SkipLine(cursor);
    return static_cast<size_t>(cursor - text_.c_str());
}

size_t IniText::afterBlanks(size_t position) const {
    const char* cursor = text_.c_str() + position;
    PARSE_SkipBlanks(cursor);
    return static_cast<size_t>(cursor - text_.c_str());
}

bool IniText::standsAt(size_t position, std::string_view expected) const {
    return std::string_view(text_).substr(position).starts_with(expected);
}

// Behind one line break of any kind, where files written by hand may have another one than ours.
size_t IniText::afterOneBreak(size_t position) const {
    if (standsAt(position, "\r\n")) {
        return position + 2;
    }
    return position < text_.size() && isLineBreak(text_[position]) ? position + 1 : position;
}

std::optional<size_t> IniText::findSection(std::string_view section) const {
    const std::string line = sectionLine(section);
    for (size_t at = 0; at < text_.size(); at = afterLine(at)) {
        if (standsAt(at, line)) {
            const size_t end = text_.find_first_of("\r\n", at);
            return end == std::string::npos ? text_.size() : afterOneBreak(end);
        }
    }
    return std::nullopt;
}

std::optional<size_t> IniText::findOrCreateSection(std::string_view section) {
    std::optional<size_t> body = findSection(section);
    const bool lineIsOpen = !text_.empty() && !isLineBreak(text_.back());
    std::string addition = lineIsOpen && body.value_or(text_.size()) == text_.size() ? "\r\n" : "";
    if (!body) {
        addition += sectionLine(section) + "\r\n";
    }
    if (addition.empty()) {
        return body;
    }
    if (!fits(addition.size())) {
        return std::nullopt;
    }
    text_ += addition;
    return text_.size();
}

std::optional<size_t> IniText::findKeyFrom(size_t at, std::string_view key) const {
    for (; at < text_.size() && text_[at] != '['; at = afterLine(at)) {
        const size_t begin = afterBlanks(at);
        if (standsAt(begin, key)) {
            return begin;
        }
    }
    return std::nullopt;
}

std::optional<size_t> IniText::findKey(std::string_view section, std::string_view key) const {
    const std::optional<size_t> body = findSection(section);
    return body ? findKeyFrom(*body, key) : std::nullopt;
}

std::optional<std::string> IniText::lineOf(std::string_view section, std::string_view key) const {
    const std::optional<size_t> at = findKey(section, key);
    if (!at) {
        return std::nullopt;
    }
    return text_.substr(*at, text_.find_first_of("\r\n", *at) - *at);
}

bool IniText::put(std::string_view section, std::string_view key, const std::string& line) {
    std::string before = text_;
    erase(section, key);
    const std::optional<size_t> body = findOrCreateSection(section);
    if (!body || !fits(line.size() + 2)) {
        text_ = std::move(before);
        return false;
    }
    text_.insert(*body, line + "\r\n");
    return true;
}

void IniText::erase(std::string_view section, std::string_view key) {
    if (const std::optional<size_t> at = findKey(section, key)) {
        text_.erase(*at, afterLine(*at) - *at);
    }
}

void IniText::keepOnly(std::string_view section) {
    const std::string line = sectionLine(section);
    std::string kept;
    bool inside = false;
    for (size_t at = 0; at < text_.size();) {
        const size_t next = afterLine(at);
        inside = text_[at] == '[' ? standsAt(at, line) : inside;
        for (; at < next; ++at) {
            if (inside || isLineBreak(text_[at])) {
                kept += text_[at];
            }
        }
    }
    text_ = std::move(kept);
}
