#!/usr/bin/env bash
# Looks for inputs that the program does not stand: "scripts/fuzz.sh SECONDS [TARGET...]", that long
# for each target. What fails is kept below build/fuzz/found; minimised it belongs into
# tests/fuzz/corpus, which the tests replay.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: scripts/fuzz.sh SECONDS [TARGET...]}
shift
targets=("$@")
[ $# -gt 0 ] || targets=($(ls tests/fuzz/corpus))

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target fuzz
mkdir -p build/fuzz/found
# Files go to memory: the disk would be most of the time.
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm

failed=0
for target in "${targets[@]}"; do
  mkdir -p "build/fuzz/grown/$target"
  if CALVORIN_FUZZ=$target build/fuzz/bin/fuzz "build/fuzz/grown/$target" "tests/fuzz/corpus/$target" \
    -max_total_time="$seconds" -max_len=2000 -timeout=20 -artifact_prefix="build/fuzz/found/$target-" \
    >"build/fuzz/$target.log" 2>&1; then
    printf '%-12s %s\n' "$target" "$(grep -o 'Done [0-9]* runs.*' "build/fuzz/$target.log")"
  else
    printf '%-12s FAILED, see build/fuzz/%s.log\n' "$target" "$target"
    failed=1
  fi
done
exit $failed
