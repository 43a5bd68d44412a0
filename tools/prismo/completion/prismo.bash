# Completion of prismo for bash. Commands, options and formats are those that the prismo at hand lists itself.
_prismo() {
  local prismo=${COMP_WORDS[0]/#\~/$HOME} word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' words='' i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} == -* ]] || { command=${COMP_WORDS[i]} && break; }
  done
  case $before in
    --format) words=$("$prismo" formats | awk 'NR > 1 { print $1 }') ;;
    --demosaic) words='bilinear adaptive none' ;;
    --as) words='bmp png jpg bgr bgra grey rwh raw' ;;
    --level) words='debug info warn error fatal' ;;
    --threads) words=caller ;;
    --gain) words=auto ;;
    --size | --rect | --shift | --black | --gamma | --quality | --border | --filter | --rounds | --min-time | --misalign) return ;;
    *)
      if [[ $word == -* ]]; then
        # shellcheck disable=SC2086 # no command, no word
        words=$("$prismo" $command --help | grep -oE -- '--[a-z][a-z-]*')
      elif [[ -z $command ]]; then
        words=$("$prismo" --help | awk 'commands { print $1 } /^Subcommands:/ { commands = 1 }')
      else
        compopt -o default
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _prismo prismo
