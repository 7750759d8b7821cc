#!/usr/bin/env bash
# Installs packages of npm and what they need into a folder of the build, once:
#   install_npm.sh FOLDER DATE NAME@VERSION...
# What they need is taken as it was before the date. They may need each other in other versions than given.
# Exits with 77 when npm's registry cannot be reached.
set -euo pipefail

folder=$1 before=$2
shift 2

mkdir -p "$(dirname "$folder")"
exec 9>"$folder.lock"
flock 9  # tests run side by side
[[ ! -d $folder ]] || exit 0
command -v node >/dev/null && command -v npm >/dev/null || { echo "node or npm is missing: run scripts/setup.sh" >&2; exit 1; }

fresh=$folder.new
trap 'rm -rf "$fresh"' EXIT
options=(--no-save --no-audit --no-fund --no-update-notifier --loglevel=error --legacy-peer-deps --cache "$fresh/cache" --fetch-retries=1)
mkdir -p "$fresh"
if ! npm install "${options[@]}" --prefix "$fresh" --before "$before" "$@" >&2; then
  npm view "${options[@]}" "$1" version >/dev/null 2>&1 && exit 1
  echo "npm's registry cannot be reached, so ${*%@*} are not tried" >&2
  exit 77
fi
rm -rf "$fresh/cache"
mv "$fresh" "$folder"
