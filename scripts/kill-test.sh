#!/usr/bin/env bash
# Kills runs of a sample installation at random moments, 2,000 times by default, and checks after each kill
# that no plain copy of the package is left; then kills a tenth as many rotations of keys, after each of which a run
# must succeed. Checks at the end that every record of the log is whole, that
# `tscript tidy` finds all files, and that every journal row is closed or listed as running.
# Usage: scripts/kill-test.sh [times [folder]]. Needs a build in build/bin.
set -euo pipefail
times=${1:-2000}
[[ $# -le 2 && $times =~ ^[1-9][0-9]*$ ]] || { echo "usage: scripts/kill-test.sh [times [folder]]" >&2; exit 2; }
place=${2:-$(mktemp -d)}
bin=$(cd "$(dirname "$0")/../build/bin" && pwd)
tscript=$bin/tscript
status=0

complain() {
  echo "kill-test: $*" >&2
  status=1
}

[[ ! -e $place/sandbox ]] || { echo "kill-test: $place/sandbox exists; choose another folder" >&2; exit 2; }
trap '"$tscript" sandbox down --dir "$place/sandbox" >/dev/null 2>&1; rm -rf "$place/sandbox"; rmdir "$place" 2>/dev/null || true' EXIT
up=$("$tscript" sandbox up --dir "$place/sandbox")
eval "$up"
printf '#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT '\''secret text'\''\nGO\nPRINT '\''%%s'\''\n' >"$place/sandbox/Killed.txt"
"$tscript" pack "$place/sandbox/Killed.txt"
rm "$place/sandbox/Killed.txt"

for ((i = 1; i <= times; i++)); do
  setsid "$tscript" run -q Killed -p "run $i" >/dev/null 2>&1 &
  pid=$!
  sleep "0.$(printf '%03d' $((RANDOM % 400)))"
  kill -KILL -- "-$pid" 2>/dev/null || kill -KILL "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  for copy in "$place"/sandbox/temp/*_DE.txt; do
    [[ ! -s $copy ]] || complain "kill $i left the plain copy $copy"
  done
done

# Whenever a rotation of keys is killed, runs find a key that fits.
for ((i = 1; i <= times / 10; i++)); do
  setsid "$tscript" rotate --grace 0 >/dev/null 2>&1 &
  pid=$!
  sleep "0.$(printf '%03d' $((RANDOM % 120)))"
  kill -KILL -- "-$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  "$tscript" run -q Killed -p "rotation $i" >/dev/null 2>&1 || complain "after kill $i of a rotation, a run fails"
done
"$tscript" rotate --grace 0 2>/dev/null || complain "a rotation that was killed cannot be completed"

# A line of the session log begins with a time or is indented.
bad=$(grep -cvE '^([0-9]{4}/[0-9]{2}/[0-9]{2} |[[:space:]]|$)' "$place/sandbox/logs/Tscript.log" || true)
[[ $bad == 0 ]] || complain "$bad line(s) of Tscript.log are no whole entries"

find "$place/sandbox/temp" "$place/sandbox/logs" -type f -exec touch -d '10 minutes ago' {} +
left=$("$tscript" tidy --dry-run 2>/dev/null | wc -l)
"$tscript" tidy --yes >/dev/null 2>&1
remaining=$(find "$place/sandbox/temp" -type f | wc -l)
[[ $remaining == 0 ]] || complain "tidy left $remaining file(s) in the temporary folder"

running() { "$tscript" journal --name Killed --status running --last 0 --json | sed -nE 's/.*"id": ?([0-9]+).*/\1/p'; }
open=$(running | wc -l)
for id in $(running); do
  "$tscript" journal close "$id" --stale 0 --remark "killed by kill-test.sh" 2>/dev/null || complain "row $id cannot be closed"
done
after=$(running | wc -l)
[[ $after == 0 ]] || complain "$after row(s) stay open"
echo "$times kills: $left file(s) tidied up, $open row(s) closed afterwards"
exit $status
