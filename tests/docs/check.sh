#!/usr/bin/env bash
# Checks the documents: man pages name the options and commands that the programs have, the README's program
# compiles, and links between documents lead to existing files.
# Arguments: the checkout, the folder of the programs.
set -euo pipefail
cd "$1"
bin=$2
status=0

complain() {
  echo "$*"
  status=1
}

# The options that a man page names.
options_of() { sed 's/\\-/-/g; s/\\f[A-Z]/ /g' "docs/man/$1.1" | grep -oE '(^|[ ("])--?[A-Za-z?][A-Za-z-]*' | tr -d ' ("' | sort -u; }

names_of() { # the options that a program's usage names
  "$bin/$1" --help | grep -oE '(^|[ ,])--?[A-Za-z?][A-Za-z-]*' | tr -d ' ,' | sort -u
}

# Both ways, -h and --help of every program aside.
for program in sqlcmd tsqlbox; do
  while read -r option; do
    complain "$program: $option is in only one of usage and man page"
  done < <(comm -3 <(options_of "$program" | grep -vxE -- '-h|--help') \
                   <(names_of "$program" | grep -vxE -- '-h|--help') | tr -d '\t')
done

# Every command of the man page is one of those that tscript has.
commands_of_page() { sed -nE 's/^(\.BI? "?|\\fB|\.RI "\\fB)(run|exec|help|params|new|list|test|diff|pack|lint|inspect|repack|doctor|tidy|rotate|which|catalogue|journal|report|metrics|each|(db|journal|key|config|credentials|sandbox|schema) [a-z-]+).*/\2/p' docs/man/tscript.1; }
while read -r -a words; do
  "$bin/tscript" "${words[@]}" --help 2>/dev/null </dev/null | grep -q "^Usage: tscript ${words[*]} " ||
    complain "there is no command: tscript ${words[*]}"
done < <(commands_of_page)
[[ $(commands_of_page | wc -l) -ge 36 ]] || complain "the commands of tscript's man page were not found"

# Every option of those commands is in the man page.
while read -r option; do
  grep -q -- "$(sed 's/-/\\\\-/g' <<<"$option")" docs/man/tscript.1 || complain "tscript.1 does not name $option"
done < <({ "$bin/tscript" --help
           while read -r -a words; do "$bin/tscript" "${words[@]}" --help; done < <(commands_of_page); } </dev/null |
         grep -oE '(^|[ ,])--[a-z][a-z-]*' | tr -d ' ,' | sort -u)

# The completion of each shell offers the names of packages; bash quotes them, and never runs a part of a name.
home=$(mktemp -d)
mkdir "$home/Scripts"
touch "$home/Scripts/Purge \$(exit 7).sql" "$home/Scripts/Report.sql"
printf '[Instance001.Base]\ndZEPHRAHOME = "%s"\n' "$home" >"$home/store"
export ZEPHRA_REGISTRY=$home/store PATH=$bin:$PATH
offered=$(bash -c 'source tools/tscript/completion/tscript.bash
  COMP_WORDS=(tscript run P) COMP_CWORD=2
  _tscript && printf "%s\n" "${COMPREPLY[@]}"')
[[ $offered == 'Purge\ \$\(exit\ 7\)' ]] || complain "the completion offers, for one package's name: $offered"
offered=$(ZEPHRA_REGISTRY= bash -c 'source tools/tscript/completion/tscript.bash
  COMP_WORDS=(tscript --store "\"$1\"" run "\"P") COMP_CWORD=4
  _tscript && printf "%s\n" "${COMPREPLY[@]}"' - "$home/store")
[[ $offered == 'Purge \$(exit 7)' ]] || complain "the completion offers, behind a quotation mark: $offered"
offered=$(bash -c 'source tools/tscript/completion/tscript.bash
  compopt() { :; }
  COMP_WORDS=(tscript diff R) COMP_CWORD=2
  _tscript && printf "%s\n" "${COMPREPLY[@]}"')
[[ $offered == Report$'\n'README.md ]] || complain "the completion of diff offers: $offered"
[[ $(tscript __complete each --stores x -- run R) == *Report$'\t'package* ]] || complain "no completion after each --"
if command -v zsh >/dev/null; then
  offered=$(zsh -f -c '_describe() { print -l -- "${(@P)2}" }
    _tscript() { source tools/tscript/completion/_tscript }
    words=(tscript run "") CURRENT=3; _tscript')
  [[ $offered == *Report:package* ]] || complain "the completion of zsh offers: $offered"
fi
if command -v fish >/dev/null; then
  offered=$(HOME=$home fish -c 'source tools/tscript/completion/tscript.fish; complete -C "tscript run R"')
  [[ $offered == Report$'\t'package ]] || complain "the completion of fish offers: $offered"
fi

# groff, if installed, finds no fault in the man pages.
if command -v groff >/dev/null; then
  tscript __man "$home"
  complaints=$(groff -man -Tutf8 -ww docs/man/*.1 "$home"/*.1 2>&1 >/dev/null)
  [[ -z $complaints ]] || complain "$complaints"
fi
rm -r "$home"

# The program of the README compiles.
sed -n '/^```cpp$/,/^```$/{/^```/d;p}' README.md | c++ -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I include -x c++ - ||
  complain "README.md: the program does not compile"

# The links between the documents.
while IFS=: read -r document link; do
  target=$(dirname "$document")/${link%%#*}
  [[ -e $target ]] || complain "$document: the link to $link leads nowhere"
done < <(grep -oE '\]\([^)#][^):]*\)' README.md CONTRIBUTING.md docs/*.md | sed -E 's/\]\((.*)\)$/\1/')

exit $status
