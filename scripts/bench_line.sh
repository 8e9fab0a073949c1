#!/usr/bin/env bash
# Programs 256 KiB into a virtual chip whose line is paced at 115200 Bd and prints the time that the
# program frames and their replies took over the time that their bytes need on that line, the chip's
# page writes counted in. Ends with 1 above 1.05. For an idle machine.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$root/build/release/bin
work=$(mktemp -d)
trap 'kill "${sim:-0}" 2>/dev/null || true; rm -rf "$work"' EXIT

cp -r "$bin/calvorin" "$bin/Device" "$bin/RamImage" "$work"
cd "$work"
printf '[Settings PORTS]\r\nCOM1 = "%s"\r\n' "$work/port" >calvorin.ini
program_us=1000
"$bin/calvorin-sim" --device VT-B256 --devices Device --link port --pace --program-us $program_us \
  --transcript transcript >sim.out 2>&1 &
sim=$!
python3 - <<'PY'
import random
data = random.Random(1).randbytes(256 * 1024)
with open("app.mot", "w", newline="") as out:
    for at in range(0, len(data), 32):
        body = bytes([32 + 5]) + at.to_bytes(4, "big") + data[at:at + 32]
        out.write("S3" + body.hex().upper() + "%02X\r\n" % (~sum(body) & 0xFF))
PY
for _ in $(seq 100); do [ -e port ] && break; sleep 0.05; done
./calvorin app.mot -OptionsTargetDeviceVT-B256 -OptionsSettingsReset1 -OptionsCOMBaudrate115200 \
  -TargetAuto -Exit 2>run.err || { cat run.err; exit 1; }
kill "$sim" && wait "$sim"

python3 - $program_us <<'PY'
import re, sys
program_us = int(sys.argv[1])
lines = [re.match(r"\s*([\d.]+) (host|chip): (.*)", l) for l in open("transcript")]
lines = [(float(m[1]), m[2], m[3].split()) for m in lines if m]
frames = [i for i, l in enumerate(lines) if l[1] == "host" and l[2][:2] == ["EB", "ED"] and l[2][4] == "02"]
end = next(i for i in range(frames[-1], len(lines)) if lines[i][1] == "chip")
part = lines[frames[0]:end + 1]
pages = len(frames)
count = sum(len(l[2]) for l in part)
taken = part[-1][0] - part[0][0]
needed = count * 10_000 / 115200 + pages * program_us / 1000
print(f"{pages} pages, {count} bytes on the line: {taken / 1000:.3f} s taken, {needed / 1000:.3f} s needed, "
      f"ratio {taken / needed:.3f} (at most 1.05)")
sys.exit(taken > 1.05 * needed)
PY
