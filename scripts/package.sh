#!/usr/bin/env bash
# Builds the two Debian packages into build/release/packages, out of the release build.
#   package.sh           builds them
#   package.sh --check   also holds their files against their checkers, installs them into a fresh root,
#                        runs the demo there as an ordinary user, and removes them without a trace
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/release

if [ "${1:-}" = "--check" ]; then
  scripts/setup.sh
fi
[ -e "$build/build.ninja" ] || cmake --preset release >/dev/null
cmake --build --preset release --target calvorin calvorin-sim calvorin_man_pages \
  calvorin_files_of_reference >/dev/null
rm -rf "$build/packages"
(cd "$build" && cpack -G DEB >packages.log 2>&1) || { cat "$build/packages.log"; exit 1; }
rm -rf "$build/packages/_CPack_Packages"
packages=("$build"/packages/*.deb)
printf 'package: %s\n' "${packages[@]}"
[ "${1:-}" = "--check" ] || exit 0

fail() {
  echo "package: FAILED, $*" >&2
  exit 1
}
[ "${#packages[@]}" -eq 2 ] || fail "there are ${#packages[@]} packages"
[ "$(id -u)" -eq 0 ] || exec sudo "$PWD/scripts/package.sh" --check # dpkg and another user need it

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"

echo "package: checkers of the packages and of the files for the desktop"
lintian --allow-root --fail-on error,warning "${packages[@]}" || fail "lintian"
xmllint --noout packaging/*.xml "$build"/packaging/*.xml packaging/*.svg
desktop-file-validate packaging/*.desktop
appstreamcli validate --no-net "$build"/packaging/*.metainfo.xml >"$work/appstream" ||
  { cat "$work/appstream"; fail "appstreamcli"; }
mandoc() { LC_ALL=C.UTF-8 groff -man -Tutf8 -ww "$@" 2>&1 >/dev/null; }
[ -z "$(mandoc "$build"/packaging/reference/*.1)" ] || fail "the man pages: $(mandoc "$build"/packaging/reference/*.1)"
scripts/completions_check.sh "$build/packaging/reference" "$build/bin"
scripts/udev_check.sh

# A root of its own, with this system's list of packages, so that dpkg checks what ours depend on.
root=$work/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
listing() { (cd "$root" && find . -path ./var/lib/dpkg -prune -o -print | sort); }
before=$(listing)
dpkg_there() { dpkg --root="$root" --force-script-chrootless --log=/dev/null "$@" >"$work/dpkg" 2>&1 || { cat "$work/dpkg"; fail "dpkg $*"; }; }

as_user() { # COMMAND...: as nobody, whose home is empty
  setpriv --reuid=65534 --regid=65534 --clear-groups env -i HOME="$work/home" TMPDIR="$work/home" \
    PATH="$root/usr/bin:/usr/bin:/bin" LC_ALL=C.UTF-8 "$@"
}
mkdir "$work/home"
chown 65534:65534 "$work/home"

echo "package: calvorin alone"
dpkg_there -i "$build"/packages/calvorin_*.deb
installed=$(listing)
as_user "$root/usr/share/doc/calvorin/examples/demo.sh" >"$work/demo" 2>&1 || { cat "$work/demo"; fail "the demo"; }
tail -n 1 "$work/demo"
(cd "$work/home" && as_user calvorin --paths) | tee "$work/paths"
grep -q "^settings: $work/home/.config/calvorin/calvorin.ini$" "$work/paths" || fail "the settings are not the user's"
{ as_user calvorin app.hex 2>&1 || true; } | grep -q "package calvorin-desktop" || fail "nothing names the package of the desktop"
[ "$(listing)" = "$installed" ] || fail "a run has left files in the installation"

echo "package: with the desktop"
dpkg_there -i "$build"/packages/calvorin-desktop_*.deb
# It comes up, off screen, and stays until it is killed (137); where it cannot, the program ends at once.
as_user env QT_QPA_PLATFORM=offscreen timeout -s KILL 3 calvorin-desktop >"$work/desktop" 2>&1 && code=0 || code=$?
[ "$code" -eq 137 ] || { cat "$work/desktop"; fail "the desktop ended with $code"; }
dpkg_there --purge calvorin-desktop calvorin
[ "$(listing)" = "$before" ] || { diff <(echo "$before") <(listing); fail "files are left behind"; }
rm -rf "$root"
echo "package: built, checked, installed, run and removed without a trace"
