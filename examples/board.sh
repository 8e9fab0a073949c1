#!/usr/bin/env bash
# One board: its flash, its log and its result, apart from all other boards.
#   board.sh NAME PORT [OPTION...]
# NAME.json and NAME.log go to $OUT; $FILE is programmed into a $DEVICE by $CALVORIN. The exit code is
# that of the run. The options stand in front of the commands: a patch, --retries 2.
set -euo pipefail
name=$1 port=$2
shift 2
out=${OUT:-results}
mkdir -p "$out"
rm -f "$out/$name.json" # whatever happens, no older result is taken for this one
exec "${CALVORIN:-calvorin}" "${FILE:?}" --isolated "-OptionsCOMPort$port" -OptionsCOMBaudrate115200 \
  "-OptionsTargetDevice${DEVICE:?}" -OptionsSettingsReset1 "$@" -TargetAuto -TargetVerify -Exit \
  --result "$out/$name.json" --log "$out/$name.log" 2>"$out/$name.err"
