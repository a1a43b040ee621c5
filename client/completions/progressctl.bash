# bash completion for progressctl

_progressctl() {
    local verbs='start stop bar update remove text update-text remove-text button remove-button activate
        pause resume busy configure ask assert events send records pipe'
    local buttons='ok yes yes-to-all no no-to-all cancel close abort retry ignore save save-all discard open
        apply reset restore-defaults help'
    local settings='windowFonts= busyIndicator= paintOffset= screenGeometry= windowTitle= windowPixmap=
        windowIcon= windowStyle= windowControls= windowModal='
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} verb='' positional=0 i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        -i | --identifier | --limit | --title | --icon | --default | --timeout | --file | --plot | --theme | \
            --caption | --text | --percentage | --slot | --cancel-label | --cancel-status | --ok-label) ((++i)) ;;
        -*) ;;
        *) if [[ -z $verb ]]; then verb=${COMP_WORDS[i]}; else ((++positional)); fi ;;
        esac
    done

    local words=''
    case $before in
    --icon) words='none information warning critical question' ;;
    --default) words=$buttons ;;
    --theme | --file)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        [[ $verb == records ]] || words='light dark'
        [[ $before == --theme ]] && words+=' none'
        ;;
    --plot) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    *)
        local options='--identifier --limit --help'
        case $verb in
        '') words=$verbs options+=' --version' ;;
        start) options+=' --theme' ;;
        ask) options+=' --title --icon --default --timeout' && ((positional)) && words=$buttons ;;
        assert) options+=' --timeout' ;;
        busy) words='on off' ;;
        configure)
            words=$settings options+=' --file'
            compopt -o nospace 2>/dev/null
            ;;
        records) options+=' --plot --file' ;;
        pipe)
            options+=' --title --caption --text --percentage --slot --theme --modal --time-remaining --no-cancel
                --cancel-label --cancel-status --auto-kill --ok-label --auto-close --wait --expect-complete
                --timeout --'
            ;;
        esac
        [[ $word == -* ]] && words=$options
        ;;
    esac
    local -a found
    mapfile -t found < <(compgen -W "$words" -- "$word")
    COMPREPLY+=("${found[@]}")
}
complete -F _progressctl progressctl
