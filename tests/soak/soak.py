#!/usr/bin/env python3
"""usage: soak.py PROGRESSD OBJECTCOUNTER SECONDS [SEED]

Keeps a daemon busy with ten command and ten event clients that come and go, vanish in the middle of a message
or never read, while something answers the boxes. Once a minute all pause and the daemon is measured with
nothing shown. Fails if something has grown since the first pause, or if a client is not answered.
"""

import os
import random
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../python"))
from daemon import Daemon, box_answer, display_resources, progress, read_until, until  # noqa: E402

CLIENTS = 10
PAUSE_EVERY = 60  # seconds
ALLOWED_KIB = 2048
BOX_TITLE = "soakbox"
BOX = b"<msgbox>4[#]%s[#]Go on?[#]16384[#]65536</msgbox>" % BOX_TITLE.encode()


class Crowd:
    """What all clients share: the daemon, when to pause, and what they have done."""

    def __init__(self, daemon):
        self.daemon = daemon
        self.working = threading.Event()
        self.ended = False
        self.done = {}
        self.failures = []
        self.idle = threading.Semaphore(0)
        self.guard = threading.Lock()

    def count(self, what):
        with self.guard:
            self.done[what] = self.done.get(what, 0) + 1

    def fail(self, what):
        with self.guard:
            self.failures.append(what)


class Client(threading.Thread):
    def __init__(self, crowd, seed):
        super().__init__(daemon=True)
        self.crowd = crowd
        self.random = random.Random(seed)

    def run(self):
        while not self.crowd.ended:
            self.crowd.working.wait()
            if self.crowd.ended:
                break
            while self.crowd.working.is_set():
                try:
                    self.live()
                except OSError:
                    self.crowd.count("lost connections")
                    time.sleep(0.01)
            self.crowd.idle.release()

    def vanish(self, channel):
        if self.random.random() < 0.5:
            channel.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.crowd.count("connections reset")
        channel.close()


class CommandClient(Client):
    def live(self):
        channel = self.crowd.daemon.commands()
        self.crowd.count("command connections")
        for _ in range(self.random.randrange(1, 60)):
            if not self.crowd.working.is_set():
                break
            self.random.choices((self.update, self.content, self.mode, self.box, self.fragments),
                                (60, 25, 10, 1, 4))[0](channel)
            time.sleep(self.random.random() * 0.01)
        if self.random.random() < 0.2:
            channel.sendall(b"<progress>create:0;I am go")
            self.crowd.count("messages left unfinished")
        self.vanish(channel)

    def slot(self):
        return self.random.randrange(-1, 11)

    def update(self, channel):
        channel.sendall(progress(*(f"update:{self.slot()};{self.random.randrange(-1, 102)}" for _ in range(20))))

    def content(self, channel):
        command = self.random.choice(("create:{};bar", "remove:{}", "addText:{};text", "updateText:{};new", "delText:{}",
                                      "addButt:{};button", "delButt:{}"))
        channel.sendall(progress(command.format(self.slot())))

    def mode(self, channel):
        entry = self.random.choice(("windowModal=on", "windowModal=off", "busyIndicator=10|10|48|64|empty",
                                    "busyIndicator=-1|-1|0|0|empty", "paintOffset=3|4", "windowTitle=soak"))
        channel.sendall(self.random.choice((b"<configuration>%s</configuration>" % entry.encode(),
                                            progress("activate"), progress("busyOn"), progress("busyOff"),
                                            progress("messageStart"), progress("messageStop"))))

    def box(self, channel):
        """Asks, and mostly waits for the answer."""
        channel.sendall(BOX)
        self.crowd.count("boxes")
        if self.random.random() < 0.3:
            return
        channel.settimeout(60)
        try:
            answered = box_answer(channel)
        except socket.timeout:
            # A message that another client left unfinished has swallowed the question, which is how it is.
            answered = None
        self.crowd.count("boxes answered" if answered is not None else "boxes lost")

    def fragments(self, channel):
        message = progress(f"create:{self.slot()};in pieces")
        for piece in (message[:5], message[5:20], message[20:]):
            channel.sendall(piece)
            time.sleep(0.002)


class EventClient(Client):
    def live(self):
        channel = self.crowd.daemon.events()
        self.crowd.count("event connections")
        reads = self.random.random() < 0.7
        channel.settimeout(0.2)
        for _ in range(self.random.randrange(1, 40)):
            if not self.crowd.working.is_set():
                break
            if not reads:
                time.sleep(0.2)
                continue
            try:
                if not channel.recv(65536):
                    break
            except socket.timeout:
                pass
        self.crowd.count("event clients that read" if reads else "event clients that never read")
        self.vanish(channel)


class Answerer(threading.Thread):
    """Presses Return on whatever box there is."""

    def __init__(self, crowd):
        super().__init__(daemon=True)
        self.crowd = crowd

    def run(self):
        while not self.crowd.ended:
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{BOX_TITLE}$"],
                                   capture_output=True, text=True)
            for window in found.stdout.split():
                subprocess.run(["xdotool", "windowfocus", window, "key", "--window", window, "Return"],
                               stderr=subprocess.DEVNULL)
            time.sleep(0.1)


def boxes_left():
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{BOX_TITLE}$"],
                          capture_output=True, text=True).stdout.split()


def show_nothing(daemon):
    """Removes all content and ends what a vanished client left unfinished."""
    with daemon.commands() as channel:
        channel.sendall(progress("busyOff") + b"<configuration>windowModal=on;busyIndicator=-1|-1|0|0|empty</configuration>")
        time.sleep(0.3)
        channel.sendall(progress(*(f"{command}:{slot}" for slot in range(10) for command in ("remove", "delButt"))))
        time.sleep(0.3)


def measure(daemon, object_file):
    with open(object_file, "rb") as file:
        objects = struct.unpack("=q", file.read(8))[0]
    return {"resident KiB": daemon.resident_kib(), "descriptors": daemon.descriptors(), "objects": objects,
            **display_resources()}


def pause(crowd, threads, object_file):
    crowd.working.clear()
    for _ in threads:
        crowd.idle.acquire()
    if not until(lambda: not boxes_left()):
        crowd.fail("a box stays open")
    show_nothing(crowd.daemon)
    if not crowd.daemon.answers():
        crowd.fail("a newcomer is not answered")
    time.sleep(1)
    return measure(crowd.daemon, object_file)


def check_survivors(crowd):
    """All channels at once: each command client is answered, each event client hears all of them."""
    daemon = crowd.daemon
    listeners = [daemon.events() for _ in range(CLIENTS)]
    speakers = [daemon.commands() for _ in range(CLIENTS)]
    time.sleep(0.5)
    for speaker in speakers:
        speaker.sendall(progress("activate"))
    # A box in the same read would come first and drop the other message.
    time.sleep(0.5)
    for number, speaker in enumerate(speakers):
        speaker.sendall(BOX)
        speaker.settimeout(30)
        if box_answer(speaker) is None:
            crowd.fail(f"command client {number} gets no answer")
    heard = 0
    for listener in listeners:
        listener.settimeout(2)
        events = read_until(listener, b"<event>isActivated</event>" * CLIENTS)
        heard += events.count(b"isActivated") == CLIENTS
    if heard < CLIENTS:
        crowd.fail("not all event clients hear the command clients")
    print(f"at the end: {CLIENTS} command clients answered, {heard} of {CLIENTS} event clients hear them")
    for channel in speakers + listeners:
        channel.close()


def print_row(minute, figures):
    print(f"{minute:8.1f} min  " + "  ".join(f"{name} {value}" for name, value in figures.items()), flush=True)


def grown(first, last):
    allowed = {"resident KiB": ALLOWED_KIB}
    return [f"{name} grew from {first[name]} to {last[name]}" for name in first
            if last[name] > first[name] + allowed.get(name, 0)]


def main():
    program, counter, seconds = sys.argv[1], sys.argv[2], float(sys.argv[3])
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else random.randrange(1 << 30)
    print(f"seed {seed}")
    with tempfile.TemporaryDirectory() as directory:
        object_file = os.path.join(directory, "objects")
        environment = {"LD_PRELOAD": counter, "OBJECT_COUNT_FILE": object_file}
        with Daemon(program, environment=environment) as daemon:
            daemon.wait_for_ports()
            failures = soak(daemon, object_file, seconds, seed)
    for failure in failures:
        print(f"FAILED: {failure}")
    sys.exit(1 if failures else 0)


def soak(daemon, object_file, seconds, seed):
    crowd = Crowd(daemon)
    kinds = [CommandClient, EventClient] * CLIENTS
    threads = [kind(crowd, seed * 100 + number) for number, kind in enumerate(kinds)]
    for thread in threads:
        thread.start()
    Answerer(crowd).start()

    started = time.monotonic()
    rows = []
    while time.monotonic() < started + seconds or len(rows) < 2:
        crowd.working.set()
        time.sleep(min(PAUSE_EVERY, max(1.0, seconds / 2)))
        rows.append(pause(crowd, threads, object_file))
        print_row((time.monotonic() - started) / 60, rows[-1])
        if daemon.process.poll() is not None:
            crowd.fail(f"the daemon ended with {daemon.process.returncode}")
            break
    check_survivors(crowd)
    crowd.ended = True
    crowd.working.set()
    print("  ".join(f"{what}: {count}" for what, count in sorted(crowd.done.items())))
    return crowd.failures + grown(rows[0], rows[-1])


main()
