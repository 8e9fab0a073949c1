#include "shell/watched_file.h"

#include "data/program_format.h"

#include <algorithm>
#include <array>

namespace {

constexpr int64_t kStillMs = 300;     // whoever writes in pieces has written the next one by then
constexpr int64_t kPatienceMs = 3000; // with what does not look like the end
constexpr size_t kTailLength = kLongestRecord + 100; // characters: the last record and some ends

std::string tailOf(const std::string& path) {
    std::string tail;
    FileReader file;
    if (!file.open(path).ok()) {
        return tail;
    }
    std::array<char, 1 << 16> piece;
    ptrdiff_t count = 0;
    while ((count = file.read(piece)) > 0) {
        tail.append(piece.data(), static_cast<size_t>(count));
        tail.erase(0, tail.size() - std::min(tail.size(), kTailLength));
    }
    return tail;
}

// The last line that is not empty, a Ctrl-Z counting as such.
bool endsWithEndRecord(const std::string& path) {
    std::string tail = tailOf(path);
    const auto isBlank = [](char c) { return c >= 0 && c <= ' '; };
    while (!tail.empty() && isBlank(tail.back())) {
        tail.pop_back();
    }
    const std::string line = tail.substr(tail.find_last_of("\r\n") + 1);
    const ProgramFormat* format = PROGRAMFORMAT_Find([&line](const ProgramFormat& row) {
        return !line.empty() && line.front() == row.firstCharacter;
    });
    return format != nullptr && format->isEndRecord(line);
}

} // namespace

void WatchedFile::take() {
    told_ = sight();
    seen_ = told_;
    hadEnd_ = endsWithEndRecord(path_);
}

bool WatchedFile::isAsTold() const {
    return told_ == sight();
}

FileLook WatchedFile::look() {
    const Sight now = sight();
    if (seen_ != now) {
        seen_ = now;
        since_ = CLOCK_Now();
        hasEnd_.reset();
    }
    if (told_ == now) {
        return FileLook::same;
    }
    const FileLook found = judge((CLOCK_Now().us - since_.us) / 1000);
    if (found != FileLook::changing) {
        told_ = now;
    }
    return found;
}

FileLook WatchedFile::judge(int64_t stillMs) {
    if (stillMs < kStillMs) {
        return FileLook::changing;
    }
    if (seen_.stamp && !hasEnd_) {
        hasEnd_ = endsWithEndRecord(path_);
    }
    if (hasEnd_.value_or(false)) {
        hadEnd_ = true;
        return FileLook::whole;
    }
    if (stillMs < kPatienceMs) {
        return FileLook::changing;
    }
    if (!seen_.stamp) {
        return FileLook::gone;
    }
    return hadEnd_ ? FileLook::cutOff : FileLook::whole;
}
