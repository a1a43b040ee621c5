#!/bin/bash
# Records the courses of three real jobs, three runs each, for replay: see courses/README.md.
# usage: recordCourses.sh [build|copy|archive]...
set -euo pipefail

readonly tree=$(cd "$(dirname "$0")/.." && pwd)
readonly revision=$(git -C "$tree" rev-parse HEAD)
readonly work=$(mktemp -d "${TMPDIR:-/var/tmp}/courses.XXXXXX")
trap 'rm -rf "$work"' EXIT

# Turns lines of "done of-how-much" into the course: "milliseconds percent" whenever the percent changes,
# and a last line when the job has ended. The clock starts at the first line.
course() {
    local started= last=-1 done_ all percent
    while read -r done_ all; do
        started=${started:-${EPOCHREALTIME/./}}
        percent=$((done_ * 100 / all))
        if ((percent > 100)); then percent=100; fi
        if ((percent != last)); then
            echo "$(((${EPOCHREALTIME/./} - started) / 1000)) $percent"
            last=$percent
        fi
    done
    if ((last != 100)); then echo "$(((${EPOCHREALTIME/./} - started) / 1000)) 100"; fi
}

# A clean build of this tree; progress is counted in steps, as ninja reports them.
build() {
    rm -rf "$work/build"
    mkdir -p "$work/source"
    git -C "$tree" archive "$revision" | tar -x -C "$work/source"
    cmake -S "$work/source" -B "$work/build" -G Ninja >"$work/cmake.log"
    echo 0 1
    NINJA_STATUS='@%f %t ' ninja -C "$work/build" -j2 | sed -un 's/^@\([0-9]* [0-9]*\) .*/\1/p'
}

# A copy of many files of all sizes; progress is counted in bytes.
copy() {
    local all pid
    all=$(du -sb --apparent-size /usr/lib | cut -f1)
    echo "0 $all"
    cp -a /usr/lib "$work/copy" &
    pid=$!
    while [ -r /proc/$pid/io ]; do
        sed -n "s/^wchar: \(.*\)/\1 $all/p" /proc/$pid/io 2>"$work/gone" || true
        sleep 0.1
    done
    wait $pid
    echo "$all $all"
    rm -rf "$work/copy"
}

# Packing many files; progress is counted in bytes read, in records of 10 KiB.
archive() {
    local all
    all=$(tar -C /usr -cf - share | wc -c)
    echo "0 $all"
    tar -C /usr -czf "$work/archive.tar.gz" --checkpoint=100 \
        --checkpoint-action=echo="%u" share 2>&1 |
        sed -un "s/^tar: \([0-9]*\)\$/\1 $((all / 10240))/p"
}

for job in "${@:-build copy archive}"; do
    for name in $job; do
        for run in 1 2 3; do
            sync
            "$name" | course >"$tree/bench/courses/$name$run.txt"
            echo "$name run $run: $(tail -n 1 "$tree/bench/courses/$name$run.txt")"
        done
    done
done
