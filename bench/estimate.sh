#!/bin/sh
# Replays the recorded courses and draws docs/estimate.svg; prints the table of docs/estimate.md.
# usage: estimate.sh REPLAY (the built program)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
table=$(mktemp)
trap 'rm -f "$table"' EXIT
"$1" "$here/courses" "$table"
gnuplot -e "table='$table'; picture='$here/../docs/estimate.svg'" "$here/estimate.gnuplot"
