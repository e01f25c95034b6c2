# shellcheck shell=bash
# Completion of kvx for bash: the command itself knows what a line may go on with.
_kvx() {
  local current=${COMP_WORDS[COMP_CWORD]} candidate
  COMPREPLY=()
  while IFS= read -r candidate; do
    # Names with spaces are one word; parameters wait for their value.
    COMPREPLY+=("$(printf '%q' "$candidate")")
    [[ $candidate != *= ]] || compopt -o nospace
  done < <(kvx complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  if [[ ${#COMPREPLY[@]} == 0 && $current != -* ]]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -F _kvx kvx
