#!/usr/bin/env bash
# From a fresh machine to all tests passed. Arguments go to ctest (for example -R target).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release
ctest --preset release "$@"
