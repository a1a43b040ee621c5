#!/usr/bin/env bash
# What is installed is what should be, and the packages work from where they are unpacked.
#
# usage: packages.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
export LC_ALL=C.UTF-8

[[ -n ${PACKAGES_TEST_HAS_SCREEN:-} ]] || PACKAGES_TEST_HAS_SCREEN=1 exec xvfb-run -a "$0" "$@"

work=$(mktemp -d /tmp/packages-test.XXXXXX)
export PROGRESS_IDENTIFIER=packages$$ HOME=$work XDG_RUNTIME_DIR=$work
answerer=''
clean_up() {
    [[ -z $answerer ]] || kill "$answerer"
    progressctl stop 2>/dev/null || true
    rm -rf "$work" /var/tmp/currentTimestamps_packages$$* /var/instrument/currentTimestamps_packages$$*
    rm -f /var/tmp/currentTimestamps_copying.txt
}
trap clean_up EXIT

fail() {
    printf 'packages.sh: %s\n' "$*" >&2
    exit 1
}

# Whoever asks "Question" is answered with the button that Return presses.
answer_boxes() {
    local box
    while sleep 0.2; do
        box=$(xdotool search --onlyvisible --name '^Question$') && xdotool windowfocus "$box" key Return
    done >/dev/null 2>&1
}

check_installed_files() {
    cmake --install "$build" --prefix "$work/tree" >/dev/null
    (cd "$work/tree" && find . ! -type d -printf '%P\n' | sed -E 's|^lib/[^/]*-linux-gnu/|lib/|;
        s|(Config)-[a-z]+\.cmake|\1-BUILDTYPE.cmake|' | sort) >"$work/installed"
    diff -u "$source/tests/client/installedFiles.txt" "$work/installed" || fail 'other files are installed'
}

unpack_packages() {
    cpack --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/cpack.log" 2>&1 || fail "$(<"$work/cpack.log")"
    local package
    for package in "$work"/packages/*.deb; do
        dpkg-deb -x "$package" "$work/root"
    done
    local depends
    depends=$(dpkg-deb -f "$work"/packages/progressd_*.deb Depends)
    for package in libqt6widgets6 libqt6network6 libxcb-randr0; do
        [[ $depends == *$package* ]] || fail "the package does not depend on $package: $depends"
    done
    [[ $(dpkg-deb -f "$work"/packages/libprogressclient-dev_*.deb Depends) == 'libprogressclient2 (= '* ]] ||
        fail 'the -dev package does not depend on its library'
    export PATH=$work/root/usr/bin:$PATH
    local config
    config=$(find "$work/root" -name progressclient.pc)
    export PKG_CONFIG_PATH=${config%/*} LD_LIBRARY_PATH=${config%/pkgconfig/*} CMAKE_PREFIX_PATH=$work/root/usr
    PYTHONPATH=$work/root/usr/lib/python3/dist-packages python3 -c 'import progressclient' ||
        fail 'the Python module is not where it should be'
    [[ $(command -v progressd) == "$work"/* ]] || fail 'progressd is not the one that was unpacked'
}

build_examples() {
    local example=$work/root/usr/share/doc/progressd/examples/cpp
    cmake -S "$example" -B "$work/example" >/dev/null
    cmake --build "$work/example" >/dev/null
    [[ $(timeout 60 "$work/example/copying") == no ]] || fail 'the example does not run'
    # shellcheck disable=SC2046 # words are what is wanted
    g++ -std=c++17 "$example/copying.cpp" $(pkg-config --cflags --libs progressclient) -o "$work/copying"
    [[ $(timeout 60 "$work/copying") == no ]] || fail 'the example built by pkg-config does not run'
}

check_completions() {
    # shellcheck source=/dev/null
    source "$work/root/usr/share/bash-completion/completions/progressctl"
    local COMP_WORDS=(progressctl ask 'Sure?' re) COMP_CWORD=3 COMPREPLY=()
    _progressctl
    [[ ${COMPREPLY[*]} == 'retry reset restore-defaults' ]] || fail "bash completes ${COMPREPLY[*]}"
    # Each verb that the program has stands in its manual.
    local verb verbs manual
    manual=$(zcat "$work/root/usr/share/man/man1/progressctl.1.gz" | sed 's/\\-/-/g')
    verbs=$(progressctl --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p')
    [[ $verbs == *start*pipe*records* ]] || fail "the help lists $verbs"
    for verb in $verbs; do
        grep -qw -- "$verb" <<<"$manual" || fail "the manual does not know $verb"
    done
}

check_installed_files
unpack_packages
answer_boxes &
answerer=$!
build_examples
check_completions
echo 'packages.sh: all is well'
