#!/usr/bin/env bash
# Installs the build into a folder, configures and builds the consumer against it as another project would,
# also by pkg-config, and runs it against a sample installation made by the installed tools.
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

# pkg-config's flags are enough to compile, link and start a program; without arguments it says how it is called.
flags=$(PKG_CONFIG_PATH="$library/pkgconfig" pkg-config --cflags --libs DVUtilities)
eval "c++ -std=c++17 \"\$source\"/*.cpp $flags -Wl,-rpath,\"\$library\" -o \"\$work/by-pkg-config\""
"$work/by-pkg-config" 2>/dev/null && exit 1 || [[ $? -eq 2 ]]

"$work/prefix/bin/tscript" sandbox --dir "$work/site" up >/dev/null
store=$work/site/registry.toml
server=$(sed -n 's/^sINSTANCE *= *"\(.*\)"/\1/p' "$store")
ZEPHRA_REGISTRY=$store "$work/consumer/consumer" "$work/site" "$server" sa "$work/site/password"
