#!/usr/bin/env bash
# The static checks: formatting, the rules of the layers, clang-tidy over what can be built here. With
# --fast clang-tidy is left out.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t files < <(git ls-files -- 'src/*.cpp' 'src/*.h' 'sim/*.cpp' 'sim/*.h' 'tests/*.cpp' 'tests/*.h' 'bench/*.cpp' 'bench/*.h' 'packaging/*.cpp' 'packaging/*.h')

echo "lint: formatting of ${#files[@]} files"
clang-format --dry-run --Werror "${files[@]}"

echo "lint: layers"
scripts/check_layers.py

if [ "${1:-}" != "--fast" ]; then
  # A configuration of its own, so that it can run beside the builds.
  cmake --preset release -B build/lint >/dev/null
  scripts/tidy.py build/lint
fi
echo "lint: clean"
