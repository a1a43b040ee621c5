#!/usr/bin/env bash
# What is installed is what should be, and the packages of `./run package` work from where they are unpacked.
#
# usage: packages.sh SOURCE BUILD
set -euo pipefail
source=$1 build=$2
export LC_ALL=C.UTF-8

work=$(mktemp -d /tmp/packages-test.XXXXXX)
export HOME=$work XDG_RUNTIME_DIR=$work XDG_STATE_HOME=$work/state
trap 'rm -rf "$work" /var/tmp/currentTimestamps_copying.txt' EXIT

fail() {
    printf 'packages.sh: %s\n' "$*" >&2
    exit 1
}

check_installed_files() {
    cmake --install "$build" --prefix "$work/tree" >/dev/null
    (cd "$work/tree" && find . ! -type d -printf '%P\n' | sed -E 's|^lib/[^/]*-linux-gnu/|lib/|;
        s|(targets)-[a-z]+\.cmake|\1-BUILDTYPE.cmake|' | sort) >"$work/installed"
    diff -u "$source/tests/client/installedFiles.txt" "$work/installed" || fail 'other files are installed'
}

unpack_packages() {
    local folder=$source/build/package package depends
    compgen -G "$folder/*.deb" >/dev/null || "$source/run" package >"$work/log" 2>&1 || fail "$(<"$work/log")"
    for package in "$folder"/*.deb; do
        dpkg-deb -x "$package" "$work/root"
    done
    depends=$(dpkg-deb -f "$folder"/progressd_*.deb Depends)
    for package in libqt6widgets6 libxcb-xkb1; do
        [[ $depends == *$package* ]] || fail "the package does not depend on $package: $depends"
    done
    [[ -z $(find "$work/root" ! -type l ! -perm -a=r) ]] || fail 'not all can be read by all'
    desktop-file-validate "$work"/root/usr/share/applications/*
    appstreamcli validate --no-net --pedantic "$work"/root/usr/share/metainfo/*
    export PATH=$work/root/usr/bin:$PATH
    local config
    config=$(find "$work/root" -name progressclient.pc)
    export PKG_CONFIG_PATH=${config%/*} LD_LIBRARY_PATH=${config%/pkgconfig/*} CMAKE_PREFIX_PATH=$work/root/usr
    export PYTHONPATH=$work/root/usr/lib/python3/dist-packages
    [[ $(command -v progressd) == "$work"/* ]] || fail 'progressd is not the one that was unpacked'
}

run_their_tests() {
    local name
    for name in start pipe python library; do
        (cd "$source" && AUTOPKGTEST_TMP=$work "debian/tests/$name" >"$work/log" 2>&1) || fail "$name: $(<"$work/log")"
    done
}

# What the pages link to is where they say.
check_links() {
    local page link
    while IFS= read -r page; do
        while IFS= read -r link; do
            [[ $link == *:* || -e ${page%/*}/${link%%#*} ]] || fail "$page: no $link"
        done < <(grep -oP '\]\(\K[^)]+' "$page")
    done < <(find "$work/root/usr/share/doc/progressd/" -name '*.md')
}

check_completions() {
    # shellcheck source=/dev/null
    source "$work/root/usr/share/bash-completion/completions/progressctl"
    local COMP_WORDS=(progressctl ask 'Sure?' re) COMP_CWORD=3 COMPREPLY=()
    _progressctl
    [[ ${COMPREPLY[*]} == 'retry reset restore-defaults' ]] || fail "bash completes ${COMPREPLY[*]}"
    COMP_WORDS=(progressctl configure windowTheme = d) COMP_CWORD=4
    _progressctl
    [[ ${COMPREPLY[*]} == dark ]] || fail "bash completes a value with ${COMPREPLY[*]}"
}

check_installed_files
unpack_packages
run_their_tests
check_links
check_completions
echo 'packages.sh: all is well'
