#!/usr/bin/env bash
# usage: fuzz.sh BUILD SECONDS: fuzzes each input for that long, two at a time. What is found lands
# in found/ beside this script, where the ordinary tests replay it; the corpus stays in the build folder.
set -euo pipefail

build=$(cd "$1" && pwd) seconds=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export LSAN_OPTIONS=suppressions=$here/../lsan.supp:print_suppressions=0

fuzz() {
    local name=$1 corpus=$build/corpus/$1 found=$here/found/$1
    mkdir -p "$corpus" "$found"
    local result='nothing found'
    if ! "$build/tests/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=8192 \
        -dict="$build/messages.dict" -artifact_prefix="$found/" -print_final_stats=1 \
        "$corpus" "$here/seeds/$name" "$found" >"$build/$name.log" 2>&1; then
        result="FOUND SOMETHING, see $build/$name.log"
        touch "$build/found-something"
    fi
    printf '%s: %s, %s runs\n' "$name" "$result" \
        "$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$name.log")"
}

rm -f "$build/found-something"
{ "$build/wire/printWords" | cut -d ' ' -f 2- | tr ' ' '\n' | sed 's/.*/"&"/' && cat "$here/messages.dict"; } \
    >"$build/messages.dict"
for name in messages session statistics; do
    while (($(jobs -rp | wc -l) >= 2)); do wait -n; done
    fuzz "$name" &
done
wait
[[ ! -e $build/found-something ]]
