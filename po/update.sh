#!/bin/sh
# Takes the words of the sources into all catalogues, or with a folder, writes them there as progressd.pot instead.
set -eu
cd "$(dirname "$0")/.."
words=$(mktemp)
trap 'rm -f "$words"' EXIT
find . -name build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print | sort | xgettext --files-from=- --language=C++ --from-code=UTF-8 --qt --add-comments=TRANSLATORS \
    --keyword --keyword=translated:1,1t --keyword=translated:1,1,2t --keyword=toTranslate \
    --no-location --package-name=progressd --output="$words"
if [ $# -gt 0 ]; then
    cp "$words" "$1/progressd.pot"
    exit
fi
for catalogue in po/*.po; do
    msgmerge --quiet --update --backup=none --no-location --no-wrap "$catalogue" "$words"
done
