# bash completion for tscript                                               -*- shell-script -*-

# The installation's packages, by the home folder that the store in force names.
_tscript_packages() {
  local store=${ZEPHRA_REGISTRY:-/etc/zephra/registry.toml} home name i
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == --store ]] && store=${COMP_WORDS[i + 1]}
  done
  [[ -r $store ]] || return 0
  home=$(sed -n 's/^[[:space:]]*dZEPHRAHOME[[:space:]]*=[[:space:]]*"\(.*\)".*$/\1/p' "$store" | head -n 1)
  for name in "$home"/Scripts/*.sql; do
    [[ -e $name ]] || continue
    name=${name##*/}
    printf '%s\n' "${name%.sql}"
  done
}

# The command's words so far, options and their values left out.
_tscript_words() {
  local i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      --name | --status | --key | --since | --last | --stale | --store | --db | --dir | --port | --user | --to | --input | --old-key | --new-key | --sign | --package-version | --output | --parameter | -o | -p) ((i++)) ;;
      -*) ;;
      *) printf '%s ' "${COMP_WORDS[i]}" ;;
    esac
  done
}

_tscript_offer() { # WORDS: those that begin with the present word
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "${COMP_WORDS[COMP_CWORD]}")
}

# A package's name is any text: compgen would run the commands that stand in one.
_tscript_offer_packages() {
  local name quoted
  COMPREPLY=()
  while IFS= read -r name; do
    printf -v quoted '%q' "$name"
    [[ $quoted != "${COMP_WORDS[COMP_CWORD]}"* ]] || COMPREPLY+=("$quoted")
  done < <(_tscript_packages)
}

_tscript_files() {
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen "$@" -- "${COMP_WORDS[COMP_CWORD]}")
}

_tscript() {
  local databases="Dorvas NQ2 WFEngine VTCloud HistoryDB" words
  read -r -a words < <(_tscript_words)
  local current=${COMP_WORDS[COMP_CWORD]} options="--help --store --no-input"
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --store | --output | -o | --old-key | --new-key | --sign) _tscript_files -f; return ;;
    --dir | --to) _tscript_files -d; return ;;
    --status) _tscript_offer "running ok failed"; return ;;
    --db) _tscript_offer "$databases"; return ;;
    -p | --parameter | --input | --name | --since | --last | --stale | --port | --user | --package-version) COMPREPLY=(); return ;;
  esac
  case "${words[*]}" in
    "") _tscript_offer "run help exec params which catalogue journal report pack lint inspect repack db doctor schema config key credentials sandbox $options --version" ;;
    run*) options+=" --allow-missing" ;;&
    run* | exec*) options+=" -p --parameter --allow-tool-commands --db --input --dry-run --data -o --output -q --quiet --json" ;;&
    help* | params* | which* | catalogue* | journal* | report* | db*) options+=" --db" ;;&
    catalogue* | journal* | report*) options+=" --name" ;;&
    journal* | report*) options+=" --stale" ;;&
    journal | report*) options+=" --since" ;;&
    journal) options+=" --status --last" ;;&
    report*) options+=" -o --output --csv --json" ;;&
    pack*) options+=" -o --output --sign --package-version" ;;&
    inspect*) options+=" --body" ;;&
    params* | which* | catalogue* | journal* | inspect* | lint*) options+=" --json" ;;&
    repack*) options+=" --old-key --new-key --seal" ;;&
    "key create"*) options+=" --signing" ;;&
    "db restore"*) options+=" --to --execute" ;;&
    "db restore"* | "sandbox reset"*) options+=" --yes" ;;&
    schema*) options+=" --json" ;;&
    "schema install"*) options+=" --yes" ;;&
    "config show"*) options+=" --key" ;;&
    doctor | "config show" | "config get"* | "db list" | "db version" | "db last-backup"* | "sandbox status") options+=" --json" ;;&
    "sandbox shell"*) options+=" --db" ;;&
    "credentials set"*) options+=" --user" ;;&
    sandbox*) options+=" --dir" ;;&
    "sandbox up"*) options+=" --port" ;;&
    ?*) [[ $current != -* ]] || { _tscript_offer "$options"; return; } ;;&
    run | help | which) _tscript_offer_packages ;;
    journal) _tscript_offer "show" ;;
    db) _tscript_offer "list version last-backup backup restore" ;;
    schema) _tscript_offer "check install" ;;
    "schema check" | "schema install") _tscript_offer "$databases" ;;
    key) _tscript_offer "create" ;;
    credentials) _tscript_offer "set test" ;;
    config) _tscript_offer "show get set" ;;
    "credentials set" | "credentials test") _tscript_offer "$databases" ;;
    sandbox) _tscript_offer "up down status reset shell" ;;
    pack | lint | inspect | repack* | "key create") _tscript_files -f ;;
  esac
}

complete -F _tscript tscript
