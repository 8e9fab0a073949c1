#!/usr/bin/env bash
# Boards side by side with GNU parallel: boards_parallel.sh [BOARDS], with $FILE and $DEVICE as
# board.sh has them. boards.txt names a board and its port a line.
# On several hosts with HOSTS=bench1,bench2: each works on the boards of its own boards.txt, in a folder
# of the same path that holds these scripts and the program file. The exit code is 0 when all are good.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
boards=${1:-boards.txt}
export FILE DEVICE OUT=${OUT:-results} CALVORIN=${CALVORIN:-calvorin}
if [ -n "${HOSTS:-}" ]; then
  hosts=$HOSTS
  # Words for the shell of the other host.
  printf -v there 'cd %q && HOSTS= FILE=%q DEVICE=%q OUT=%q CALVORIN=%q %q %q' \
    "$PWD" "$FILE" "$DEVICE" "$OUT" "$CALVORIN" "$here/boards_parallel.sh" "$boards"
  exec parallel --nonall --tag -S "$hosts" "$there"
fi
exec parallel --jobs 0 --colsep ' ' "$here/board.sh" '{1}' '{2}' :::: "$boards"
