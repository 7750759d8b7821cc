#!/usr/bin/env bash
# Runs the commands of a tutorial in an empty folder and compares what they print.
# In its console blocks, "$ " begins a command and "..." matches any text; the block after <!-- file: NAME --> is
# the content of that file.
# Arguments: the tutorial, the folder of the programs.
set -uo pipefail
tutorial=$(realpath "$1")
PATH=$2:$PATH
folder=$(mktemp -d)
export HOME=$folder
unset ZEPHRA_REGISTRY XDG_DATA_HOME
output=$folder.output
stop_all() {
  find "$folder" -name .tscript-sandbox -printf '%h\n' | while read -r sandbox; do tscript sandbox --dir "$sandbox" down; done
  rm -rf "$folder" "$output"
} &>/dev/null
trap stop_all EXIT
cd "$folder" || exit 1

failures=0
commands=0
command='' expected='' block='' file='' status=0

# Output as a pattern of [[ ]].
pattern_of() { sed 's/[][*?\\]/\\&/g; s/\.\.\./*/g' <<<"$1"; }
with_status() { return "$1"; }

compare() {
  [[ -n $command ]] || return 0
  with_status "$status"
  eval "$command" >"$output" 2>&1 </dev/null
  status=$?
  local actual
  actual=$(tr -d '\r' <"$output") # as a terminal shows it
  commands=$((commands + 1))
  # shellcheck disable=SC2053 # a pattern
  if [[ $actual != $(pattern_of "${expected%$'\n'}") ]]; then
    printf '$ %s\n--- expected\n%s--- printed\n%s\n' "$command" "$expected" "$actual"
    failures=$((failures + 1))
  fi
  command='' expected=''
}

while IFS= read -r line; do
  case $block:$line in
    :'<!-- file: '*) file=${line#<!-- file: } file=${file% -->} ;;
    :'```console') block=console ;;
    :'```'*) block=other; [[ -z $file ]] || : >"$file" ;;
    *:'```') compare; block='' file='' ;;
    console:'$ '*) compare; command=${line#\$ } ;;
    console:*) expected+=$line$'\n' ;;
    other:*) [[ -z $file ]] || printf '%s\n' "$line" >>"$file" ;;
  esac
done <"$tutorial"

echo "$commands commands, $failures differ"
[[ $commands -gt 0 && $failures -eq 0 ]]
