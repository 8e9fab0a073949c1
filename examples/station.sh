#!/usr/bin/env bash
# A station with one board: station.sh NAME PORT, with $FILE and $DEVICE as board.sh has them.
# A board that fails is tried twice more; the last line is what the operator has to see.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
out=${OUT:-results}
if "$here/board.sh" "$1" "$2" --retries 2; then
  echo "GOOD  $1"
else
  "$here/read_results.py" "$out/$1.json" || true
  echo "BAD   $1"
  exit 1
fi
