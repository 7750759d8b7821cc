#!/usr/bin/env bash
# Installs tedious and what it needs into a folder of the build, once: install_tedious.sh FOLDER
# Exits with 77 when npm's registry cannot be reached.
set -euo pipefail

folder=$1
version=18.6.1
before=2025-01-01 # its dependencies as they were then: they run on Debian's Node.js 18

[[ ! -d $folder ]] || exit 0
command -v node >/dev/null && command -v npm >/dev/null || { echo "node or npm is missing: run scripts/setup.sh" >&2; exit 1; }

fresh=$folder.new
trap 'rm -rf "$fresh"' EXIT
options=(--no-save --no-audit --no-fund --no-update-notifier --loglevel=error --cache "$fresh/cache" --fetch-retries=1)
mkdir -p "$fresh"
if ! npm install "${options[@]}" --prefix "$fresh" --before "$before" "tedious@$version" >&2; then
  npm view "${options[@]}" "tedious@$version" version >/dev/null 2>&1 && exit 1
  echo "npm's registry cannot be reached, so tedious is not tried" >&2
  exit 77
fi
rm -rf "$fresh/cache"
mv "$fresh" "$folder"
