// The boot-ROM families by the word that a description uses and the number that the program keeps.
// What a family does stands in bootrom/.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

enum RamcodeType : int32_t { RAMCODE_NONE = -1, RAMCODE_TYPE_A = 0, RAMCODE_TYPE_B = 1 };

inline constexpr std::pair<std::string_view, RamcodeType> kRamcodeWords[] = {
    {"TYPE_A", RAMCODE_TYPE_A},
    {"TYPE_B", RAMCODE_TYPE_B},
};

// The number of a family; none for a word that nobody knows.
std::optional<int32_t> ramcodeTypeOf(std::string_view word);
// Adds the word of a family that is not built in. Not while another thread reads descriptions.
void addRamcodeType(const std::string& word, int32_t type);
