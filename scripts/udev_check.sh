#!/usr/bin/env bash
# Holds the udev rule against udev itself: its syntax, and what it makes of adapters and modems that
# stand in a /sys made up for it. Needs root and udevadm (UDEVADM= where it is not in the path); says
# so and ends with 0 where it has not got them.
#   udev_check.sh [RULES]
set -euo pipefail
rules=$(realpath "${1:-$(dirname "$0")/../packaging/70-calvorin.rules}")
udevadm=$(command -v "${UDEVADM:-udevadm}" /sbin/udevadm | head -n 1 || true)
if [ -z "$udevadm" ]; then
  echo "udev rule: SKIPPED, there is no udevadm"
  exit 0
fi
if [ "${2:-}" != "inside" ]; then
  unshare -m true 2>/dev/null || { echo "udev rule: SKIPPED, mounting takes root"; exit 0; }
  UDEVADM=$(realpath "$udevadm") exec unshare -m bash "$0" "$rules" inside
fi

fail() {
  echo "udev rule: FAILED, $*" >&2
  exit 1
}
if "$udevadm" verify --help >/dev/null 2>&1; then # from version 254 on
  "$udevadm" verify "$rules" || fail "udevadm verify"
fi
text=$(cat "$rules")
for folder in /run /sys; do mount -t tmpfs none "$folder"; done
mkdir -p /run/udev/rules.d
echo "$text" >"/run/udev/rules.d/$(basename "$rules")"
mount -t tmpfs none /dev # where it would leave links
mknod -m 666 /dev/null c 1 3

# NAME VENDOR PRODUCT: what udev says of such a port.
look() {
  local hub=/sys/devices/usb1 port tty
  rm -rf /sys/devices /sys/class
  port=$hub/1-1
  tty=$port/1-1:1.0/$1/tty/$1
  mkdir -p "$tty" /sys/bus/usb /sys/class/tty
  echo "$2" >"$port/idVendor"
  echo "$3" >"$port/idProduct"
  echo "DEVTYPE=usb_device" >"$port/uevent"
  printf 'DEVNAME=%s\nMAJOR=188\nMINOR=0\n' "$1" >"$tty/uevent"
  ln -s /sys/bus/usb "$port/subsystem"
  ln -s /sys/class/tty "$tty/subsystem"
  SYSTEMD_DEVICE_VERIFY_SYSFS=0 SYSTEMD_LOG_LEVEL=debug "$udevadm" test --action=add "$tty" 2>&1 || true
}

while read -r name vendor product expected; do
  said=$(look "$name" "$vendor" "$product")
  ! grep "^/run/udev/rules.d/" <<<"$said" || fail "udev does not understand the rule"
  found=other
  if grep -q "GROUP $(getent group dialout | cut -d: -f3)$" <<<"$said" && grep -q "MODE 0660" <<<"$said" &&
    grep -q "^TAGS=.*:uaccess:" <<<"$said" && grep -q "^ID_MM_PORT_IGNORE=1" <<<"$said"; then
    found=adapter
  fi
  grep -q "^DEVNAME=/dev/$name" <<<"$said" || { echo "$said"; fail "udev does not see $name"; }
  [ "$found" = "$expected" ] || { echo "$said"; fail "$name $vendor:$product is taken for: $found"; }
done <<'PORTS'
ttyUSB0 0403 6001 adapter
ttyUSB12 067b 2303 adapter
ttyUSB0 10c4 ea60 adapter
ttyUSB0 10c4 8a2a other
ttyACM0 1a86 55d4 adapter
ttyACM0 04d8 00df adapter
ttyACM0 04d8 000a other
ttyUSB2 12d1 1506 other
ttyS0 0403 6001 other
PORTS
echo "udev rule: understood, adapters found, modems left alone"
