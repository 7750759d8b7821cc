#!/usr/bin/env bash
# Installs missing Debian packages. Prints nothing if none is missing. Needs root or sudo.
#   scripts/setup.sh        packages for the build, the tests and the demo
#   scripts/setup.sh docs   also those for the API reference and the man pages
#   scripts/setup.sh fuzz   also those for the fuzz targets
#   scripts/setup.sh tidy   also those for the preset tidy
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libtomlplusplus-dev libsodium-dev libspdlog-dev libssl-dev libsqlite3-dev libcli11-dev nlohmann-json3-dev
  libboost-dev
  unixodbc unixodbc-dev tdsodbc freetds-bin freetds-dev libsybdb5
  libgtest-dev file chromium openssl python3 python3-pymssql
)
# Debian's packages conflict with a Node.js from another source.
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
