#!/usr/bin/env bash
# Builds and runs all tests and prints CTest's summary.
#   scripts/test.sh               the release build
#   scripts/test.sh --sanitizers  the same tests under the address, undefined-behaviour and thread sanitizers
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."

presets=(release)
case "${1-}" in
  "") ;;
  --sanitizers) presets=(asan tsan) ;;
  *) echo "usage: scripts/test.sh [--sanitizers]" >&2; exit 2 ;;
esac

status=0
for preset in "${presets[@]}"; do
  scripts/build.sh "$preset"
  ctest --preset "$preset" -j "$((2 * $(nproc)))" || status=$?
done
exit $status
