#!/usr/bin/env bash
# Compares the layouts and member functions of the exported headers' types with the recorded ones, headers.abi.xz
# beside this script: a program that was compiled with older headers must not read another member.
# Arguments: the checkout, the compiler. With a third argument, "record", records them anew.
set -euo pipefail
source=$1
compiler=$2
baseline=$source/tests/exports/headers.abi.xz
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$compiler" -std=c++20 -g -O0 -fPIC -shared -fvisibility=hidden -I"$source/include" "$source/tests/exports/headers.cpp" \
  -o "$work/libheaders.so"
if [[ ${3-} == record ]]; then
  abidw --no-show-locs --no-comp-dir-path --no-corpus-path "$work/libheaders.so" | xz -9 >"$baseline"
  exit
fi
xz -dc "$baseline" >"$work/headers.abi"
abidiff --no-show-locs "$work/headers.abi" "$work/libheaders.so" || {
  echo "The exported types have changed. If programs may be compiled anew: tests/exports/abi.sh . c++ record"
  exit 1
}
