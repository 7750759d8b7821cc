#!/usr/bin/env bash
# Installs a package of npm and what it needs into a folder of the build, once:
#   install_npm.sh FOLDER NAME@VERSION DATE
# What it needs is taken as it was before the date.
# Exits with 77 when npm's registry cannot be reached.
set -euo pipefail

folder=$1 package=$2 before=$3

[[ ! -d $folder ]] || exit 0
command -v node >/dev/null && command -v npm >/dev/null || { echo "node or npm is missing: run scripts/setup.sh" >&2; exit 1; }

fresh=$folder.new
trap 'rm -rf "$fresh"' EXIT
options=(--no-save --no-audit --no-fund --no-update-notifier --loglevel=error --cache "$fresh/cache" --fetch-retries=1)
mkdir -p "$fresh"
if ! npm install "${options[@]}" --prefix "$fresh" --before "$before" "$package" >&2; then
  npm view "${options[@]}" "$package" version >/dev/null 2>&1 && exit 1
  echo "npm's registry cannot be reached, so ${package%@*} is not tried" >&2
  exit 77
fi
rm -rf "$fresh/cache"
mv "$fresh" "$folder"
