#!/usr/bin/env bash
# Builds the fuzz targets in build-fuzz/ and runs each, starting from its seeds, its dictionary and the corpus of earlier
# runs.
#   scripts/fuzz.sh [SECONDS]   per target; default: 30
# The exit code is 1 after a finding. Its input is saved in build-fuzz/findings/; to reproduce it:
#   build-fuzz/bin/fuzz_NAME FILE
set -euo pipefail
CDPATH='' cd "$(dirname "$0")/.."
seconds=${1:-30}
[[ $# -le 1 && $seconds =~ ^[1-9][0-9]*$ ]] || { echo "usage: scripts/fuzz.sh [SECONDS]" >&2; exit 2; }

scripts/build.sh fuzz
findings=$PWD/build-fuzz/findings
mkdir -p "$findings"
[[ ! -w /dev/shm ]] || export TMPDIR=/dev/shm  # for the data of the targets

# Every batch of the golden scripts is a seed of fuzz_tsql.
mkdir -p build-fuzz/batches
awk '/^(GO$|-->)/ { close(file); ++batch; next } { file = "build-fuzz/batches/" batch + 0; print > file }
     / -->/ { close(file); ++batch }' tests/tsql/scripts/*.sql

status=0
for target in build-fuzz/bin/fuzz_*; do
  name=${target##*/fuzz_}
  corpus=build-fuzz/corpus/$name
  mkdir -p "$corpus"
  seeds=(fuzz/seeds/"$name")
  [[ -d ${seeds[0]} ]] || seeds=()
  [[ $name != tsql ]] || seeds+=(build-fuzz/batches)
  dictionary=()
  [[ ! -f fuzz/dictionaries/$name ]] || dictionary=(-dict=fuzz/dictionaries/"$name")
  log=$findings/$name.log
  if "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$findings/$name-" "${dictionary[@]}" "$corpus" "${seeds[@]}" >"$log" 2>&1; then
    printf '%-16s nothing found in %s runs\n' "$name" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    rm -f "$log"
  else
    printf '%-16s FINDING: %s\n' "$name" "$(grep -m 1 -E 'ERROR|runtime error|Test unit written' "$log" || true)"
    printf '%16s see %s\n' "" "$log"
    status=1
  fi
done
exit $status
