#!/usr/bin/env bash
# From a fresh machine to a virtual chip programmed and verified: installs what is missing, builds,
# starts a virtual chip on a pseudo-terminal, runs Auto, Verify and Get CRC on it with live progress,
# reads the chip back and compares. Ends with 0 when everything is as it should be.
#   demo.sh [BIN]   with the folder of an installed program, nothing is built or installed; so it is
#                   also where the script does not stand in the source
set -euo pipefail
cd "$(dirname "$0")/.."

work=$(mktemp -d)
sim=
cleanup() {
  [ -z "$sim" ] || { kill "$sim" 2>/dev/null || true; wait "$sim" 2>/dev/null || true; }
  rm -rf "$work"
}
trap cleanup EXIT

bin=${1:-}
if [ -z "$bin" ] && [ ! -e CMakeLists.txt ]; then
  bin=$(dirname "$(command -v calvorin)")
fi
if [ -n "$bin" ]; then
  # The user's own files are left alone.
  export XDG_CONFIG_HOME=$work XDG_STATE_HOME=$work XDG_DATA_HOME=$work
  program=$bin/calvorin sim_program=$bin/calvorin-sim
else
  scripts/setup.sh
  echo "demo: building"
  cmake --preset release >/dev/null
  cmake --build --preset release --target calvorin calvorin-sim calvorin_devices >/dev/null
  # A program folder of its own, so that the demo leaves the settings of the build folder alone.
  cp -r build/release/bin/calvorin build/release/bin/Device build/release/bin/RamImage "$work"
  program=$work/calvorin sim_program=build/release/bin/calvorin-sim
fi

# 20 KiB of a program with a reset vector, as S-records.
python3 - "$work/app.mot" <<'PY'
import random, sys
data = bytearray(random.Random(2).randbytes(20 * 1024))
data[0:4] = (0x100).to_bytes(4, "little")  # the reset vector points into the flash
with open(sys.argv[1], "w", newline="") as out:
    for at in range(0, len(data), 32):
        body = bytes([32 + 5]) + at.to_bytes(4, "big") + data[at:at + 32]
        out.write("S3" + body.hex().upper() + "%02X\r\n" % (~sum(body) & 0xFF))
    out.write("S70500000000FA\r\n")
PY

echo "demo: starting a virtual chip VT-B128, its line paced at 115200 Bd"
"$sim_program" --device VT-B128 --link "$work/port" \
  --pace --flash-out "$work/flash.bin" >"$work/sim.out" 2>&1 &
sim=$!
for _ in $(seq 100); do [ -e "$work/port" ] && break; sleep 0.05; done

run() {
  echo
  echo "\$ calvorin $*"
  "$program" "$@"
}
run "$work/app.mot" "-OptionsCOMPort$work/port" -OptionsCOMBaudrate115200 -OptionsTargetDeviceVT-B128 \
  -OptionsSettingsReset1 -TargetAuto -TargetVerify -TargetGetCRC -Exit
run -OptionsTargetDeviceVT-B128 -OptionsPWFillFF1 -TargetReadBack0,4FFF \
  "-FileSaveAs$work/back.mot" -Exit

echo
kill "$sim"
wait "$sim" && verdict="no rule of the chip was broken" || verdict="RULES OF THE CHIP WERE BROKEN"
sim=
if cmp -s <(grep '^S[123]' "$work/back.mot" | wc -l) <(echo 640) &&
  srec_cat "$work/app.mot" -o "$work/a.bin" -binary && srec_cat "$work/back.mot" -o "$work/b.bin" -binary &&
  cmp -s "$work/a.bin" "$work/b.bin"; then
  echo "demo: 20480 bytes programmed, verified, read back and equal; $verdict"
else
  echo "demo: FAILED, what was read back differs; $verdict"
  exit 1
fi
[ "$verdict" = "no rule of the chip was broken" ]
