# bash completion for progressctl; words between "@" are filled in when this is built

_progressctl() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} verb='' i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
        -i | --identifier | --limit) ((++i)) ;;
        --)
            if [[ $verb == pipe ]]; then
                if declare -F _command_offset >/dev/null; then _command_offset $((i + 1)); else
                    mapfile -t COMPREPLY < <(compgen -c -- "$word")
                fi
                return
            fi
            ;;
        -*) ;;
        *) verb=${verb:-${COMP_WORDS[i]}} ;;
        esac
    done
    # The shell takes "--theme=dark" for three words.
    [[ $before != = ]] || before=${COMP_WORDS[COMP_CWORD - 2]}
    [[ $word != = ]] || word=''

    local buttons='@buttons@' words='' values='' options='--identifier --limit --help' files='' each
    case $verb in
    '') words='start stop bar update pulse remove text update-text remove-text button remove-button activate pause resume
        busy amount configure send ask assert events pipe records' options+=' --version' ;;
    start) options+=' --layout --theme --ports --idle' ;;
    bar | update | pulse | remove | text | update-text | remove-text | button | remove-button)
        [[ $before != "$verb" ]] || words='0 1 2 3 4 5 6 7 8 9' ;;
    busy) words='on off' ;;
    configure)
        words='@settings@' options+=' --file'
        for each in $words; do [[ $each != "$before="* ]] || values+=" ${each#*=}"; done
        words=${values:-$words} ;;
    ask) words=$buttons options+=' --title --icon --default --timeout' ;;
    assert) options+=' --timeout' ;;
    records) options+=' --file' ;;
    pipe) options+=' --title --caption --text --no-markup --percentage --pulsate --bar --slot --layout --theme --width
        --window-icon --icon-name --on-top --display --terminal --no-terminal --time-remaining --no-cancel --cancel-label --ok-label --cancel-status --auto-kill
        --extra-button --button --no-buttons --auto-close --keep-open --notify --expect-complete --timeout --gauge --learn --amount' ;;
    esac
    case $before in
    --layout) words='fitted grid' options='' ;;
    --theme) words='auto light dark none' options='' files=yes ;;
    --icon) words='@icons@' options='' ;;
    --default) words=$buttons options='' ;;
    --file) words='' options='' files=yes && [[ $verb != configure ]] || words='auto light dark' ;;
    --window-icon) words='' options='' files=yes ;;
    --slot) words='0 1 2 3 4 5 6 7 8 9' options='' ;;
    esac
    [[ $word != -* ]] || words=$options
    mapfile -t COMPREPLY < <(compgen -W "$words" ${files:+-f} -- "$word")
    [[ ${COMPREPLY[*]} != *= ]] || compopt -o nospace 2>/dev/null
}
complete -F _progressctl progressctl
