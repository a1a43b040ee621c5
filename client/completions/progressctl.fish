# fish completion for progressctl: the program itself knows what may follow.

# The words behind `pipe … --`, which are a command.
function __progressctl_command
    set -l words (commandline -opc)[2..-1]
    set -l mark (contains -i -- -- $words)
    and contains pipe $words[1..$mark]
    and set -e words[1..$mark]
    and echo (test -n "$words"; and string escape -- $words) (commandline -ct)
end

function __progressctl_candidates
    set -l all (progressctl complete -- (commandline -opc)[2..-1] 2>/dev/null)
    string match -q -- '-*' (commandline -ct); or set all (string match -v -- '-*' $all)
    string join \n -- $all
end

complete -c progressctl -f
complete -c progressctl -n '__progressctl_command >/dev/null' -a '(complete -C (__progressctl_command))'
complete -c progressctl -n 'not __progressctl_command >/dev/null' -a '(__progressctl_candidates | string match -v FILES)'
complete -c progressctl -n 'not __progressctl_command >/dev/null; and __progressctl_candidates | string match -q FILES' -F
