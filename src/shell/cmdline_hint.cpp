#include "shell/cmdline_hint.h"

#include "persist/nearest.h"
#include "shell/cmdline_table.h"
#include "shell/cmdline_words.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace {

constexpr size_t kShortestHint = 3; // anything is near to less

struct Nearest {
    std::string name;
    size_t distance = std::numeric_limits<size_t>::max();
};

void consider(Nearest& best, std::string_view part, const std::string& name, size_t distance) {
    if (part.size() >= kShortestHint && distance <= NEAREST_Tolerance(part) &&
        distance < best.distance) {
        best = {name, distance};
    }
}

bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

// Whether a word of the name begins there: "Verify" in "TargetVerify", "Port" in "COMPort".
bool beginsWord(std::string_view name, size_t at) {
    return isUpper(name[at]) && at + 1 < name.size() && !isUpper(name[at + 1]);
}

} // namespace

std::string HINT_NearestName(const std::string& argument) {
    std::string_view text = argument;
    text.remove_prefix(std::min(text.find_first_not_of("-/"), text.size()));
    Nearest best;
    if (text.size() < kShortestHint) {
        return best.name;
    }
    for (const CmdlineEntry& entry : CMDLINE_Table()) {
        consider(best, entry.name, std::string("-") + entry.name,
                 NEAREST_FromBeginning(entry.name, text));
    }
    for (const CmdlineWord& word : WORDS_Table()) {
        const std::string_view name = std::string_view(word.name).substr(2);
        consider(best, name, word.name, NEAREST_Distance(name, text));
    }
    for (const CmdlineEntry& entry : CMDLINE_Table()) { // names that were cut short in front
        const std::string_view name = entry.name;
        for (size_t at = 1; at < name.size(); ++at) {
            if (beginsWord(name, at)) {
                consider(best, name.substr(at), std::string("-") + entry.name,
                         NEAREST_FromBeginning(name.substr(at), text));
            }
        }
    }
    return best.name;
}
