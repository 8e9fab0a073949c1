#include "shell/recent_choices.h"

#include "notice/run.h"
#include "platform/recent_store.h"
#include "shell/front_end.h"

#include <algorithm>
#include <optional>

namespace {

struct ChoiceList {
    const char* storeName;
    std::optional<std::vector<std::string>> names; // none: not read yet
};

ChoiceList choiceLists[] = {{"Recent Devices", {}}, {"Recent Ports", {}}};

bool keepsChoices() {
    return FRONTEND_Get().hasWindows && !RUN_IsIsolated();
}

std::vector<std::string>& namesOf(RecentChoice kind) {
    ChoiceList& list = choiceLists[static_cast<size_t>(kind)];
    if (!list.names) {
        list.names = keepsChoices() ? RECENTSTORE_Read(list.storeName) : std::vector<std::string>();
    }
    return *list.names;
}

} // namespace

void RECENTCHOICES_Note(RecentChoice kind, const std::string& name) {
    if (!keepsChoices() || name.empty()) {
        return;
    }
    std::vector<std::string>& names = namesOf(kind);
    if (!names.empty() && names.front() == name) {
        return;
    }
    std::erase(names, name);
    names.insert(names.begin(), name);
    names.resize(std::min(names.size(), kRecentChoices));
    RECENTSTORE_Write(choiceLists[static_cast<size_t>(kind)].storeName, names);
}

std::vector<std::string> RECENTCHOICES_Get(RecentChoice kind) {
    return namesOf(kind);
}

void RECENTCHOICES_Reset() {
    for (ChoiceList& list : choiceLists) {
        list.names.reset();
    }
}
