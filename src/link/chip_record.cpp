#include "link/chip_record.h"

#include <atomic>
#include <iterator>
#include <map>
#include <mutex>

namespace {

std::mutex recordMutex; // guards what follows
// From each key up to the next one the same holds; before the first one and behind the last one
// nothing is known.
std::map<uint64_t, ChipFacts> stretches;
std::string chipName;

std::atomic<uint64_t> revision{0};

using Stretch = std::map<uint64_t, ChipFacts>::iterator;

// The stretch that begins at `address`, cut off from the one before.
Stretch cutAt(uint64_t address) {
    const Stretch next = stretches.lower_bound(address);
    if (next != stretches.end() && next->first == address) {
        return next;
    }
    const ChipFacts facts = next == stretches.begin() ? ChipFacts() : std::prev(next)->second;
    return stretches.emplace_hint(next, address, facts);
}

// Takes away the beginning of a stretch that says what the one before says.
void joinAt(Stretch at) {
    if (at == stretches.end()) {
        return;
    }
    const ChipFacts before = at == stretches.begin() ? ChipFacts() : std::prev(at)->second;
    if (before == at->second) {
        stretches.erase(at);
    }
}

template <class Change>
void change(const AddressRange& range, const Change& apply) {
    if (range.empty()) {
        return;
    }
    const std::lock_guard lock(recordMutex);
    const Stretch first = cutAt(range.start);
    const Stretch end = cutAt(range.end);
    for (Stretch at = first; at != end;) {
        apply(at->second);
        joinAt(at++);
    }
    joinAt(end);
    ++revision;
}

} // namespace

void CHIPRECORD_Note(const AddressRange& range, ChipMark mark) {
    change(range, [mark](ChipFacts& facts) {
        facts.mark = mark;
        facts.isProtected = facts.isProtected && mark != ChipMark::erased;
    });
}

void CHIPRECORD_NoteProtected(const AddressRange& range) {
    change(range, [](ChipFacts& facts) { facts.isProtected = true; });
}

std::vector<ChipStretch> CHIPRECORD_Get() {
    const std::lock_guard lock(recordMutex);
    std::vector<ChipStretch> list;
    for (auto at = stretches.begin(); at != stretches.end(); ++at) {
        if (at->second != ChipFacts()) { // then another one follows
            list.push_back({{static_cast<uint32_t>(at->first), std::next(at)->first}, at->second});
        }
    }
    return list;
}

uint64_t CHIPRECORD_Revision() {
    return revision;
}

void CHIPRECORD_Forget() {
    const std::lock_guard lock(recordMutex);
    stretches.clear();
    ++revision;
}

void CHIPRECORD_SetChip(const std::string& name) {
    const std::lock_guard lock(recordMutex);
    if (chipName != name) {
        chipName = name;
        stretches.clear();
        ++revision;
    }
}
