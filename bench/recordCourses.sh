#!/bin/bash
# Records the courses of real jobs, each with four inputs of different size and a fifth one that the page cache
# does not hold: see courses/README.md.
# usage: recordCourses.sh [JOB]...
set -euo pipefail

readonly tree=$(cd "$(dirname "$0")/.." && pwd)
readonly revision=$(git -C "$tree" rev-parse HEAD)
work=$(mktemp -d "${TMPDIR:-/var/tmp}/courses.XXXXXX")
trap 'rm -rf "$work"' EXIT
trap 'echo "$0: line $LINENO failed" >&2' ERR
export CCACHE_DISABLE=1

# Turns lines of "done of-how-much" into one line: the tenths of a second that the job took, then when it came to
# 1 %, 2 % ... 100 %; "-" where it went past a percent. The clock starts at the first line.
course() {
    local started= done_ all percent last=0 now= times=
    while read -r done_ all; do
        started=${started:-${EPOCHREALTIME/./}}
        now=$(((${EPOCHREALTIME/./} - started) / 100000))
        for ((percent = done_ * 100 / all; last < percent && last < 100; last++)); do
            times+=$( ((last + 1 < percent && last < 99)) && echo ' -' || echo " $now")
        done
    done
    while ((last++ < 100)); do times+=$( ((last < 100)) && echo ' -' || echo " $now"); done
    echo "$now$times"
}

# The first $size percent of the files below the given folders; from the second on every $1-th.
files() {
    local every=$1
    shift
    find "$@" -xdev -type f | LC_ALL=C sort >"$work/all"
    awk -v every="$every" 'NR % every == 0' "$work/all" >"$work/sample"
    head -n "$(($(wc -l <"$work/sample") * size / 100))" "$work/sample" >"$work/input"
}

# Has the page cache forget what it holds of the files in the list of the input.
forget() {
    python3 -c '
import os, sys
for name in map(str.strip, open(sys.argv[1])):
    if os.path.isfile(name):
        with open(name, "rb") as file:
            os.fsync(file.fileno())
            os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)' "$work/input"
}

# One line of progress for each line that comes in, of as many as the input has.
counted() {
    local all done_=0
    all=$(wc -l <"$work/input")
    while read -r; do echo "$((++done_)) $all"; done
}

# Progress of a process by its count of bytes (rchar, wchar) against those of the input.
bytes() {
    local pid=$1 count=$2 all
    all=$(tr '\n' '\0' <"$work/input" | du -cb --files0-from=- | tail -n 1 | cut -f 1)
    while [ -r "/proc/$pid/io" ]; do
        sed -n "s/^$count: \(.*\)/\1 $all/p" "/proc/$pid/io" 2>"$work/gone" || true
        sleep 0.1
    done
    echo "$all $all"
}

# Each job has two functions: one chooses its input, in $work/input, and one runs and prints its progress. The amount is
# the number of the input's lines unless the first one says otherwise.

configured() {
    if [ ! -d "$work/build" ]; then
        mkdir "$work/source"
        git -C "$tree" archive "$revision" | tar -x -C "$work/source"
        cmake -S "$work/source" -B "$work/build" -G Ninja >"$work/log"
    fi
}

build_input() {
    configured
    ninja -C "$work/build" -t clean >"$work/log"
    ninja -C "$work/build" -t targets all | sed -n 's/^\(client.*\): CXX_COMPILER.*/\1/p' >"$work/objects"
    objects=$(head -n "$((13 * size / 100))" "$work/objects")
    amount=$(wc -w <<<"$objects")
    find "$work/source/client" -type f >"$work/input"
}
build() {
    # shellcheck disable=SC2086
    NINJA_STATUS='@%f %t ' ninja -C "$work/build" -j2 $objects | sed -un 's/^@\([0-9]* [0-9]*\) .*/\1/p'
}

archive_input() { files 1 /usr/share; }
archive() {
    tar -czf "$work/archive.tar.gz" -P -T "$work/input" &
    bytes $! rchar
    rm "$work/archive.tar.gz"
}

compress_input() {
    amount=$((50000000 * size / 100))
    head -c "$amount" <(cat /usr/lib/x86_64-linux-gnu/*.so) >"$work/plain"
    echo "$work/plain" >"$work/input"
}
compress() {
    xz -T1 -kf "$work/plain" &
    bytes $! rchar
}

copy_input() { files 3 /usr/lib; }
copy() {
    mkdir "$work/copy"
    tar -cPf - -T "$work/input" | tar -x -C "$work/copy" --strip-components=1 2>"$work/log" &
    bytes $! wchar
    rm -rf "$work/copy"
}

# Those with a script to run before they are unpacked would need a whole system.
packages_input() {
    files 12 /var/cache/apt/archives
    grep '\.deb$' "$work/input" | while read -r package; do
        dpkg-deb --ctrl-tarfile "$package" | tar -t | grep -q preinst || echo "$package"
    done >"$work/packages"
    mv "$work/packages" "$work/input"
}
packages() {
    rm -rf "$work/root"
    mkdir -p "$work/root/var/lib/dpkg/info" "$work/root/var/lib/dpkg/updates"
    touch "$work/root/var/lib/dpkg/status"
    # shellcheck disable=SC2046
    dpkg --root="$work/root" --force-all --status-fd 3 --unpack $(cat "$work/input") 3>&1 >"$work/log" 2>&1 |
        sed -un '/: unpacked$/p' | counted
}

checksums_input() { files 2 /usr/lib; }
checksums() { tr '\n' '\0' <"$work/input" | xargs -0 stdbuf -oL sha512sum | counted; }

tests_input() {
    python3 -m test --list-tests | grep -v -e '[.]' -e __ -e async -e compileall -e ftp -e docxml -e http >"$work/tests"
    amount=$((30 * size / 100))
    head -n "$amount" "$work/tests" >"$work/chosen"
    python3 -c 'import test.support as s, glob, os; print(*glob.glob(os.path.dirname(s.__path__[0]) + "/*.py"), sep="\n")' >"$work/input"
}
tests() {
    # shellcheck disable=SC2046
    (cd "$work" && timeout 120 python3 -u -m test $(cat "$work/chosen") 2>&1 || true) |
        sed -un 's/.*\[ *\([0-9]*\)\/\([0-9]*\)[]/].*/\1 \2/p'
}

images_input() {
    find /usr/share /usr/lib /root -xdev -name '*.png' -size +8k | LC_ALL=C sort >"$work/sample"
    head -n "$((60 * size / 100))" "$work/sample" >"$work/input"
}
images() {
    while read -r image; do
        convert "$image" -resize 1600x1200 -unsharp 0x2 "$work/image.jpg" 2>"$work/log" || true
        echo
    done <"$work/input" | counted
}

database_input() {
    rm -f "$work/database"
    sqlite3 "$work/database" 'create table entries (number integer, key text, note text);
        create unique index byKey on entries (key); create index byNote on entries (note);'
    seq "$((100 * size / 100))" >"$work/input"
}
database() {
    while read -r batch; do
        echo "with recursive n(i) as (select 1 union all select i + 1 from n where i < 8000)
            insert into entries select i, hex(randomblob(16)), hex(randomblob(8)) || $batch from n;
            select count(*) from entries where number = 1;"
    done <"$work/input" | stdbuf -oL sqlite3 "$work/database" | counted
}

commit_input() { files 5 /usr/share; }
commit() {
    rm -rf "$work/repository"
    git init -q --bare "$work/repository"
    git -C "$work/repository" --work-tree=/usr add --verbose --pathspec-from-file="$work/input" | counted
}

manuals_input() { files 50 /usr/share/man/man1 /usr/share/man/man3 /usr/share/man/man8; }
manuals() {
    while read -r page; do
        zcat -f "$page" | groff -Tps -t -man >"$work/page.ps" 2>"$work/log" || true
        echo
    done <"$work/input" | counted
}

lint_input() {
    configured
    find "$work/source/stats" "$work/source/client" -name '*.cpp' | LC_ALL=C sort >"$work/sample"
    head -n "$((7 * size / 100))" "$work/sample" >"$work/input"
}
lint() {
    while read -r source; do
        clang-tidy --quiet --checks='-*,clang-analyzer-*' -p "$work/build" "$source" >"$work/log" 2>&1 || true
        echo
    done <"$work/input" | counted
}

record() {
    local cache=$2
    size=$3
    amount=
    "$1_input"
    amount=${amount:-$(wc -l <"$work/input")}
    sync "$work"
    if [ "$cache" = cold ]; then forget; fi
    { echo 0 1; "$1"; } | course | sed "s/^/$cache $amount /"
}

readonly jobs="archive build checksums commit compress copy database images lint manuals packages tests"
# shellcheck disable=SC2086
for job in ${@:-$jobs}; do
    for run in 'warm 70' 'warm 100' 'warm 55' 'warm 85' 'cold 80'; do
        # shellcheck disable=SC2086
        record "$job" $run
    done >"$work/courses"
    mv "$work/courses" "$tree/bench/courses/$job.txt"
    echo "$job: $(cut -d ' ' -f 1-3 "$tree/bench/courses/$job.txt" | tr '\n' ' ')"
done
