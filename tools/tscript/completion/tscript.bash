# bash completion for tscript                                               -*- shell-script -*-

# The program itself says what the last word can be. A candidate is any text: it is quoted, never run. Beside names of
# files, the shell quotes it.
_tscript() {
  local current=${COMP_WORDS[COMP_CWORD]} word quoted files=''
  COMPREPLY=()
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) files=f; continue ;;
      :folders) files=d; continue ;;
    esac
    printf -v quoted '%q' "$word"
    [[ -z $files ]] || quoted=$word
    [[ $quoted != "$current"* ]] || COMPREPLY+=("$quoted")
  done < <(tscript __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  [[ -n $files ]] || return 0
  compopt -o filenames
  mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen "-$files" -- "$current")
}

complete -F _tscript tscript
