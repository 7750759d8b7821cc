#!/usr/bin/env bash
# Installs the build into a folder, builds the consumer against it as another project would, by CMake and by
# pkg-config, and runs it against a sample installation made by the installed tools.
# Argument: the build folder.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
cleanup() {
  [[ ! -x "$work/prefix/bin/tscript" ]] || "$work/prefix/bin/tscript" sandbox --dir "$work/site" down >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
library=$(dirname "$(find "$work/prefix" -name libDVUtilities.so)")

cmake -S "$source" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/consumer"

# pkg-config's flags are enough to compile, link and start a program.
flags=$(PKG_CONFIG_PATH="$library/pkgconfig" pkg-config --cflags --libs DVUtilities)
eval "c++ -std=c++17 \"\$source\"/main.cpp $flags -Wl,-rpath,\"\$library\" -o \"\$work/by-pkg-config\""

"$work/prefix/bin/tscript" sandbox --dir "$work/site" up >/dev/null
for program in "$work/consumer/consumer" "$work/by-pkg-config"; do
  ZEPHRA_REGISTRY=$work/site/registry.toml "$program"
done
