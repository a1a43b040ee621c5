#!/usr/bin/env python3
"""Lets the daemon run out of file descriptors: it must neither spin nor stay deaf when some are free again.

usage: noDescriptors.py PROGRESSD
"""

import os
import resource
import socket
import subprocess
import sys
import time

identifier = f"descriptors{os.getpid()}"
lock = f"/tmp/HalvornRunning_{identifier}.lock"


def processor_seconds(pid):
    fields = open(f"/proc/{pid}/stat").read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def main():
    daemon = subprocess.Popen([sys.argv[1], identifier, "0"], stderr=subprocess.DEVNULL)
    try:
        deadline = time.monotonic() + 20
        while not os.path.exists(lock) or open(lock).read().count("\n") < 2:
            if time.monotonic() > deadline:
                sys.exit("the daemon does not start")
            time.sleep(0.01)
        ports = [int(line) for line in open(lock)]
        used = len(os.listdir(f"/proc/{daemon.pid}/fd"))
        resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE, (used + 1, used + 1))

        clients = [socket.create_connection(("127.0.0.1", ports[0])) for _ in range(5)]
        time.sleep(0.5)
        before = processor_seconds(daemon.pid)
        time.sleep(2)
        spent = processor_seconds(daemon.pid) - before

        resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE, (used + 1, used + 1))
        for client in clients:
            client.close()
        time.sleep(1.5)
        events = socket.create_connection(("127.0.0.1", ports[1]))
        time.sleep(1)
        events.sendall(b"<progress>activate</progress>")
        events.settimeout(5)
        answer = events.recv(100)
        print(f"{spent:.2f} s of processor time in 2 s without descriptors, then: {answer!r}")
        if spent > 0.5 or answer != b"<event>isActivated</event>":
            sys.exit("noDescriptors.py: failed")
    finally:
        daemon.kill()
        daemon.wait()
        os.path.exists(lock) and os.remove(lock)


main()
