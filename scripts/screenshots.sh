#!/usr/bin/env bash
# Renders the windows of the desktop, with a loaded program and a virtual chip on COM1, into
# docs/images (or the folder given). Needs Xvfb, xdotool and ImageMagick; the program must be built.
#   scripts/screenshots.sh [FOLDER]      SCALE=2 DARK=1 in the environment: 200 %, dark palette
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
target=${1:-$root/docs/images}
bin=${BIN:-$root/build/release/bin}
work=$(mktemp -d /tmp/calvorin.XXXX)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -p "$target"

scale=${SCALE:-1}
exec 3>"$work/display"
Xvfb -displayfd 3 -screen 0 $((860 * scale))x$((620 * scale))x24 >/dev/null 2>&1 &
pids+=($!)
exec 3>&-
for _ in $(seq 50); do [ -s "$work/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$work/display")
export DISPLAY HOME=$work XDG_CONFIG_HOME=$work QT_SCALE_FACTOR=$scale QT_STYLE_OVERRIDE=Fusion

# The program beside its own settings, a chip on COM1 and a program to load.
cp -r "$bin" "$work/bin"
rm -f "$work"/bin/calvorin.* "$work/bin/Calvorin.tpu"
chip() { # FURTHER options of the virtual chip
  "$bin/calvorin-sim" --pace --device VT-B128 --devices "$bin/Device" --link "$work/chip" "$@" >/dev/null 2>&1 &
  sim=$!
  pids+=("$sim")
}
chip
printf '[Settings PORTS]\nCOM1 = "%s"\n' "$work/chip" >"$work/bin/calvorin.ini"
awk 'BEGIN {
  for (a = 0; a < 16384; a += 16) line(a);
  for (a = 65280; a < 65536; a += 16) line(a);
  print ":020000021000EC"; for (a = 65280; a < 65536; a += 16) line(a);
  print ":00000001FF" }
function line(a,  i, b, sum, text) {
  text = sprintf(":10%04X00", a); sum = 16 + int(a / 256) + a % 256;
  for (i = 0; i < 16; i++) {
    b = (a * 7 + i * 31 + int(a / 64)) % 256;
    if (a == 0) b = i % 4 == 1 ? 16 : 0; # vectors into the flash
    text = text sprintf("%02X", b); sum += b }
  printf "%s%02X\n", text, (256 - sum % 256) % 256 }' >"$work/application.hex"
if [ -n "${DARK:-}" ]; then # the desktop that reads its colours from a file
  export XDG_CURRENT_DESKTOP=KDE KDE_FULL_SESSION=true KDE_SESSION_VERSION=5
  while read -r part colour; do
    printf '[Colors:%s]\nBackgroundNormal=%s\nForegroundNormal=239,240,241\n' "$part" "$colour"
  done >"$work/kdeglobals" <<'COLOURS'
Window 49,54,59
View 35,38,41
Button 58,64,70
Tooltip 49,54,59
Selection 61,120,180
COLOURS
fi

start() { # ARGUMENTS of the program, whose windows the pictures then show
  "$work/bin/calvorin" "$@" >"$work/out" 2>&1 &
  program=$!
  pids+=("$program")
  sleep 2
}

# A picture of the frame; whole=1: of the screen, which is a little larger.
shot() {
  sleep "${2:-0.7}"
  crop=(-crop "$((800 * scale))x$((600 * scale))+$((30 * scale))+$((10 * scale))" +repage)
  [ -z "${whole:-}" ] || crop=()
  import -window root "${crop[@]}" +dither -colors 256 "PNG8:$target/$1.png"
  echo "$target/$1.png"
}
# Without a window manager nobody hands the keyboard on: the window on top gets it.
keys() {
  for key in "$@"; do
    top=$(xdotool search --onlyvisible --class calvorin 2>/dev/null | tail -1)
    [ -z "$top" ] || xdotool windowfocus "$top" 2>/dev/null || true
    xdotool key --clearmodifiers "$key"
    sleep 0.15
  done
}
intoDump() { xdotool mousemove $((400 * scale)) $((150 * scale)) click 1; }

start
shot first-start-1; keys Return; shot first-start-2; keys Return; shot first-start-3; keys Escape
kill "$program"

options=(-OptionsTargetDeviceVT-B128 -OptionsCOMPort1 -OptionsCOMBaudrate115200
  -OptionsSettingsReset1)
"$work/bin/calvorin" "${options[@]}" -Exit >/dev/null 2>&1 || true
start "$work/application.hex" "${options[@]}"
keys alt+v l; keys alt+v o; keys alt+v d; keys alt+v t; keys alt+v d d Return
shot frame
for menu in file project edit view target window help; do
  keys "alt+${menu:0:1}"; shot "menu-$menu"; keys Escape Escape
done
keys alt+o; shot options-1; keys ctrl+Tab; shot options-2; keys ctrl+Tab; shot options-3
keys ctrl+Tab; shot options-4; keys Escape
keys alt+v i; shot interrupt-vectors; keys Escape
keys alt+e r; shot relocate; keys Escape
keys alt+e d; shot delete-range; keys Escape
keys alt+h a; shot about; keys Escape
keys ctrl+o; shot open; keys Escape
keys alt+f a; shot save-as; keys Escape
keys alt+f m; xdotool type "$work/application.hex"; keys Return; shot question; keys Return
keys F1; whole=1 shot help 1.2; keys Escape
intoDump
keys ctrl+f; xdotool type "05 24 43"; keys Return; shot find; keys Escape
keys ctrl+g; xdotool type 3000; keys Return; shot go-to; keys Escape
keys F7; shot programming 2.5; shot finished 8; keys Return; shot after
keys alt+v m; shot memory-map; keys ctrl+F4
intoDump
xdotool key --delay 50 1 2 3 4; keys alt+t; for _ in 1 2 3 4 5 6 7 8 9; do keys Down; done
keys Return; sleep 3; keys Return; shot comparison; keys F5; shot read-back; keys Escape
keys F6; shot get-crc 3; keys Return
keys alt+w h; shot tiled; keys alt+w c; shot cascaded; keys alt+w r
xdotool mousemove $((740 * scale)) $((590 * scale)); shot tool-tip 1.5
printf ':00000001FF\nnonsense\n' >"$work/broken.hex"
intoDump
keys ctrl+o; xdotool type "$work/broken.hex"; keys Return Left Return # the changes may go
shot error; keys Return Escape
kill "$program" "$sim"; wait "$program" "$sim" 2>/dev/null || true

# The terminal's one pane, with an application that speaks.
chip --start-app --app-echo --app-every 900 --app-text $'\e[32mready\r\n'
printf '\n[Settings TERMINAL]\nOnePane = 1\nControls = 1\nStamps = 1\n' >>"$work/bin/calvorin.ini"
start "$work/application.hex" "${options[@]}"
keys alt+v t
xdotool mousemove $((230 * scale)) $((486 * scale)) click --repeat 2 1; sleep 0.5 # the whole area
xdotool type help; keys Return; shot terminal 2
keys alt+g r; shot terminal-rates; keys Escape Escape Escape
