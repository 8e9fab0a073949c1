#!/usr/bin/env bash
# A CI job without hardware: ci_job.sh FILE DEVICE programs a virtual chip and keeps its result, log and
# flash in $OUT. Fails when the board does or when the program broke a rule of the chip.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
export FILE=$1 DEVICE=$2 OUT=${OUT:-results}
mkdir -p "$OUT"
"${CALVORIN_SIM:-calvorin-sim}" --device "$DEVICE" --link "$OUT/port" --flash-out "$OUT/flash.bin" >"$OUT/chip.txt" &
chip=$!
trap 'kill $chip 2>/dev/null || true' EXIT
until [ -e "$OUT/port" ]; do sleep 0.05; done
"$here/board.sh" ci "$(readlink -f "$OUT/port")" || true
"$here/read_results.py" "$OUT/ci.json"
kill $chip
wait $chip
