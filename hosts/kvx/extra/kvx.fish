# Completion of kvx for fish: the command itself knows what a line may go on with.
function __kvx_candidates
    set -l words (commandline -opc)
    kvx complete $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c kvx -a '(__kvx_candidates)'
