#!/usr/bin/env bash
# usage: memcheck.sh PROGRESSD: runs the tests of the daemon that have the patience with it under memcheck. They fail on an
# error, and on memory that nothing refers to any more at the end.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export PROGRESSD=$(realpath "$1") PYTHONPATH=$here/../python PYTHONDONTWRITEBYTECODE=1 PROGRESSD_SLOWNESS=10
export PROGRESSD_WRAPPER="valgrind --quiet --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
--error-exitcode=99 --suppressions=$here/memcheck.supp --num-callers=30 --child-silent-after-fork=yes"

failed=0
for cases in channels busyWindow configuration 'boxes Boxes' dialogs input localChannel 'startAndEnd StartAndEnd.test_end_with_the_session'; do
    echo "== $cases"
    # shellcheck disable=SC2086
    set -- $cases
    python3 "$here/../daemon/$1.py" "${@:2}" || (($? == 77)) || failed=1
done
exit "$failed"
