#!/usr/bin/env python3
"""Measures progressd beside zenity and yad, in one run, on the display that is there.

usage: peers.py PROGRESSD

Prints a table, the daemon over its local socket and over its ports, and the peers: the time from the start to the
first connection (the peers: to the mapped window), the resident
memory with the window shown, and the updates a second (the peers read them from a pipe). Times and rates are the
best of several runs. Memory is told for the first program of its kind on a fresh display (which a toolkit may
ask for its graphics abilities, and remember them there) and for later ones; the value of the bar changes with every update.
"""

import atexit
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time

RUNS = 5
UPDATES = 200_000
BLOCKS = 10  # of so many updates; the peers get one


def resident_mib(pid):
    with open(f"/proc/{pid}/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024


class Daemon:
    """One that is spoken to over its ports, or over its local socket alone."""

    def __init__(self, program, local):
        self.local = local
        identifier = f"bench{os.getpid()}"
        self.lock = f"/tmp/HalvornRunning_{identifier}.lock"
        self.socket = os.path.join(os.environ["XDG_RUNTIME_DIR"], "progressd", identifier + ".sock")
        self.saved = [f"{d}/currentTimestamps_{identifier}.txt" for d in ("/var/instrument", "/var/tmp")]
        started = time.perf_counter()
        command = [program, "--private", identifier] if local else [program, identifier]
        self.process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        while not (commands := self.connect(0)):
            time.sleep(0.0005)
        self.start_seconds = time.perf_counter() - started
        self.commands = commands

    def connect(self, port):
        """A channel to the command (0) or the event port (1), or to the socket; None while there is none."""
        try:
            if self.local:
                channel = socket.socket(socket.AF_UNIX)
                channel.connect(self.socket)
                return channel
            with open(self.lock) as lock:
                return socket.create_connection(("127.0.0.1", int(lock.read().split()[port])))
        except (OSError, IndexError):
            return None

    def events(self):
        channel = self.connect(1)
        if self.local:
            channel.sendall(b"<events/>")
        return channel

    def send(self, *commands):
        self.commands.sendall(b"".join(b"<progress>%s</progress>" % c.encode() for c in commands))

    def end(self):
        self.commands.sendall(b"<exit/>")
        self.process.wait(10)
        for file in filter(os.path.exists, self.saved):
            os.remove(file)


def updates():
    return b"".join(b"<progress>update:0;%d</progress>" % (n % 100) for n in range(UPDATES))


def silent_rate(daemon):
    block = updates()
    started = time.perf_counter()
    for _ in range(BLOCKS):
        daemon.commands.sendall(block)
    daemon.end()
    return BLOCKS * UPDATES / (time.perf_counter() - started)


def heard_rate(daemon):
    events = daemon.events()
    time.sleep(0.2)
    daemon.send("create:0;Copying")
    time.sleep(0.3)
    block = updates()
    started = time.perf_counter()
    if os.fork() == 0:
        for _ in range(BLOCKS):
            daemon.commands.sendall(block)
        daemon.send("activate")
        os._exit(0)
    tail = b""
    while b"isActivated" not in tail:
        tail = tail[-20:] + events.recv(1 << 20)
    rate = BLOCKS * UPDATES / (time.perf_counter() - started)
    os.wait()
    daemon.end()
    return rate


def daemon_figures(program, local):
    starts, memory, silent, heard = [], [], [], []
    for _ in range(RUNS):
        daemon = Daemon(program, local)
        starts.append(daemon.start_seconds)
        daemon.send("create:0;Copying", "addButt:0;Cancel")
        time.sleep(0.5)
        memory.append(resident_mib(daemon.process.pid))
        silent.append(silent_rate(daemon))
        heard.append(heard_rate(Daemon(program, local)))
    return min(starts), memory, max(silent), max(heard)


def wait_for_window(title):
    deadline = time.monotonic() + 20
    while subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                         capture_output=True).returncode:
        if time.monotonic() > deadline:
            sys.exit(f"peers.py: the window {title} does not appear")
        time.sleep(0.002)


def peer_figures(command):
    starts, memory, rates = [], [], []
    lines = b"".join(b"%d\n" % (1 + n % 98) for n in range(UPDATES)) + b"100\n"
    for run in range(RUNS):
        title = f"peer{run}"
        started = time.perf_counter()
        peer = subprocess.Popen(command + [f"--title={title}"], stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
        wait_for_window(title)
        starts.append(time.perf_counter() - started)
        time.sleep(0.5)
        memory.append(resident_mib(peer.pid))
        started = time.perf_counter()
        peer.stdin.write(lines)
        peer.stdin.close()
        peer.wait()
        rates.append(UPDATES / (time.perf_counter() - started))
    return min(starts), memory, max(rates), None


def main():
    os.environ["XDG_RUNTIME_DIR"] = folder = tempfile.mkdtemp()
    atexit.register(shutil.rmtree, folder)
    rows = {"local": daemon_figures(sys.argv[1], True), "ports": daemon_figures(sys.argv[1], False)}
    for name in filter(shutil.which, ("zenity", "yad")):
        rows[name] = peer_figures([name, "--progress", "--auto-close"])
    print(f"{'':10} {'start':>8} {'memory':>11} {'later':>10} {'updates/s':>11} {'with events':>12}")
    for name, (start, memory, silent, heard) in rows.items():
        print(f"{name:10} {start * 1000:5.0f} ms {memory[0]:7.1f} MiB {min(memory[1:]):6.1f} MiB {silent:11,.0f} "
              + (f"{heard:12,.0f}" if heard else f"{'-':>12}"))


if __name__ == "__main__":
    main()
