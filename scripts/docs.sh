#!/usr/bin/env bash
# Builds the API reference of the exported headers in build/docs/html and checks the man pages. A warning is a
# failure.
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
scripts/setup.sh docs

mkdir -p build/docs
doxygen docs/Doxyfile

for page in docs/man/*.1; do
  complaints=$(groff -man -Tutf8 -ww "$page" 2>&1 >/dev/null) || complaints+=" (groff fails for $page)"
  [[ -z "$complaints" ]] || { printf 'docs: %s\n' "$complaints" >&2; exit 1; }
done
echo "docs: build/docs/html/index.html" >&2
