#include "persist/nearest.h"

#include "persist/chars.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

// What it takes to make `name` of each beginning of `text`, the empty one first.
std::vector<size_t> distances(std::string_view name, std::string_view text) {
    std::vector<size_t> row(text.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < name.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t k = 1; k < row.size(); ++k) {
            const size_t other = lowerCase(name[i]) == lowerCase(text[k - 1]) ? 0 : 1;
            const size_t changed = diagonal + other;
            diagonal = row[k];
            row[k] = std::min({changed, row[k] + 1, row[k - 1] + 1});
        }
    }
    return row;
}

} // namespace

size_t NEAREST_FromBeginning(std::string_view name, std::string_view text) {
    return std::ranges::min(distances(name, text));
}

size_t NEAREST_Distance(std::string_view name, std::string_view text) {
    return distances(name, text).back();
}

size_t NEAREST_Tolerance(std::string_view name) {
    constexpr size_t kCharactersAMistake = 4;
    return name.size() / kCharactersAMistake;
}
