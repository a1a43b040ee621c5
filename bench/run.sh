#!/usr/bin/env bash
# All benchmarks, on a virtual X server of 1920 x 1080 pixels. usage: run.sh BUILDFOLDER
set -euo pipefail
build=$1
here=$(cd "$(dirname "$0")" && pwd)

on_screen() { xvfb-run -a -s '-screen 0 1920x1080x24 -noreset' "$@"; }

echo '== the daemon and its peers'
on_screen python3 "$here/peers.py" "$build/app/progressd"
echo '== a full repaint'
on_screen "$build/bench/benchRepaint"
echo '== the statistics'
"$build/bench/benchStatistics"
