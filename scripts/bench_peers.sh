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

declare -A best peak # by tool: the quickest of its runs in microseconds, its memory in KiB

# runOnce OUTPUT COMMAND...: every run makes its output anew, as to replace a file may mean to wait
# for the disk.
runOnce() {
    rm -f "$1"
    rm -f Calvorin.tpu # else a run would first load the program file of the one before
    shift
    begin=${EPOCHREALTIME/[.,]/}
    "$@" >output.txt 2>&1 || {
        echo "bench_peers: failed: $*" >&2
        cat output.txt >&2
        exit 2
    }
    end=${EPOCHREALTIME/[.,]/}
}

# measure TOOL OUTPUT COMMAND...: one more run; the first one tells the memory, the others the time.
measure() {
    local tool=$1 output=$2 begin end
    shift 2
    if ((peak[$tool] == 0)); then
        runOnce "$output" /usr/bin/time -f %M -o peak.txt "$@"
        peak[$tool]=$(<peak.txt)
        return
    fi
    runOnce "$output" "$@"
    if ((best[$tool] == 0 || end - begin < best[$tool])); then best[$tool]=$((end - begin)); fi
}

# miss CONDITION-TEXT: notes an aim that was missed.
miss() {
    echo "  MISSED: $1"
    missed=1
}

# compare TITLE FROM TO DATA-KIB AIM: converts in.FROM to TO with all three (hex or mot).
compare() {
    local title=$1 from=$2 to=$3 kib=$4 aim=$5 quickest limit
    local -A srec=([hex]=-intel [mot]=-motorola) bfd=([hex]=ihex [mot]=srec)
    local lengths=()
    if [ "$to" = mot ]; then lengths=(--srec-len=32); fi
    best=([ours]=0 [srec]=0 [objcopy]=0)
    peak=([ours]=0 [srec]=0 [objcopy]=0)
    for ((run = 0; run <= runs; ++run)); do # in turn, so that other load meets all three alike
        measure ours "ours.$to" ./calvorin "in.$from" "-FileSaveAsours.$to" -Exit
        measure srec "srec.$to" srec_cat "in.$from" "${srec[$from]}" -o "srec.$to" "${srec[$to]}"
        measure objcopy "objcopy.$to" \
            objcopy -I "${bfd[$from]}" -O "${bfd[$to]}" "${lengths[@]}" "in.$from" "objcopy.$to"
    done
    limit=$((2 * kib + 20 * 1024))
    quickest=$((best[srec] < best[objcopy] ? best[srec] : best[objcopy]))
    awk -v title="$title" -v a="${best[ours]}" -v b="${best[srec]}" -v c="${best[objcopy]}" \
        -v q="$quickest" -v peak="${peak[ours]}" -v limit="$limit" 'BEGIN {
            printf "%-28s calvorin %8.1f ms  srec_cat %8.1f ms  objcopy %8.1f ms  ratio %5.1f", \
                title, a / 1000, b / 1000, c / 1000, q / a
            printf "  peak %5.1f of %5.1f MiB\n", peak / 1024, limit / 1024 }'
    if ((quickest < aim * best[ours])); then miss "aim: $aim times as fast as the quicker of both"; fi
    if ((peak[ours] > limit)); then miss "aim: at most twice the data and 20 MiB"; fi
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
