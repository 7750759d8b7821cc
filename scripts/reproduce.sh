#!/usr/bin/env bash
# Builds the release twice, in two folders, and compares the programs and libraries byte for byte.
#   scripts/reproduce.sh [TARGET...]   default: everything but the tests
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
scripts/setup.sh run
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

export CCACHE_DISABLE=1
for copy in one another; do
  mkdir "$work/$copy"
  tar c --exclude=./build* --exclude=./.git . | tar x -C "$work/$copy"
  (cd "$work/$copy" && cmake --preset run && cmake --build --preset run --target "${@:-all}") >"$work/log" 2>&1 ||
    { cat "$work/log"; exit 1; }
done
cd "$work/one/build"
find bin lib -type f | sort >"$work/files"
[[ -s $work/files ]] || { echo "nothing was built"; exit 1; }
status=0
while read -r file; do
  cmp "$file" "$work/another/build/$file" || status=1
done <"$work/files"
[[ $status == 0 ]] && echo "$(wc -l <"$work/files") files are the same in both builds"
exit $status
