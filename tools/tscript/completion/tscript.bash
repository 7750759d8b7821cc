# bash completion for tscript                                               -*- shell-script -*-

# Sets REPLY to the word as the shell would pass it on, and `quote` to the quotation mark that is still open. Nothing is
# expanded or run.
_tscript_unquote() {
  local rest=$1 c
  REPLY='' quote=''
  while [[ -n $rest ]]; do
    c=${rest:0:1} rest=${rest:1}
    if [[ $c == \\ && $quote != \' ]]; then
      REPLY+=${rest:0:1} rest=${rest:1}
    elif [[ -n $quote && $c == "$quote" ]]; then
      quote=''
    elif [[ -z $quote && $c == [\'\"] ]]; then
      quote=$c
    else
      REPLY+=$c
    fi
  done
}

# Sets REPLY to a candidate as it is to be typed. readline keeps the opening quotation mark and closes it.
_tscript_quote() {
  case $quote in
    \') REPLY=${1//\'/\'\\\'\'} ;;
    \") REPLY=${1//[\\\$\`\"]/\\&} ;;
    *) printf -v REPLY '%q' "$1" ;;
  esac
}

# The program itself says what the last word can be. A candidate is any text: it is quoted, never run. Beside names of
# files, the shell quotes it.
_tscript() {
  local word files='' quote='' words=() REPLY
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    _tscript_unquote "$word"
    words+=("$REPLY")
  done
  local current=$REPLY
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) files=f; continue ;;
      :folders) files=d; continue ;;
    esac
    [[ $word == "$current"* ]] || continue
    [[ -n $files ]] && REPLY=$word || _tscript_quote "$word"
    COMPREPLY+=("$REPLY")
  done < <(tscript __complete "${words[@]}" 2>/dev/null)
  [[ -n $files ]] || return 0
  compopt -o filenames
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen "-$files" -- "$current")
}

complete -F _tscript tscript
