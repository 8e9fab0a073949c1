// How near two words are to each other, for hints at what was meant.
#pragma once

#include <cstddef>
#include <string_view>

// The least number of characters to be changed, added or left out until the beginning of `text`
// that is nearest to `name` is `name`, the letters A to Z in either case.
size_t NEAREST_FromBeginning(std::string_view name, std::string_view text);
// The same for the whole of `text`.
size_t NEAREST_Distance(std::string_view name, std::string_view text);
// How far off a text may be that is still taken for the name.
size_t NEAREST_Tolerance(std::string_view name);
