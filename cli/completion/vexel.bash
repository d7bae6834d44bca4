# bash completion for vexel
_vexel() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  case $previous in
    -e | --seed) return ;;
  esac
  if [[ $current == -* && $previous != --library ]]; then
    mapfile -t COMPREPLY < <(compgen -W "-e -i -k --json --keep-going --seed --quiet --strict --library --help --version" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -o filenames -F _vexel vexel
