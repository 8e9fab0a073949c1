#!/usr/bin/env bash
# Installs what building and testing need and this machine does not have (Debian, Ubuntu).
set -euo pipefail

packages=(
  g++ cmake ninja-build ccache           # build
  nlohmann-json3-dev                     # the result of a run
  qt6-base-dev                           # desktop
  libgtest-dev libbenchmark-dev          # tests and benchmarks
  clang clang-format clang-tidy python3  # static checks
  dpkg-dev lintian desktop-file-utils appstream libxml2-utils groff # packages and their checks
  bash-completion zsh fish               # completions
  srecord binutils time                  # peers that the tests and benchmarks compare with
  parallel                               # the recipes of the bench
  ser2net python3-serial                 # port servers of others that the tests go through
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
if [ "${#missing[@]}" -eq 0 ]; then
  echo "setup: everything is installed"
  exit 0
fi

echo "setup: installing ${missing[*]}"
run=()
[ "$(id -u)" -eq 0 ] || run=(sudo)
"${run[@]}" apt-get update -qq
"${run[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "setup: done"
