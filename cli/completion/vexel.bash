# bash completion for vexel
_vexel() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local options="-e -i -k --json --keep-going --seed --explain --example --format --write --quiet --strict --library --help --version"
  case $command in
    describe | tally | quantile)
      options="-c --column -w --weights --headings --no-headings --separator --decimal --missing --na --rows --state --stop-after --json --quiet --help"
      [[ $command == quantile ]] && options+=" -q --method"
      ;;
  esac
  case $previous in
    --example) mapfile -t COMPREPLY < <(compgen -W "$(vexel --example 2>/dev/null | sed 's/^ *//; s/ .*//')" -- "$current"); return ;;
    --missing) mapfile -t COMPREPLY < <(compgen -W "omit propagate raise" -- "$current"); return ;;
    --method)
      mapfile -t COMPREPLY < <(compgen -W "linear inverted_cdf averaged_inverted_cdf closest_observation interpolated_inverted_cdf hazen weibull median_unbiased normal_unbiased" -- "$current")
      return
      ;;
    -e | --seed | --explain | -c | --column | -w | --weights | -q | --na | --rows | --separator | --decimal | --stop-after) return ;;
  esac
  if [[ $current == -* && $previous != --library && $previous != --state ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
    ((COMP_CWORD == 1)) && mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "describe quantile tally" -- "$current")
  fi
}
complete -o filenames -F _vexel vexel
