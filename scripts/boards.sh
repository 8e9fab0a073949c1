#!/usr/bin/env bash
# Eight virtual boards in one folder, side by side, ROUNDS times: boards.sh ROUNDS [BOARDS]
# Each round every verdict has to be right, of a good board and of the one in eight that fails: its
# program commands get no answer. Says how many verdicts there were; 0 when all of them were right.
set -euo pipefail
cd "$(dirname "$0")/.."
rounds=${1:?rounds} count=${2:-8}
bin=$PWD/build/release/bin examples=$PWD/examples
work=$(mktemp -d)
chips=()
trap 'kill "${chips[@]}" 2>/dev/null || true; wait; rm -rf "$work"' EXIT
cd "$work"
export FILE=app.mot DEVICE=VT-B128 CALVORIN=$bin/calvorin
printf 'S1130000000100000102030405060708090A0B0C9D\r\nS9030000FC\r\n' >app.mot
for i in $(seq "$count"); do
  faults=()
  [ "$i" -ne "$count" ] || faults=(--fault no-reply@program)
  "$bin/calvorin-sim" --device $DEVICE --link "$work/port$i" "${faults[@]}" >"chip$i.txt" 2>&1 &
  chips+=($!)
  echo "board$i $work/port$i" >>boards.txt
done
for i in $(seq "$count"); do until [ -e "port$i" ]; do sleep 0.05; done; done

right=0
for round in $(seq "$rounds"); do
  make -s -k -j "$count" -f "$examples/boards.mk" >make.txt 2>&1 || true
  for i in $(seq "$count"); do
    wanted=passed
    [ "$i" -ne "$count" ] || wanted=failed
    if grep -q "\"verdict\":\"$wanted\"" "results/board$i.json"; then
      right=$((right + 1))
    else
      echo "round $round, board $i: not $wanted"
      tail -3 "results/board$i.err"
    fi
  done
done
echo "$right of $((rounds * count)) verdicts are right"
[ "$right" -eq $((rounds * count)) ]
