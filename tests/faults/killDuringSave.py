#!/usr/bin/env python3
"""Kills the daemon 200 times at random moments of its final save; the file must always be whole.

usage: killDuringSave.py PROGRESSD
"""

import glob
import hashlib
import os
import random
import signal
import socket
import subprocess
import sys
import time

KILLS = 200
RECORDS = 400
SNAPSHOTS = 2000

identifier = f"kill{os.getpid()}"
saved = f"/var/tmp/currentTimestamps_{identifier}.txt"
lock = f"/tmp/HalvornRunning_{identifier}.lock"
random.seed(1)


def seed():
    course = "".join(f"{second * 1000 + second % 1000:08d}." for second in range(SNAPSHOTS))
    with open(saved, "w") as file:
        file.write("fileversion=2\n")
        file.writelines(f"{1447671234:012d}:{60 + n:08d}:00000001:{course}\n" for n in range(RECORDS))


def digest():
    with open(saved, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def serve_and_end():
    """Starts the daemon and asks it to end, which makes it save."""
    daemon = subprocess.Popen([sys.argv[1], identifier], stderr=subprocess.DEVNULL)
    deadline = time.monotonic() + 20
    while not os.path.exists(lock) or open(lock).read().count("\n") < 2:
        if time.monotonic() > deadline:
            sys.exit("the daemon does not start")
        time.sleep(0.001)
    commands = socket.create_connection(("127.0.0.1", int(open(lock).readline())))
    commands.sendall(b"<exit/>")
    return daemon


def main():
    leftovers = set(glob.glob("/var/tmp/currentTimestamps.*"))
    seed()
    whole = digest()
    started = time.monotonic()
    serve_and_end().wait()
    save_seconds = time.monotonic() - started
    broken = sum_of_interrupted = 0
    try:
        if digest() != whole:
            sys.exit("an undisturbed save changes the file")
        for _ in range(KILLS):
            daemon = serve_and_end()
            time.sleep(random.uniform(0, 0.05))
            daemon.send_signal(signal.SIGKILL)
            interrupted = daemon.wait() == -signal.SIGKILL
            sum_of_interrupted += interrupted
            broken += digest() != whole
            if os.path.exists(lock):
                os.remove(lock)
    finally:
        os.remove(saved)
        for file in set(glob.glob("/var/tmp/currentTimestamps.*")) - leftovers:
            os.remove(file)
    print(f"{KILLS} kills, {sum_of_interrupted} of them before the daemon had ended, {broken} files broken "
          f"(start to end undisturbed: {save_seconds * 1000:.0f} ms)")
    if broken or sum_of_interrupted < KILLS // 4:
        sys.exit("killDuringSave.py: failed")


main()
