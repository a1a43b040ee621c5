# fish completion for progressctl

set -l verbs start stop bar update remove text update-text remove-text button remove-button activate pause \
    resume busy configure ask assert events send records pipe
set -l buttons ok yes yes-to-all no no-to-all cancel close abort retry ignore save save-all discard open apply \
    reset restore-defaults help
set -l settings windowFonts= busyIndicator= paintOffset= screenGeometry= windowTitle= windowPixmap= windowIcon= \
    windowStyle= windowControls= windowModal=

complete -c progressctl -f
complete -c progressctl -s i -l identifier -x -d 'Identifier of the daemon'
complete -c progressctl -l limit -x -d 'Longest wait for the daemon, in seconds'
complete -c progressctl -l help -d 'Print help'
complete -c progressctl -l version -d 'Print the version'

function __progressctl_verb -a name description
    complete -c progressctl -n __fish_use_subcommand -a $name -d $description
end
__progressctl_verb start 'Start the daemon and print its ports'
__progressctl_verb stop 'End the daemon'
__progressctl_verb bar 'Show a bar'
__progressctl_verb update 'Move a bar'
__progressctl_verb remove 'Remove a bar or text'
__progressctl_verb text 'Show a text line'
__progressctl_verb update-text 'Change a text line'
__progressctl_verb remove-text 'Remove a text or bar'
__progressctl_verb button 'Show a button'
__progressctl_verb remove-button 'Remove a button'
__progressctl_verb activate 'Bring the window to the front'
__progressctl_verb pause 'Hide the window'
__progressctl_verb resume 'Bring the window back'
__progressctl_verb busy 'Show or hide the busy window'
__progressctl_verb configure 'Change the look of the windows'
__progressctl_verb ask 'Ask the user'
__progressctl_verb assert 'Report a failed assertion'
__progressctl_verb events 'Print the events'
__progressctl_verb send 'Send a message as it is'
__progressctl_verb records 'Print the runs that were learned'
__progressctl_verb pipe 'Show what a writer tells'
functions -e __progressctl_verb

set -l slotted '__fish_seen_subcommand_from bar update remove text update-text remove-text button remove-button'
complete -c progressctl -n $slotted -a '(seq 0 9)' -d Slot
complete -c progressctl -n '__fish_seen_subcommand_from busy' -a 'on off'
complete -c progressctl -n '__fish_seen_subcommand_from configure' -a "$settings"
complete -c progressctl -n '__fish_seen_subcommand_from configure' -l file -r -F -a 'light dark'
complete -c progressctl -n '__fish_seen_subcommand_from start pipe' -l theme -r -F -a 'light dark none'
complete -c progressctl -n '__fish_seen_subcommand_from ask' -a "$buttons"
complete -c progressctl -n '__fish_seen_subcommand_from ask' -l title -x
complete -c progressctl -n '__fish_seen_subcommand_from ask' -l icon -x -a 'none information warning critical question'
complete -c progressctl -n '__fish_seen_subcommand_from ask' -l default -x -a "$buttons"
complete -c progressctl -n '__fish_seen_subcommand_from ask assert pipe' -l timeout -x -d Seconds
complete -c progressctl -n '__fish_seen_subcommand_from records' -l plot -r -F
complete -c progressctl -n '__fish_seen_subcommand_from records' -l file -r -F

set -l pipe '__fish_seen_subcommand_from pipe'
complete -c progressctl -n $pipe -l title -x -d 'Title of the window'
complete -c progressctl -n $pipe -l caption -x -d 'Caption of the bar'
complete -c progressctl -n $pipe -l text -x -d 'Text below the bar'
complete -c progressctl -n $pipe -l percentage -x -d 'Where the bar starts'
complete -c progressctl -n $pipe -l slot -x -a '(seq 0 9)'
complete -c progressctl -n $pipe -l modal -d 'Keep the window above all others'
complete -c progressctl -n $pipe -l time-remaining -d 'Show the remaining time'
complete -c progressctl -n $pipe -l no-cancel -d 'Show no Cancel button'
complete -c progressctl -n $pipe -l cancel-label -x -d 'What the Cancel button reads'
complete -c progressctl -n $pipe -l cancel-status -x -d 'Exit status when it is pressed'
complete -c progressctl -n $pipe -l auto-kill -d 'End the writer when it is pressed'
complete -c progressctl -n $pipe -l ok-label -x -d 'What the button of --wait reads'
complete -c progressctl -n $pipe -l auto-close -d 'Close the window at 100'
complete -c progressctl -n $pipe -l wait -d 'Keep the window until its button is pressed'
complete -c progressctl -n $pipe -l expect-complete -d 'An end below 100 is a failure'
