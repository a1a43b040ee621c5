#!/usr/bin/env bash
# How long one progressctl command takes beside /bin/true, and how many lines a second `progressctl pipe` takes beside
# yad and zenity; on the display that is there.
#
# usage: clients.sh BUILDFOLDER
set -euo pipefail
build=$(cd "$1" && pwd)
export PATH=$build/progressctl:$PATH PROGRESSD=$build/app/progressd PROGRESS_IDENTIFIER=bench$$
rounds=5 commands=200 lines=1000000
work=$(mktemp -d /tmp/bench-clients.XXXXXX)
clean_up() {
    progressctl stop 2>/dev/null || true
    rm -rf "$work" /var/tmp/currentTimestamps_bench$$* /var/instrument/currentTimestamps_bench$$*
}
trap clean_up EXIT

# smallest COMMAND...: the shortest time in microseconds of several runs of COMMAND.
smallest() {
    local round start taken least=''
    for ((round = 0; round < rounds; ++round)); do
        start=${EPOCHREALTIME/./}
        "$@"
        taken=$((${EPOCHREALTIME/./} - start))
        [[ -n $least ]] && ((least <= taken)) || least=$taken
    done
    echo "$least"
}

run_true() { for ((i = 0; i < commands; ++i)); do /bin/true; done; }
run_update() { for ((i = 0; i < commands; ++i)); do progressctl update 0 $((i % 101)); done; }

# commands MICROSECONDS: as milliseconds for one of the commands.
one_command() { awk -v all="$1" -v count=$commands 'BEGIN { printf "%.2f ms\n", all / count / 1000 }'; }

feed() { "$@" <"$work/lines" >/dev/null 2>&1; }
lines_a_second() { awk -v all="$1" -v count=$lines 'BEGIN { printf "%.0f lines/s\n", count / all * 1000000 }'; }

progressctl start >/dev/null
progressctl bar 0 Copying
printf '%-34s' '/bin/true'
one_command "$(smallest run_true)"
printf '%-34s' 'progressctl update, window shown'
one_command "$(smallest run_update)"
progressctl remove 0

awk -v count=$lines 'BEGIN { for (i = 1; i < count; ++i) print 1 + i % 98; print 100 }' >"$work/lines"
printf '%-34s' 'progressctl pipe'
lines_a_second "$(smallest feed progressctl pipe --auto-close)"
printf '%-34s' 'the same with its own daemon'
lines_a_second "$(smallest feed progressctl pipe -i "bench$$-none" --auto-close)"
for peer in yad zenity; do
    command -v $peer >/dev/null || continue
    printf '%-34s' "$peer --progress"
    lines_a_second "$(smallest feed $peer --progress --auto-close)"
done
