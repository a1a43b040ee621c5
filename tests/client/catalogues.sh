#!/usr/bin/env bash
# The catalogues are well formed, and hold each word of the sources and no other.
#
# usage: catalogues.sh FOLDER
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# All words of a catalogue, a line each, in order.
words() { msgattrib --no-obsolete --no-wrap "$@" | sed -n '/^msgid "[^"]\|^msgid_plural/p' | sort; }

./update.sh "$work"
words "$work/progressd.pot" >"$work/wanted"
(($(wc -l <"$work/wanted") > 20)) || fail 'hardly a word in the sources'
[[ $(echo *.po) == 'ar.po de.po es.po fr.po it.po ja.po pl.po pt_BR.po ru.po zh_CN.po' ]] || fail "languages: $(echo *.po)"
for catalogue in *.po; do
    msgfmt --check -o /dev/null "$catalogue" || fail "$catalogue"
    words --translated --no-fuzzy "$catalogue" >"$work/found"
    diff "$work/wanted" "$work/found" || fail "$catalogue has other words (<: missing, fuzzy or not translated); po/update.sh"
done
