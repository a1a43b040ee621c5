# fish completion for progressctl; words between "@" are filled in when this is built

# The words behind `pipe … --`, which are a command.
function __progressctl_command
    set -l words (commandline -opc)[2..-1]
    set -l mark (contains -i -- -- $words)
    and contains pipe $words[1..$mark]
    and set -e words[1..$mark]
    and echo (test -n "$words"; and string escape -- $words) (commandline -ct)
end

# Whether one of these verbs was given, and no command.
function __progressctl_verb
    not __progressctl_command >/dev/null; and __fish_seen_subcommand_from $argv
end

set -l slots 0 1 2 3 4 5 6 7 8 9
set -l buttons @buttons@
set -l verbs start stop bar update pulse remove text update-text remove-text button remove-button activate pause resume busy \
    amount configure send ask assert events pipe records

complete -c progressctl -f
complete -c progressctl -n '__progressctl_command >/dev/null' -a '(complete -C (__progressctl_command))'
complete -c progressctl -n "not __fish_seen_subcommand_from $verbs" -a "$verbs"
complete -c progressctl -s i -l identifier -x
complete -c progressctl -l limit -x
complete -c progressctl -s h -l help
complete -c progressctl -l version
complete -c progressctl -n '__progressctl_verb bar update pulse remove text update-text remove-text button remove-button' -a "$slots"
complete -c progressctl -n '__progressctl_verb busy' -a 'on off'
complete -c progressctl -n '__progressctl_verb ask' -a "$buttons"
complete -c progressctl -n '__progressctl_verb ask' -l default -xa "$buttons"
complete -c progressctl -n '__progressctl_verb ask' -l icon -xa '@icons@'
complete -c progressctl -n '__progressctl_verb ask pipe' -l title -x
complete -c progressctl -n '__progressctl_verb ask assert pipe' -l timeout -x
complete -c progressctl -n '__progressctl_verb configure records' -l file -r
complete -c progressctl -n '__progressctl_verb configure' -a '@settings@'
complete -c progressctl -n '__progressctl_verb start' -l ports -x
complete -c progressctl -n '__progressctl_verb start' -l idle -x
complete -c progressctl -n '__progressctl_verb start pipe' -l layout -xa 'fitted grid'
complete -c progressctl -n '__progressctl_verb start pipe' -l theme -ra 'auto light dark none'
complete -c progressctl -n '__progressctl_verb pipe' -l window-icon -r
complete -c progressctl -n '__progressctl_verb pipe' -l icon-name -r
for each in caption text percentage bar slot width display cancel-label ok-label cancel-status extra-button button gauge learn amount
    complete -c progressctl -n '__progressctl_verb pipe' -l $each -x
end
for each in no-markup pulsate on-top terminal no-terminal time-remaining no-cancel auto-kill no-buttons auto-close keep-open notify expect-complete
    complete -c progressctl -n '__progressctl_verb pipe' -l $each
end
