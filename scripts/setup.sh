#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests and the demo need. Quiet and quick when
# nothing is missing. Run as root or with sudo at hand.
#   scripts/setup.sh        for the build, the tests and the demo
#   scripts/setup.sh docs   what the API reference and the man pages are made with, as well
#   scripts/setup.sh fuzz   what the fuzz targets are built with, as well
#   scripts/setup.sh tidy   what the tidy preset looks with, as well
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libtomlplusplus-dev libsodium-dev libspdlog-dev libssl-dev libsqlite3-dev libcli11-dev nlohmann-json3-dev
  libboost-dev
  unixodbc unixodbc-dev tdsodbc freetds-bin
  libgtest-dev file chromium python3-pymssql
)
# Node.js is often there from elsewhere, and Debian's own packages collide with it.
command -v node >/dev/null || packages+=(nodejs)
command -v npm >/dev/null || packages+=(npm)
case "${1-}" in
  "") ;;
  docs) packages+=(doxygen groff-base) ;;
  fuzz) packages+=(clang libclang-rt-dev llvm) ;;
  tidy) packages+=(clang-tidy) ;;
  *) echo "usage: scripts/setup.sh [docs | fuzz | tidy]" >&2; exit 2 ;;
esac

missing=()
for package in "${packages[@]}"; do
  [[ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)" == installed ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $EUID -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "setup: run as root to install: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi

echo "setup: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update -q && "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  cat "$log" >&2
  echo "setup: the packages above could not be installed" >&2
  exit 1
fi
