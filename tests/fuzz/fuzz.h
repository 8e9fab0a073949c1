// What is given arbitrary bytes: everything that reads what others have written, and the program
// as a whole at the mercy of its line. The corpora are replayed by test_fuzz; scripts/fuzz.sh looks
// for more with libFuzzer.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct FuzzTarget {
    const char* name; // and that of its corpus
    // What is wrong with what came of the bytes; empty when nothing is. Never ends the process.
    std::string (*run)(std::span<const uint8_t> bytes);
};
const std::vector<FuzzTarget>& FUZZ_Targets();

// Those that talk to a chip, see line_targets.cpp.
std::string fuzzAnswers(std::span<const uint8_t> bytes);
std::string fuzzSpoiltLine(std::span<const uint8_t> bytes);
