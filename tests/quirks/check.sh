#!/usr/bin/env bash
# Checks that every test that docs/quirks.md and docs/security.md name, and every function of the former, exists.
# Arguments: the source folder, the build folder.
set -euo pipefail
source=$1
build=$2

tests=$(ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p')
cells() { awk -F' [|] ' -v cell="$1" '/^[|] [^b-]/ { print $cell }' "$source/docs/quirks.md" | grep -o '`[^`]*`' | tr -d '`' | sort -u; }

status=0
for name in $(cells 3); do
  grep -qxF "$name" <<<"$tests" || { echo "docs/quirks.md names a test that does not exist: $name"; status=1; }
done
for name in $(grep -oE '`[A-Z][A-Za-z]*\.[A-Z][A-Za-z0-9]*`' "$source/docs/security.md" | tr -d '`' | sort -u); do
  grep -qxF "$name" <<<"$tests" || { echo "docs/security.md names a test that does not exist: $name"; status=1; }
done
for name in $(cells 2 | grep -v '\.cpp$'); do
  grep -rqwF "${name##*::}" "$source/src" "$source/include" || { echo "docs/quirks.md names a function that does not exist: $name"; status=1; }
done
exit $status
