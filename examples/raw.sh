#!/usr/bin/env bash
# A client of the local channel with nothing but socat: messages are text in, text out.
set -eu

progressd --private "raw$$" &
runtime=${XDG_RUNTIME_DIR:-/run/user/$UID}
[[ -O $runtime ]] && folder=$runtime/progressd || folder=/tmp/progressd-$UID
coproc socat - "UNIX-CONNECT:$folder/raw$$.sock,retry=99,interval=0.1"
say() { printf '%s' "$@" >&"${COPROC[1]}"; }

say '<configuration>windowTheme=auto;windowLayout=fitted;windowModal=off</configuration><events/>'
say '<progress>create:0;Kopieren; копирую…</progress><progress>update:0;50</progress>'
say '<msgbox>4[#]Copy[#]Keep the copy?[#]16384[#]65536</msgbox>' # 16384 is Yes, 65536 is No

# <event>isShown</event><event>totalProgress=50|-1</event>…<answer>1;16384</answer>
while read -r -d '>' -u "${COPROC[0]}" text; do
    printf '%s>' "$text"
    [[ $text != *'</answer' ]] || break
done
echo
say '<exit/>'
wait
