# bash completion for progressctl: the program itself knows what may follow.

_progressctl() {
    local word=${COMP_WORDS[COMP_CWORD]} each i
    local -a before=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} == -- && " ${before[*]} " == *' pipe '* ]]; then
            if declare -F _command_offset >/dev/null; then _command_offset $((i + 1)); else
                mapfile -t COMPREPLY < <(compgen -c -- "$word")
            fi
            return
        fi
        # The shell takes "--theme=dark" for three words.
        [[ ${COMP_WORDS[i]} == = ]] || before+=("${COMP_WORDS[i]}")
    done
    [[ $word != = ]] || word=''

    COMPREPLY=()
    while IFS=$'\t' read -r each _; do
        if [[ $each == FILES ]]; then
            mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$word")
        elif [[ $each == "$word"* && ($each != -* || $word == -*) ]]; then
            COMPREPLY+=("$each")
            [[ $each != *= ]] || compopt -o nospace 2>/dev/null
        fi
    done < <(progressctl complete -- "${before[@]}" 2>/dev/null)
}
complete -F _progressctl progressctl
