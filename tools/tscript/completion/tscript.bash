# bash completion for tscript                                               -*- shell-script -*-

# The program itself says what the last word can be. A candidate is any text: it is quoted, never run.
_tscript() {
  local current=${COMP_WORDS[COMP_CWORD]} word quoted
  COMPREPLY=()
  while IFS=$'\t' read -r word _; do
    case $word in
      :files) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
      :folders) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
    esac
    printf -v quoted '%q' "$word"
    [[ $quoted != "$current"* ]] || COMPREPLY+=("$quoted")
  done < <(tscript __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}

complete -F _tscript tscript
