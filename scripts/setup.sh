#!/usr/bin/env bash
# Installs missing Debian packages. Prints nothing if none is missing. Needs root or sudo.
#   scripts/setup.sh run    packages for the build of library and programs, and to run them
#   scripts/setup.sh        also those for the tests
#   scripts/setup.sh bench  those of run, and for the benchmarks
#   scripts/setup.sh docs   those of run, and for the API reference and the man pages
#   scripts/setup.sh fuzz   those of run, and for the fuzz targets
#   scripts/setup.sh tidy   those of the tests, and for the preset tidy
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libtomlplusplus-dev libsodium-dev libspdlog-dev libssl-dev libsqlite3-dev libcli11-dev nlohmann-json3-dev
  libboost-dev libedit-dev libkrb5-dev
  unixodbc unixodbc-dev tdsodbc freetds-dev libsybdb5
)
test_packages=(
  abigail-tools freetds-bin libnss-wrapper krb5-kdc krb5-admin-server krb5-user faketime libgtest-dev file chromium openssl
  python3 python3-pymssql python3-pyodbc python3-sqlalchemy zsh fish
  libjtds-java golang-github-denisenkom-go-mssqldb-dev
)
# Debian's packages conflict with a Node.js from another source. A Java or Go from elsewhere will do.
command -v node >/dev/null || test_packages+=(nodejs)
command -v npm >/dev/null || test_packages+=(npm)
command -v javac >/dev/null || test_packages+=(default-jdk-headless)
command -v go >/dev/null || test_packages+=(golang-go)
case "${1-test}" in
  run) ;;
  test) packages+=("${test_packages[@]}") ;;
  bench) packages+=(libsoci-dev gnuplot-nox) ;;
  docs) packages+=(doxygen groff-base) ;;
  fuzz) packages+=(clang libclang-rt-dev llvm) ;;
  tidy) packages+=("${test_packages[@]}" clang-tidy) ;;
  *) echo "usage: scripts/setup.sh [run | test | bench | docs | fuzz | tidy]" >&2; exit 2 ;;
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
log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get)  # sudo does not pass the environment on
if ! { "${apt[@]}" update -q && "${apt[@]}" install -y -q --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
  cat "$log" >&2
  echo "setup: the packages above could not be installed" >&2
  exit 1
fi
