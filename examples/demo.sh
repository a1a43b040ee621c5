#!/usr/bin/env bash
# Runs copy-tree.sh on the documentation of this machine: on the desktop, or, without one, on a virtual X
# server, with pictures of what would be seen in a folder of their own, or in the one that PICTURES names.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
from=${1:-/usr/share/doc}
to=$(mktemp -d /tmp/demo-copy.XXXXXX)

helpers=()
trap 'kill "${helpers[@]}" 2>/dev/null' EXIT

on_desktop() {
    "$here/copy-tree.sh" "$from" "$to"
}

on_virtual_screen() {
    local pictures=${PICTURES:-$(mktemp -d /tmp/demo-pictures.XXXXXX)} display
    mkdir -p "$pictures"
    coproc screen { exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset 2>/dev/null; }
    helpers+=("$screen_PID")
    read -r display <&"${screen[0]}"
    export DISPLAY=:$display
    echo "No display here: running on a virtual X server, pictures go to $pictures"
    if command -v xsetroot >/dev/null; then xsetroot -solid '#5f7f9f'; fi

    take_pictures "$pictures" &
    helpers+=($!)
    "$here/copy-tree.sh" "$from" "$to"
}

# A picture a second; the question at the end is answered with the Return key.
take_pictures() {
    local n
    for ((n = 1;; ++n)); do
        sleep 1
        if xdotool search --name '^Copy$' >/dev/null 2>&1; then
            import -window root "$1/question.png"
            xdotool key Return
            return
        fi
        import -window root "$1/copying-$n.png"
    done
}

if [[ -n ${DISPLAY:-} ]]; then on_desktop; else on_virtual_screen; fi
