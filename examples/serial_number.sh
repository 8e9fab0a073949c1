#!/usr/bin/env bash
# A board with a number of its own and a key: serial_number.sh PORT ADDRESS [KEYADDRESS KEYFILE], with
# $FILE and $DEVICE as board.sh has them. The last number is kept in $NUMBERS; it is taken before the
# board is begun, so that no two boards ever have the same. Four bytes, the lowest first.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
numbers=${NUMBERS:-last_number}
number=$(
  exec 9>>"$numbers"
  flock 9
  next=$(($(cat "$numbers") + 1))
  echo "$next" >"$numbers"
  echo "$next"
)
bytes=$(printf '%08X' "$number" | sed 's/\(..\)\(..\)\(..\)\(..\)/\4\3\2\1/')
patches=("-FilePatch$2=$bytes")
[ $# -lt 4 ] || patches+=("-FilePatch$3=@$4")
"$here/board.sh" "board$number" "$1" "${patches[@]}"
echo "board$number"
