# bash completion for kvx
_kvx() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= i
  local commands='list info render recipe contact-sheet preview gallery doctor'
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in -*) ;; *) command=${COMP_WORDS[i]}; break ;; esac
  done
  if [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "$commands --help --version --plugin --resources --verbose" -- "$cur"))
    return
  fi
  case $prev in
    -e | --effect | info | preview)
      COMPREPLY=($(compgen -W "$(kvx list --json 2>/dev/null | sed -n 's/^    "name": "\([^" ]*\)",$/\1/p')" -- "$cur"))
      return ;;
  esac
  if [[ $cur == -* ]]; then
    case $command in
      list) COMPREPLY=($(compgen -W '--family --moving --with-material --json' -- "$cur")) ;;
      render) COMPREPLY=($(compgen -W '-p -e --recipe --opacity --frames --fps --size --pad --start --end --codec --crf
        --overwrite --raw --jobs --quiet --progress' -- "$cur")) ;;
      recipe) COMPREPLY=($(compgen -W '-p -e --opacity' -- "$cur")) ;;
      contact-sheet) COMPREPLY=($(compgen -W '--each --size --pad' -- "$cur")) ;;
      gallery) COMPREPLY=($(compgen -W '--output --width' -- "$cur")) ;;
    esac
    return
  fi
  if [[ $command == render && $((COMP_CWORD - i)) == 1 ]]; then
    COMPREPLY=($(compgen -W "$(kvx list --json 2>/dev/null | sed -n 's/^    "name": "\([^" ]*\)",$/\1/p')" -- "$cur"))
  elif [[ $command == recipe && $((COMP_CWORD - i)) == 1 ]]; then
    COMPREPLY=($(compgen -W 'write check' -- "$cur"))
  else
    COMPREPLY=($(compgen -f -- "$cur"))
  fi
}
complete -o filenames -F _kvx kvx
