#!/usr/bin/env bash
# The static checks: formatting, the rules of the layers, clang-tidy. Needs a configured and built
# release preset (scripts/test.sh makes one). With --fast clang-tidy is left out.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t files < <(git ls-files -- 'src/*.cpp' 'src/*.h' 'sim/*.cpp' 'sim/*.h' 'tests/*.cpp' 'tests/*.h' 'bench/*.cpp' 'bench/*.h')

echo "lint: formatting of ${#files[@]} files"
clang-format --dry-run --Werror "${files[@]}"

echo "lint: layers"
scripts/check_layers.py

if [ "${1:-}" != "--fast" ]; then
  echo "lint: clang-tidy"
  # Sources that this configuration does not build (the desktop in a build without it) are left out.
  mapfile -t sources < <(python3 - <<'PY'
import json, os
root = os.getcwd()
for entry in json.load(open("build/release/compile_commands.json")):
    path = os.path.relpath(os.path.join(entry["directory"], entry["file"]), root)
    if path.split(os.sep)[0] in ("src", "sim", "tests", "bench"):
        print(path)
PY
)
  printf '%s\n' "${sources[@]}" | sort -u |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p build/release 2> >(grep -vE 'warnings? generated|^$|Suppressed|Use -header' >&2 || true)
fi
echo "lint: clean"
