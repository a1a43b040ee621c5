#!/bin/sh
# Makes progressd-protocol(7) from docs/protocol.md. usage: protocol-page.sh PROTOCOL.MD >PAGE
set -eu

cat <<'PAGE'
'\" t
.\" Texts are left as they are: neither spread out nor hyphenated.
.ds AD l
.nr HY 0
.TH PROGRESSD\-PROTOCOL 7 "" progressd Miscellaneous
.ad l
.SH NAME
progressd\-protocol \- how clients speak to progressd
.SH DESCRIPTION
PAGE
# The page has its own title. Boxes around the cells of tables are for paper, and not all devices have a font C.
sed 1d "$1" | lowdown -Tman | sed 's/ expand allbox;/;/; s/\\f\(C\|(CR\|(CB\)/\\fB/g; s/\\e|/|/g'
cat <<'PAGE'
.SH SEE ALSO
.BR progressd (1),
.BR progressctl (1)
PAGE
