#!/bin/sh
# Replays the recorded courses and draws docs/estimate.svg; prints the tables of docs/estimate.md.
# usage: estimate.sh REPLAY (the built program)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
table=$(mktemp)
trap 'rm -f "$table"' EXIT
"$1" "$here/courses" "$table"
gnuplot -e "table='$table'; picture='$here/../docs/estimate.svg'" "$here/estimate.gnuplot"

echo
awk '
    NF == 5 && $4 != "-" && $5 != "-" {
        third = int(($3 - 0.001) * 3 / 100)
        seconds[third]++; learned[third] += $4; linear[third] += $5; nearer[third] += $4 < $5
    }
    END {
        print "| part of the run | seconds | error, learned | error, linear | learned nearer |"
        print "|---|---|---|---|---|"
        split("first second last", part)
        for (third = 0; third < 3; third++)
            if (seconds[third])
                printf "| %s third | %d | %.0f %% | %.0f %% | %.0f %% |\n", part[third + 1], seconds[third],
                    learned[third] / seconds[third], linear[third] / seconds[third],
                    100 * nearer[third] / seconds[third]
    }' "$table"
