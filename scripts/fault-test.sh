#!/usr/bin/env bash
# Makes every call fail that our code makes to open, read, write, rename or flush a file, to create a pipe, to
# start a program or to get memory: one call a run, in each command below, in tscript and in sqlcmd. A run must
# end without a signal; it must be right or fail with a message; it must leave no open journal row that it does
# not report, and nothing in plain text.
# Usage: scripts/fault-test.sh [STEP [BUILD [COMMAND...]]]
#   every STEP-th call (default: every; of those for memory every 10 * STEP-th, unless STEP is 1), of the programs
#   in BUILD/bin (default: build), in these commands (default: all).
set -uo pipefail
step=${1:-1}
[[ $step =~ ^[1-9][0-9]*$ ]] || { echo "usage: scripts/fault-test.sh [STEP [BUILD [COMMAND...]]]" >&2; exit 2; }
build=$(realpath "${2:-$(dirname "$0")/../build}")
shift $(($# < 2 ? $# : 2))
tscript=$build/bin/tscript
place=$(mktemp -d)
sandbox=$place/sandbox
status=0
runs=0

complain() {
  echo "fault-test: $command, $program, $(cat "$place/report"): $*" >&2
  sed 's/^/    /' "$place/errors" | head -5 >&2
  status=1
}

trap '"$tscript" sandbox down --dir "$sandbox" >/dev/null 2>&1; rm -rf "$place"' EXIT
injector=$build/lib/libfault_injector.so
[[ -e $injector ]] || { echo "fault-test: $injector is missing; build with the tests" >&2; exit 1; }
up=$("$tscript" sandbox up --dir "$sandbox") || exit 1
eval "$up"
plain='#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT '\''plain text of %%s'\''\n'
# shellcheck disable=SC2059
printf "$plain" >"$place/Faulty.txt"
"$tscript" pack "$place/Faulty.txt" 2>/dev/null
mkdir "$place/old" "$place/new"
"$tscript" key create "$place/next.key" >/dev/null 2>&1
password=$(cat "$sandbox/password")
cp "$sandbox/registry.toml" "$place/registry.toml"
sed "s|$sandbox/cipher.key|$place/next.key|" "$place/registry.toml" >"$place/next.toml"
cp "$sandbox/Scripts/Faulty.sql" "$place/Faulty.sql"
cp -r "$sandbox/Scripts" "$place/Scripts"

declare -A commands=(
  [run]='run Faulty -p it --data'
  [exec]='exec tsEventSummary -p days=3 --data'
  [pack]="pack $place/Faulty.txt -o $place/new/Faulty.sql"
  [repack]="repack --old-key $sandbox/cipher.key --new-key $place/next.key $place/old/Faulty.sql"
  [credentials]='credentials set Dorvas --user sa'
  [report]="report -o $place/report.html"
  [backup]="db backup Dorvas $sandbox/backups/faulty.bak"
  [rotate]='rotate --grace 0'
)

restore() {
  cp "$place/Faulty.sql" "$place/old/Faulty.sql"
  cp "$place/registry.toml" "$sandbox/registry.toml"
  rm -f "$place/new/Faulty.sql" "$place/report.html" "$place/report" "$sandbox"/cipher.key.*
  [[ $command != rotate ]] || cp "$place/Scripts"/* "$sandbox/Scripts/"
}

run() {  # VARIABLE=VALUE...
  # shellcheck disable=SC2086
  printf '%s\n' "$password" | env "$@" timeout -k 5 60 "$tscript" ${commands[$command]} >"$place/output" 2>"$place/errors"
}

# The packages that a command may have written, and the store, are whole, whether it succeeded or not.
check_files() {
  local file
  for file in "$place/old/Faulty.sql" "$place/new/Faulty.sql"; do
    [[ $command == rotate || ! -e $file ]] || "$tscript" inspect "$file" >/dev/null 2>&1 ||
      "$tscript" --store "$place/next.toml" inspect "$file" >/dev/null 2>&1 || complain "$file is not whole"
  done
  [[ $command != repack || $1 != 0 ]] || ! cmp -s "$place/old/Faulty.sql" "$place/Faulty.sql" || complain "not repacked"
  [[ $command != pack || $1 != 0 || -e $place/new/Faulty.sql ]] || complain "the package is missing"
  if [[ $command == report && -e $place/report.html ]]; then
    tail -c 20 "$place/report.html" | grep -q '</html>' || complain "the report is not whole"
  fi
  if [[ $command == credentials ]]; then
    cmp -s "$place/registry.toml" "$sandbox/registry.toml" || "$tscript" credentials test Dorvas >/dev/null 2>&1 ||
      complain "the store is damaged"
  fi
  if [[ $command == rotate ]]; then
    "$tscript" run -q Faulty -p it >/dev/null 2>&1 || complain "a run fails after it"
    [[ $1 == 0 ]] || "$tscript" rotate --grace 0 >/dev/null 2>&1 || complain "it cannot be completed"
  fi
}

check() {  # EXIT CODE
  runs=$((runs + 1))
  (($1 < 124 || $1 == 130)) || complain "exit code $1"
  [[ $1 == 0 || -s $place/errors ]] || complain "exit code $1 without a message"
  # The library goes on without memory for a part of the catalogue, and says so in the output.
  [[ $1 != 0 || $(<"$place/output") == *"$(<"$place/expected")"* ]] || complain "exit code 0, but another output"
  ! grep -q 'terminate called\|signal [0-9]' "$place/errors" || complain "a process died"
  check_files "$1"
  local left
  left=$(find "$sandbox/temp" "$sandbox/Scripts" "$place/new" "$place/old" -name '*.sql.*' -o -path "$sandbox/temp/*" -type f | head -3)
  [[ -z $left ]] || { complain "left $left"; rm -f "$sandbox"/temp/* "$sandbox/Scripts"/*.sql.*; }
  ! grep -rlq 'plain text of' "$sandbox/Scripts" "$sandbox/temp" || complain "plain text in the folders"
  if [[ $command == run || $command == exec ]]; then
    for id in $("$tscript" journal --status running --last 0 --json | sed -nE 's/.*"id": ?([0-9]+).*/\1/p'); do
      grep -q 'stays open\|may be open\|not recorded' "$place/errors" || complain "row $id stays open without a word"
      "$tscript" journal close "$id" --stale 0 --remark fault-test >/dev/null 2>&1
    done
  fi
}

[[ $# -gt 0 ]] || set -- run exec pack repack credentials report backup rotate
for command in "$@"; do
  [[ -n ${commands[$command]-} ]] || { echo "fault-test: there is no command '$command': ${!commands[*]}" >&2; exit 2; }
  restore
  run || { echo "fault-test: $command fails without a fault" >&2; cat "$place/errors" >&2; exit 1; }
  cp "$place/output" "$place/expected"
  programs=tscript
  [[ $command != run && $command != exec && $command != backup ]] || programs+=' sqlcmd'
  for program in $programs; do
    for kind in open read write rename fsync pipe spawn memory; do
      stride=$step
      [[ $kind != memory || $step == 1 ]] || stride=$((10 * step))
      for ((call = 1; ; call += stride)); do
        restore
        run FAULT_KIND=$kind FAULT_CALL=$call FAULT_PROGRAM="$program" FAULT_MODULES="$build/" \
          FAULT_REPORT="$place/report" LD_PRELOAD="$injector"
        code=$?
        [[ -s $place/report ]] || break
        check $code
      done
    done
  done
done
echo "fault-test: $runs runs"
exit $status
