#!/usr/bin/env bash
# Installs missing packages and builds; libraries in build/lib, programs in build/bin.
#   scripts/build.sh [PRESET]   a preset of CMakePresets.json; default: release, with the tests; run: without
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
preset=${1:-release}
case "$preset" in
  run | bench | fuzz | tidy) scripts/setup.sh "$preset" ;;
  *) scripts/setup.sh ;;
esac
cmake --preset "$preset" >&2
cmake --build --preset "$preset" >&2
