// The one source of chance in the tests: the environment's CALVORIN_SEED, 1 when it is not set.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

inline uint64_t testSeed() {
    const char* const given = std::getenv("CALVORIN_SEED");
    return given != nullptr ? std::strtoull(given, nullptr, 10) : 1;
}

// Stands beside what depends on the seed: a test that fails while it lives says how to repeat it.
class SeedTrace {
    ::testing::ScopedTrace trace_{"CALVORIN_SEED", 0, std::to_string(testSeed())};
};

// Random numbers of a test; `own` tells those of one test from another's.
class TestRandom : public std::mt19937 {
public:
    explicit TestRandom(uint32_t own = 0) : std::mt19937(static_cast<uint32_t>(testSeed()) + own) {}

private:
    SeedTrace trace_;
};
