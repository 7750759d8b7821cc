#!/usr/bin/env bash
# Builds everything into build/ (build/lib, build/bin). Argument: a preset, "release" by default.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
preset=${1:-release}
cmake --preset "$preset" >&2
cmake --build --preset "$preset" >&2
