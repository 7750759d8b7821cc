#!/usr/bin/env bash
# Builds library and programs, creates a sample installation with a local SQL server and runs tscripts in it.
#   scripts/demo.sh [FOLDER]   default: demo in the checkout
# The exit code is 0 if every result is as expected. The server is stopped at the end. The folder is kept until the
# next run deletes it.
set -euo pipefail

root=$(realpath "$(dirname "$0")/..")
folder=$(realpath -m "${1:-$root/demo}")
cd "$root"
installation=$folder/installation
bin=$root/build/bin

fail() {
  printf '\ndemo: %s\n' "$*" >&2
  exit 1
}

step() { printf '\n== %s\n' "$*"; }

# expect CODE TEXT COMMAND...: runs the command, prints its output, and checks its exit code and that its output
# contains the text.
expect() {
  local code=$1 text=$2 got=0 output
  shift 2
  output=$("$@" 2>&1) || got=$?
  printf '%s\n' "$output"
  [[ $got -eq $code ]] || fail "'${*##*/}' ended with $got, expected $code"
  [[ $output == *"$text"* ]] || fail "'${*##*/}' did not print '$text'"
}

query() { # DATABASE SQL
  SQLCMDPASSWORD=$(<"$installation/password") "$bin/sqlcmd" -b -W -S "$server" -U sa -d "$1" -Q "$2"
}

expect_journal() { # SCRIPT STATUS PARAMETERS
  local row
  row=$(query dorvas "SET NOCOUNT ON SELECT TOP 1 status, inputParams, CASE WHEN timeEnd >= timeStart THEN 'ended' END AS finished
                      FROM ZpTscriptExec WHERE name = '$1' ORDER BY id DESC" | sed -n 3p)
  [[ $row == "$2 $3 ended" ]] || fail "the journal of $1 says '$row', expected '$2 $3 ended'"
}

delete_earlier_run() {
  [[ -e $folder ]] || return 0
  [[ -d $folder && -z $(ls -A "$folder") ]] && return 0
  [[ -f $folder/.tscript-demo ]] ||
    fail "$folder is not empty and was not created by this script; choose another folder"
  "$bin/tscript" sandbox down --dir "$installation"
  rm -rf -- "$folder"
}

show_journal() {
  query dorvas "SET NOCOUNT ON SELECT id, name, status, CONVERT(varchar(19), timeStart, 120) AS timeStart,
                CONVERT(varchar(19), timeEnd, 120) AS timeEnd, inputParams FROM ZpTscriptExec ORDER BY id"
}

scripts/build.sh run
delete_earlier_run
mkdir -p "$folder"
touch "$folder/.tscript-demo"
trap '"$bin/tscript" sandbox down --dir "$installation" >/dev/null 2>&1' EXIT

step "A sample installation, with its SQL server"
expect 0 "running on 127.0.0.1," "$bin/tscript" sandbox up --dir "$installation"
export ZEPHRA_REGISTRY=$installation/registry.toml
server=$(sed -n 's/^sINSTANCE *= *"\(.*\)"/\1/p' "$ZEPHRA_REGISTRY")

step "A package in plain text, as its author writes it"
plain=sandbox/installation/packages/PurgeEvents.txt
cat "$plain"

step "The same package, encrypted, in the Scripts folder"
expect 0 "packed" "$bin/tscript" pack "$plain"
head -c 300 "$installation/Scripts/PurgeEvents.sql"
printf '...\n'
! grep -q DELETE "$installation/Scripts/PurgeEvents.sql" || fail "the package is readable"

step "A run by name, with two parameters"
expect 0 "Deleted 54 event(s) older than 30 day(s)." "$bin/tscript" run PurgeEvents -p 30 -p 2
expect_journal PurgeEvents 1 "30, 2"

step "Its lines in the session log"
log=$(grep -l "PurgeEvents" "$installation"/logs/*.log | head -n 1) || fail "no session log names PurgeEvents"
grep "PurgeEvents" "$log" | head -n 8
grep -q "Tscript Execution Succeeded!" "$log" || fail "the session log does not report the success"

step "Its row in the catalogue"
query dorvas "SET NOCOUNT ON SELECT id, type, name, auditLevel, CONVERT(varchar(19), creationTime, 120) AS creationTime
              FROM ZpTscripts WHERE name = 'PurgeEvents'"

step "Its row in the journal: status 1, start and end, parameters"
show_journal

step "A package that fails half-way"
expect 1 "Violation of PRIMARY KEY constraint" "$bin/tscript" run CloseAuditPeriods -p 2024-01 -p 2024-02
expect_journal CloseAuditPeriods 2 "2024-01, 2024-02"

step "The journal: status 2"
show_journal

step "A package that writes XML"
expect 0 "</errors>" "$bin/tscript" run EventReport -p 10

step "A package bound to this site"
expect 0 "sample site" "$bin/tscript" run SiteInventory

step "A tscript that is a stored procedure: usage, parameters, a run"
expect 0 "EXEC tsEventSummary" "$bin/tscript" help tsEventSummary
expect 0 "@zone" "$bin/tscript" params tsEventSummary
expect 0 "Tscript Execution Succeeded!" "$bin/tscript" exec tsEventSummary "@days = 20, @zone = 'north'"
expect_journal tsEventSummary 1 "@days = 20, @zone = 'north'"

step "A secured tscript is refused without a user"
expect 5 "Need userId input for secured Tscript!" "$bin/tscript" exec tsSwitchNode "'spare', 1"

step "The server: databases, version, a backup, its age, the statement that restores it"
expect 0 "dorvas" "$bin/tscript" db list
expect 0 "15" "$bin/tscript" db version
expect 0 "never" "$bin/tscript" db last-backup dorvas
expect 0 "Backed-Up the Database" "$bin/tscript" db backup dorvas "$installation/backups/dorvas.bak"
expect 0 "0 day(s) ago" "$bin/tscript" db last-backup dorvas
expect 0 "RESTORE DATABASE dorvas FROM DISK" "$bin/tscript" db restore "$installation/backups/dorvas.bak" dorvas \
  --to "$installation/data"

step "The server is stopped; the folder stays"
expect 0 "stopped" "$bin/tscript" sandbox down --dir "$installation"
trap - EXIT
[[ -z $(find "$installation/temp" -name '*.sql' -o -name '*_DE.txt') ]] || fail "a run left files in the temporary folder"
ls -la "$installation"
printf '\ndemo: every result is as expected. The installation is in %s\n' "$installation"
