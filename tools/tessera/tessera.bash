# bash completion for tessera: commands, options, legacy paths and store keys, and the sections
# and keys of an INI file. The program itself works out the candidates (`tessera __complete`),
# so they always match the commands it has.
_tessera() {
  local -a reply
  mapfile -t reply < <("${COMP_WORDS[0]}" __complete "$COMP_CWORD" "${COMP_WORDS[@]}" 2>/dev/null)
  COMPREPLY=()
  case ${reply[0]-} in
    files)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
      ;;
    words) COMPREPLY=("${reply[@]:1}") ;;
  esac
}
complete -F _tessera tessera
