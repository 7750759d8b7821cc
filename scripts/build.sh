#!/usr/bin/env bash
# Builds everything into build/ (build/lib, build/bin). Argument: a preset, "release" by default.
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
preset=${1:-release}
case "$preset" in
  fuzz | tidy) scripts/setup.sh "$preset" ;;
  *) scripts/setup.sh ;;
esac
cmake --preset "$preset" >&2
cmake --build --preset "$preset" >&2
