#!/usr/bin/env bash
# The tests that run in virtual time once more, in another order of threads and another order of tests
# each time. Argument: how many seeds (20). The release build must stand (scripts/test.sh).
set -euo pipefail
cd "$(dirname "$0")/.."

for seed in $(seq "${1:-20}"); do
  for program in bootrom device link notice serial shell sim target; do
    CALVORIN_SEED=$seed "build/release/bin/test_$program" --gtest_brief=1 --gtest_filter=-FileFaults.* --gtest_shuffle \
      --gtest_random_seed="$seed" >build/seeds.log 2>&1 ||
      { cat build/seeds.log; echo "CALVORIN_SEED=$seed test_$program --gtest_filter=-FileFaults.* --gtest_shuffle --gtest_random_seed=$seed fails"; exit 1; }
  done
done
echo "${1:-20} seeds: no test fails"
