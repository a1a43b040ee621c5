#!/usr/bin/env python3
"""usage: connections.py PROGRESSD [COUNT]

Connects COUNT times (100000), one after the other, to a daemon with a base port: in turn to the command and to
the event port, hanging up in turn in order, with a reset and in the middle of a message. Fails if memory or
descriptors have grown since the first tenth, or if a newcomer is not served.
"""

import os
import socket
import struct
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../python"))
from daemon import Daemon, progress, until  # noqa: E402

ALLOWED_KIB = 2048
# So many fit the queue of connections that wait to be accepted; one more would have to wait for a second.
BURST = 20
# Each address has its own ports, which stay taken for a minute.
SOURCES = [f"127.0.0.{last}" for last in range(1, 11)]


def connect_once(daemon, number):
    port = daemon.command_port if number % 2 else daemon.event_port
    with daemon.connect(port, SOURCES[number % len(SOURCES)]) as channel:
        if number % 3 == 0:
            channel.sendall(progress("update:0;50")[: 1 + number % 27])
        if number % 4 < 2:
            channel.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


def main():
    program = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    failed = False
    with Daemon(program) as daemon:
        daemon.wait_for_ports()
        daemon.answers()
        # A newcomer that has just gone may not have been noticed yet.
        time.sleep(1)
        descriptors = daemon.descriptors()
        settled = lambda: until(lambda: daemon.descriptors() == descriptors)  # noqa: E731
        first = None
        started = time.monotonic()
        for number in range(1, count + 1):
            connect_once(daemon, number)
            if number % BURST == 0 and not settled():
                failed = True
                break
            if number % (count // 10):
                continue
            served = daemon.answers() and settled()
            resident = daemon.resident_kib()
            first = first or resident
            print(f"{number:8} connections  {time.monotonic() - started:6.1f} s  resident {resident} KiB  "
                  f"descriptors {daemon.descriptors()}  newcomer served: {'yes' if served else 'NO'}", flush=True)
            failed = failed or not served or resident > first + ALLOWED_KIB
    print("FAILED" if failed else "memory and descriptors stay flat, newcomers are served")
    sys.exit(failed)


main()
