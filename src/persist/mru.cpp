#include "persist/mru.h"

#include "notice/log.h"
#include "notice/run.h"
#include "persist/chars.h"
#include "platform/format.h"
#include "platform/recent_store.h"

#include <algorithm>
#include <array>

namespace {

struct RecentList {
    size_t capacity = 0;
    std::vector<std::string> entries;
};

std::array<RecentList, kMruLists> lists;

std::string storeName(int list) {
    return formatText("Recent File List %d", list);
}

bool isKnown(int list) {
    return list >= 0 && list < kMruLists;
}

bool isUsable(std::string_view path) {
    return !path.empty() && path.size() <= kMruPathLength;
}

bool sameButForCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lowerCase, lowerCase);
}

} // namespace

void MRU_Init(int list, int capacity) {
    if (!isKnown(list)) {
        return;
    }
    RecentList& recent = lists[static_cast<size_t>(list)];
    recent.capacity = static_cast<size_t>(std::clamp(capacity, 0, kMruCapacity));
    recent.entries.clear();
    if (RUN_IsIsolated()) {
        return;
    }
    for (std::string& path : RECENTSTORE_Read(storeName(list))) {
        if (isUsable(path) && recent.entries.size() < recent.capacity) {
            recent.entries.push_back(std::move(path));
        }
    }
}

void MRU_Add(int list, std::string_view path) {
    if (!isKnown(list)) {
        return;
    }
    if (!isUsable(path)) {
        LOG_Add(formatText("A path of %zu characters is not kept in the recent files, at most %zu",
                           path.size(), kMruPathLength));
        return;
    }
    RecentList& recent = lists[static_cast<size_t>(list)];
    const auto isThere = [&](const std::string& entry) { return sameButForCase(entry, path); };
    if (recent.capacity == 0 || std::ranges::any_of(recent.entries, isThere)) {
        return;
    }
    if (recent.entries.size() == recent.capacity) {
        recent.entries.pop_back();
    }
    recent.entries.insert(recent.entries.begin(), std::string(path));
    if (!RUN_IsIsolated()) {
        RECENTSTORE_Write(storeName(list), recent.entries);
    }
}

const std::vector<std::string>& MRU_GetEntries(int list) {
    static const std::vector<std::string> kNone;
    return isKnown(list) ? lists[static_cast<size_t>(list)].entries : kNone;
}

std::string MRU_GetEntry(int list, int index) {
    const std::vector<std::string>& entries = MRU_GetEntries(list);
    const bool exists = index >= 0 && static_cast<size_t>(index) < entries.size();
    return exists ? entries[static_cast<size_t>(index)] : std::string();
}

std::string MRU_MenuText(int list, int index) {
    return formatText("&%i %s", index + 1, MRU_GetEntry(list, index).c_str());
}
