#!/usr/bin/env bash
# Looks at the hardening of programs and libraries. Arguments: the compile_commands.json of a build with
# optimisation, or "" for another build; the files.
set -euo pipefail
commands=$1
shift
status=0

complain() {
  echo "$*"
  status=1
}

for file; do
  symbols=$(nm -D "$file")
  segments=$(readelf -lW "$file")
  [[ $(readelf -hW "$file") == *"Type:"*DYN* ]] || complain "$file is not position-independent"
  [[ $segments == *GNU_RELRO* ]] || complain "$file: tables of addresses stay writable (RELRO)"
  [[ $(readelf -dW "$file") == *BIND_NOW* ]] || complain "$file: functions are bound late"
  [[ $segments =~ GNU_STACK[^$'\n']*\ RWE\  ]] && complain "$file: the stack is executable"
  [[ $segments == *GNU_STACK* ]] || complain "$file does not say that its stack is not executable"
  [[ $symbols == *__stack_chk_fail* ]] || complain "$file: no stack protector"
done
# _FORTIFY_SOURCE needs optimisation. Not every file has a call that it changes.
if [[ -n $commands ]]; then
  unfortified=$(grep '"command":' "$commands" | grep -vc -- '-D_FORTIFY_SOURCE=2' || true)
  [[ $unfortified == 0 ]] || complain "$unfortified sources are compiled without _FORTIFY_SOURCE"
fi
exit $status
