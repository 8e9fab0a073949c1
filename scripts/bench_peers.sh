#!/usr/bin/env bash
# Times the conversion of program files beside srec_cat and objcopy on the same files, checks that
# all results hold the same bytes, and prints how many times as fast the program is. Ends with 1
# when results differ or an aim is missed.
#
# Usage: scripts/bench_peers.sh [calvorin executable] [runs]
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
program=${1:-$root/build/release/bin/calvorin}
runs=${2:-5}
missed=0

for tool in "$program" srec_cat srec_cmp objcopy /usr/bin/time awk; do
    if ! command -v "$tool" >/dev/null; then
        echo "bench_peers: $tool is missing (build the release preset, run scripts/setup.sh)" >&2
        exit 2
    fi
done

# A copy of the executable, so that the settings and logs of these runs land in the scratch folder.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$program" "$work/calvorin"
for folder in Device RamImage; do
    if [ -d "$(dirname "$program")/$folder" ]; then
        cp -r "$(dirname "$program")/$folder" "$work/$folder"
    fi
done
cd "$work"

# measure OUTPUT COMMAND...: sets best (microseconds, the quickest of all runs) and peak (KiB, the
# largest). Every run makes its output anew: to replace a file may mean to wait for the disk.
measure() {
    local output=$1 begin end us
    shift
    best=0
    peak=0
    for ((run = 0; run < runs; ++run)); do
        rm -f "$output"
        rm -f Calvorin.tpu # else a run would first load the program file of the one before
        begin=${EPOCHREALTIME/[.,]/}
        /usr/bin/time -f %M -o peak.txt "$@" >output.txt 2>&1 || {
            echo "bench_peers: failed: $*" >&2
            cat output.txt >&2
            exit 2
        }
        end=${EPOCHREALTIME/[.,]/}
        us=$((end - begin))
        if ((best == 0 || us < best)); then best=$us; fi
        if (($(<peak.txt) > peak)); then peak=$(<peak.txt); fi
    done
}

# miss CONDITION-TEXT: notes an aim that was missed.
miss() {
    echo "  MISSED: $1"
    missed=1
}

# compare TITLE FROM TO DATA-KIB AIM: converts in.FROM to TO with all three (hex or mot).
compare() {
    local title=$1 from=$2 to=$3 kib=$4 aim=$5 ours srec_us objcopy_us quickest limit
    local -A srec=([hex]=-intel [mot]=-motorola) bfd=([hex]=ihex [mot]=srec)
    local lengths=()
    if [ "$to" = mot ]; then lengths=(--srec-len=32); fi
    rm -f ours.* srec.* objcopy.*
    measure "ours.$to" ./calvorin "in.$from" "-FileSaveAsours.$to" -Exit
    ours=$best
    limit=$((2 * kib + 20 * 1024))
    local ours_peak=$peak
    measure "srec.$to" srec_cat "in.$from" "${srec[$from]}" -o "srec.$to" "${srec[$to]}"
    srec_us=$best
    measure "objcopy.$to" objcopy -I "${bfd[$from]}" -O "${bfd[$to]}" "${lengths[@]}" "in.$from" "objcopy.$to"
    objcopy_us=$best
    quickest=$((srec_us < objcopy_us ? srec_us : objcopy_us))
    awk -v title="$title" -v a="$ours" -v b="$srec_us" -v c="$objcopy_us" -v q="$quickest" \
        -v peak="$ours_peak" -v limit="$limit" 'BEGIN {
            printf "%-28s calvorin %8.1f ms  srec_cat %8.1f ms  objcopy %8.1f ms  ratio %5.1f", \
                title, a / 1000, b / 1000, c / 1000, q / a
            printf "  peak %5.1f of %5.1f MiB\n", peak / 1024, limit / 1024 }'
    if ((quickest < aim * ours)); then miss "aim: $aim times as fast as the quicker of both"; fi
    if ((ours_peak > limit)); then miss "aim: at most twice the data and 20 MiB"; fi
    for other in "in.$from" "srec.$to" "objcopy.$to"; do
        local kind=${srec[${other##*.}]}
        if ! srec_cmp "ours.$to" "${srec[$to]}" "$other" "$kind" >cmp.txt 2>&1; then
            # The peers add or drop start addresses and headers; only the bytes count.
            if ! sameBytes "ours.$to" "${srec[$to]}" "$other" "$kind"; then
                miss "the bytes differ from those of $other"
            fi
        fi
    done
}

sameBytes() {
    srec_cat "$1" "$2" -o a.vmem -intel -disable=execution-start-address -disable=header 2>/dev/null
    srec_cat "$3" "$4" -o b.vmem -intel -disable=execution-start-address -disable=header 2>/dev/null
    cmp -s a.vmem b.vmem
}

echo "16 MiB in one area, best of $runs runs"
head -c $((16 * 1024 * 1024)) /dev/urandom >data.bin
srec_cat data.bin -binary -o in.hex -intel -line-length=75
srec_cat data.bin -binary -o in.mot -motorola -line-length=78
compare "Intel HEX to S-record" hex mot $((16 * 1024)) 5
compare "S-record to Intel HEX" mot hex $((16 * 1024)) 5

echo "100,000 separate areas of 32 bytes, best of $runs runs"
awk 'BEGIN {
    for (area = 0; area < 100000; ++area) {
        address = area * 64
        sum = 37 + int(address / 65536) % 256 + int(address / 256) % 256 + address % 256
        line = sprintf("S325%08X", address)
        for (i = 0; i < 32; ++i) {
            byte = (area * 7 + i * 13) % 256
            sum += byte
            line = line sprintf("%02X", byte)
        }
        printf "%s%02X\r\n", line, 255 - sum % 256
    }
    printf "S70500000000FA\r\n"
}' >in.mot
srec_cat in.mot -motorola -o in.hex -intel -line-length=75 2>/dev/null # no header record: fine
compare "Intel HEX to S-record" hex mot 3125 1
compare "S-record to Intel HEX" mot hex 3125 1

exit $missed
