#!/usr/bin/env bash
# A client on another machine is hung up on at once, with a line in the log; clients on this machine's own
# addresses are served. The two machines are network namespaces. usage: remotePeer.sh PROGRESSD
set -euo pipefail
((EUID == 0)) || { echo 'needs root for a network namespace'; exit 77; }
command -v ip >/dev/null || { echo 'needs ip (iproute2)'; exit 77; }

progressd=$1 here=here$$ there=there$$ identifier=remote$$
lock=/tmp/HalvornRunning_$identifier.lock
log=/tmp/VKT-progressbar.log
[[ -d /var/instrument ]] && log=/var/instrument/VKT-progressbar.log
clean_up() {
    [[ -z ${daemon:-} ]] || kill "$daemon" 2>/dev/null || true
    ip netns delete "$here" 2>/dev/null || true
    ip netns delete "$there" 2>/dev/null || true
    rm -f "$lock" /var/tmp/currentTimestamps_"$identifier".txt
}
trap clean_up EXIT

ip netns add "$here" 2>/dev/null || { echo 'network namespaces are not to be had here'; exit 77; }
ip netns add "$there"
ip -n "$here" link add eth0 type veth peer name eth0 netns "$there"
ip -n "$here" addr add 10.77.0.1/24 dev eth0
ip -n "$there" addr add 10.77.0.2/24 dev eth0
for namespace in "$here" "$there"; do
    ip -n "$namespace" link set lo up
    ip -n "$namespace" link set eth0 up
done

lines() { grep -c 'refusing connection from another machine' "$log" 2>/dev/null || true; }
# Connects to an address and port and says whether it was hung up on.
client='exec 3<>/dev/tcp/$0/$1 || exit 9; read -r -t 2 -u 3 x; (($? > 128)) && echo served || echo closed'

ip netns exec "$here" "$progressd" "$identifier" 0 2>/dev/null &
daemon=$!
for ((i = 0; i < 200; ++i)); do [[ -s $lock ]] && break; sleep 0.05; done
port=$(head -n1 "$lock")
before=$(lines)

for address in 127.0.0.1 127.0.0.2 10.77.0.1; do
    [[ $(ip netns exec "$here" bash -c "$client" "$address" "$port") == served ]] || { echo "not served: $address"; exit 1; }
done
[[ $(ip netns exec "$there" timeout 20 bash -c "$client" 10.77.0.1 "$port") == closed ]] ||
    { echo 'another machine was served'; exit 1; }
(($(lines) > before)) || { echo "log lines: $before, then $(lines)"; exit 1; }
echo 'served on 3 local addresses, refused from another machine'
