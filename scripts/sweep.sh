#!/usr/bin/env bash
# The whole sweep (docs/sweeps.md): every case, one process a processor, some minutes. Prints the
# failing runs, each as the command that repeats it, then what the protocol could not show, then the
# sum; ends with 1 when a run failed. Arguments go to test_sweep (for example --only "B1 auto").
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release --target test_sweep >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

shards=$(nproc)
jobs=()
for ((i = 0; i < shards; i++)); do
  build/release/bin/test_sweep --stride 1 --shard "$i/$shards" "$@" >"$work/$i" &
  jobs+=("$!")
done
result=0
for job in "${jobs[@]}"; do
  wait "$job" || result=1
done

awk '/^FAILED/ { print }
     /^not shown:/ { count = $3; sub(/^not shown: [0-9]+ /, ""); blind[$0] += count }
     / runs a second$/ { runs += $1; failed += $3; rate += $7; ended++ }
     END { for (name in blind) printf "not shown: %d %s\n", blind[name], name
           printf "%d runs, %d failed, %d runs a second, %d of the processes ended\n",
                  runs, failed, rate, ended }' "$work"/*
exit "$result"
