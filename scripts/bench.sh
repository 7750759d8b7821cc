#!/usr/bin/env bash
# Builds the benchmarks in build-bench/ and runs them (docs/measuring.md).
#   scripts/bench.sh [--quick] [--no-big-process] [--rounds N] [ROW...]
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
scripts/build.sh bench
exec build-bench/bin/dvu_bench "$@"
