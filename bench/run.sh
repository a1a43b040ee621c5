#!/usr/bin/env bash
# All benchmarks, on a virtual X server of 1920 x 1080 pixels. usage: run.sh BUILDFOLDER
set -euo pipefail
build=$1
here=$(cd "$(dirname "$0")" && pwd)

on_screen() { xvfb-run -a -s '-screen 0 1920x1080x24 -noreset' "$@"; }

echo '== daemon and peers'
on_screen python3 "$here/peers.py" "$build/app/progressd"
for program in "$build"/bench/*Bench; do
    echo "== $(basename "$program")"
    on_screen "$program" --benchmark_min_time=0.2
done
