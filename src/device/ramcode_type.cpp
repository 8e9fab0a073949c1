#include "device/ramcode_type.h"

#include <iterator>
#include <map>

namespace {

std::map<std::string, int32_t, std::less<>>& ramcodeWords() {
    static std::map<std::string, int32_t, std::less<>> words(std::begin(kRamcodeWords),
                                                             std::end(kRamcodeWords));
    return words;
}

} // namespace

std::optional<int32_t> ramcodeTypeOf(std::string_view word) {
    const auto found = ramcodeWords().find(word);
    return found == ramcodeWords().end() ? std::nullopt : std::optional(found->second);
}

void addRamcodeType(const std::string& word, int32_t type) {
    ramcodeWords()[word] = type;
}
