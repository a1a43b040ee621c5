"""A daemon of one's own, for scripts: starts it on the display that is there, talks to it, measures it."""

import os
import re
import socket
import struct
import subprocess
import time

PATIENCE = 30  # seconds; only a failure takes so long


def until(condition, seconds=PATIENCE):
    """Waits until the condition gives something true, and returns that, else None."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if result := condition():
            return result
        time.sleep(0.01)
    return None


def progress(*commands):
    return b"".join(b"<progress>%s</progress>" % command.encode("latin-1") for command in commands)


class Daemon:
    """Ends with the `with` block, its files too."""

    def __init__(self, program, base_port="0", wrapper=(), environment=None, identifier=None):
        self.identifier = identifier or f"script{os.getpid()}-{time.monotonic_ns()}"
        self.lock = f"/tmp/HalvornRunning_{self.identifier}.lock"
        arguments = [*wrapper, program, self.identifier] + ([base_port] if base_port is not None else [])
        self.process = subprocess.Popen(arguments, stderr=subprocess.DEVNULL, env={**os.environ, **(environment or {})})
        self.pid = self.process.pid

    def wait_for_ports(self):
        ports = until(self._read_ports)
        if not ports:
            raise SystemExit("the daemon does not come up")
        self.command_port, self.event_port = ports
        return self

    def _read_ports(self):
        try:
            with open(self.lock) as lock:
                lines = lock.read().split("\n")
        except OSError:
            return None
        return tuple(map(int, lines[:2])) if len(lines) == 3 else None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for file in (self.lock, *self.statistics_files()):
            if os.path.lexists(file) and not os.path.isdir(file):
                os.remove(file)

    def statistics_files(self):
        return [f"{d}/currentTimestamps_{self.identifier}.txt" for d in ("/var/instrument", "/var/tmp")]

    def connect(self, port, source="127.0.0.1"):
        channel = socket.create_connection(("127.0.0.1", port), PATIENCE, source_address=(source, 0))
        channel.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        return channel

    def commands(self):
        return self.connect(self.command_port)

    def events(self):
        return self.connect(self.event_port)

    def answers(self, seconds=PATIENCE):
        """Whether a newcomer gets an event. Tries again: a newcomer is deaf while the first event channel is
        missing, and connecting fills that place."""

        def one_try():
            try:
                with self.events() as channel:
                    channel.settimeout(1)
                    channel.sendall(progress("activate"))
                    return b"isActivated" in read_until(channel, b"isActivated")
            except OSError:
                return False

        return bool(until(one_try, seconds))

    # What it uses.

    def resident_kib(self):
        with open(f"/proc/{self.pid}/status") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def cpu_seconds(self):
        with open(f"/proc/{self.pid}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def read_until(channel, mark):
    """Reads up to the mark; less when the channel closes or its time is over."""
    received = b""
    try:
        while mark not in received:
            piece = channel.recv(65536)
            if not piece:
                break
            received += piece
    except OSError:
        pass
    return received


def box_answer(channel):
    received = b""
    while len(received) < 4:
        piece = channel.recv(4 - len(received))
        if not piece:
            return None
        received += piece
    return struct.unpack("=I", received)[0]


def display_resources():
    """Windows and pixmaps of all clients of the display, apart from the one that counts them."""
    listing = subprocess.run(["xrestop", "-b", "-m", "1"], capture_output=True, text=True, check=True).stdout
    totals = {"windows": 0, "pixmaps": 0}
    for block in re.split(r"^\d+ - ", listing, flags=re.M)[1:]:
        if block.startswith("xrestop"):
            continue
        for kind in totals:
            totals[kind] += int(re.search(rf"{kind}\s*: (\d+)", block).group(1))
    return totals
