#!/usr/bin/env bash
# Builds everything; libraries in build/lib, programs in build/bin.
#   scripts/build.sh [PRESET]   a preset of CMakePresets.json; default: release
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
preset=${1:-release}
case "$preset" in
  fuzz | tidy) scripts/setup.sh "$preset" ;;
  *) scripts/setup.sh ;;
esac
cmake --preset "$preset" >&2
cmake --build --preset "$preset" >&2
