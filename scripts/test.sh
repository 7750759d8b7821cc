#!/usr/bin/env bash
# Builds and runs all tests; ends with CTest's summary.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh release
ctest --preset release -j "$(nproc)"
