#!/usr/bin/env bash
# Copies a tree and checks the copy, with a progress window. All that a client needs is bash: the protocol
# is short text messages over two TCP connections.
#
# usage: copy-tree.sh FROM TO        (environment: PROGRESSD, THEME, MAXFILES)
set -u
from=$1 to=$2
identifier=copytree
lock=/tmp/HalvornRunning_$identifier.lock
theme=${THEME:-$(dirname "$0")/light.conf}

# Starts the daemon and waits for the lock file with its two ports.
start_daemon() {
    rm -f "$lock"
    "${PROGRESSD:-progressd}" "$identifier" &
    local tries
    for ((tries = 0; tries < 200; ++tries)); do
        { mapfile -t ports <"$lock"; } 2>/dev/null && ((${#ports[@]} == 2)) && return
        sleep 0.05
    done
    echo 'copy-tree.sh: the progress daemon does not start' >&2
    exit 1
}

progress() { printf '<progress>%s</progress>' "$1" >&3; }

# The theme's lines are the entries of one configuration message.
configure() {
    printf '<configuration>screenGeometry=%s;windowTitle=Copying;%s</configuration>' \
        "${SCREEN:-1280,800}" "$(grep -v '^#' "$theme" | paste -sd ';')" >&3
}

# ask ICON TITLE TEXT BUTTON...: shows a box; the answer is four bytes, the button's number.
ask() {
    local fields
    fields=$(printf '[#]%s' "${@:2}")
    printf '<msgbox>%s%s</msgbox>' "$1" "$fields" >&3
    answer=$(head -c 4 <&3 | od -An -tu4 | tr -d ' ')
}

# Whether the Cancel button was clicked. Events are read as far as they have come.
cancelled() {
    local event
    while read -t 0 -u 4; do
        read -r -d '>' -u 4 event || return 0
        [[ $event == 'clicked:0</event' ]] && return 0
    done
    return 1
}

# Waits until the dialog has gone: a question right behind the last commands would wipe them out.
wait_until_hidden() {
    local event
    while read -r -t 5 -d '>' -u 4 event && [[ $event != 'isHidden</event' ]]; do :; done
}

# bar SLOT DONE TOTAL: says it only when the percent has changed.
declare -A shown
bar() {
    local percent=$(($3 ? $2 * 100 / $3 : 100))
    [[ ${shown[$1]:-} == "$percent" ]] && return
    shown[$1]=$percent
    progress "update:$1;$percent"
}

copy_tree() {
    local -a files sizes
    local size file copy total_bytes=0 bytes=0 i
    while IFS=' ' read -r -d '' size file; do
        files+=("$file")
        sizes+=("$size")
        ((total_bytes += size))
    done < <(cd "$from" && find . -type f -printf '%s %P\0' | head -z -n "${MAXFILES:-1500}")

    progress 'create:0;Files copied'
    progress 'create:1;Bytes copied'
    progress 'addText:2;'
    progress 'create:3;Files checked'
    progress 'addButt:0;Cancel'
    for ((i = 0; i < ${#files[@]}; ++i)); do
        cancelled && return 1
        file=${files[i]}
        progress "updateText:2;${file//[;<]/_}"
        copy=$to/$file
        mkdir -p "${copy%/*}" && cp "$from/$file" "$copy"
        ((bytes += sizes[i]))
        bar 0 $((i + 1)) ${#files[@]}
        bar 1 $bytes $total_bytes
    done
    for ((i = 0; i < ${#files[@]}; ++i)); do
        cancelled && return 1
        cmp -s "$from/${files[i]}" "$to/${files[i]}" || bad+=("${files[i]}")
        bar 3 $((i + 1)) ${#files[@]}
    done
}

start_daemon
exec 3<>"/dev/tcp/127.0.0.1/${ports[0]}" 4<>"/dev/tcp/127.0.0.1/${ports[1]}"
configure
bad=()
if copy_tree; then result="Copied and checked: ${#bad[@]} files differ."; else result='Cancelled.'; fi
for command in remove:0 remove:1 delText:2 remove:3 delButt:0; do progress "$command"; done
wait_until_hidden

# A question (4) with the buttons Yes (16384) and No (65536, the default by +256).
ask 4 'Copy' "$result Keep the copy in $to?" 16384 $((65536 + 256))
if ((answer == 16384)); then
    echo "$result The copy is in $to."
else
    rm -rf "$to"
    echo "$result The copy was removed."
fi
printf '<exit/>' >&3
wait
((${#bad[@]} == 0))
