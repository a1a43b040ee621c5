#!/usr/bin/env python3
"""usage: PROGRESSD=PROGRAM soak.py SECONDS [SEED]

Keeps a daemon busy with ten command and ten event clients that come and go, vanish in the middle of a message or never
read, while something answers the boxes. Once a minute all pause and the daemon is measured with nothing shown. Fails if
something has grown since the first pause, or if a newcomer is not answered.
"""

import contextlib
import os
import random
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../python"))
from harness import Daemon, Screen, configuration, progress, resident_kib, until  # noqa: E402

CLIENTS = 10
BOX = "<msgbox>4[#]soakbox[#]Go on?[#]16384[#]65536</msgbox>"
ALLOWED_KIB = 2048
CONTENT = ("create:{};bar", "remove:{}", "addText:{};text", "updateText:{};new", "delText:{}", "addButt:{};button", "delButt:{}",
           "activate", "busyOn", "busyOff", "messageStart", "messageStop")
SETTINGS = ("windowModal=on", "windowModal=off", "busyIndicator=10|10|48|64|empty", "busyIndicator=-1|-1|0|0|empty",
            "paintOffset=3|4", "windowTitle=soak")


def keep_living(connect, act, chance, ends, lives):
    """A client's lives, one after the other."""
    while time.monotonic() < ends:
        with contextlib.suppress(OSError):  # refused, or hung up on
            channel = connect()
            act(channel, chance)
            (channel.reset if chance.random() < 0.5 else channel.socket.close)()
            lives.append(act)


def command(channel, chance):
    for _ in range(chance.randrange(1, 60)):
        slot = chance.randrange(-1, 11)
        channel.send(chance.choices((
            progress(*(f"update:{slot};{chance.randrange(-1, 102)}" for _ in range(20))),
            progress(chance.choice(CONTENT).format(slot)), configuration(chance.choice(SETTINGS)), BOX), (60, 30, 8, 2))[0])
        time.sleep(chance.random() * 0.01)
    if chance.random() < 0.2:
        channel.send("<progress>create:0;I am go")


def listen(channel, chance):
    """Or never read."""
    reads = chance.random() < 0.7
    for _ in range(chance.randrange(1, 40)):
        time.sleep(0.1)
        if reads:
            channel.pending()
            channel.received = b""


def answer_boxes(screen):
    """Presses Return on whatever box there is, for ever."""
    while True:
        for window in screen.windows("soakbox"):
            screen.xdotool(f"windowfocus {window.id} key --window {window.id} Return")
        time.sleep(0.1)


def measure(screen, daemon):
    until(lambda: not screen.windows("soakbox"), "the end of the last box")
    channel = daemon.commands()
    # What a vanished client has left unfinished ends with the first of these.
    for text in (progress("busyOff"), configuration("windowModal=on", "busyIndicator=-1|-1|0|0|empty"),
                 progress(*(f"{what}:{slot}" for slot in range(10) for what in ("remove", "delButt")))):
        channel.send(text)
        time.sleep(0.3)
    daemon.connect(daemon.event_port).close()  # slot 0 may be empty, and newcomers deaf
    daemon.events()
    time.sleep(1)
    return {"resident KiB": resident_kib(daemon.pid), "X server KiB": resident_kib(screen.server.pid),
            "descriptors": daemon.descriptors(), "windows": screen.run("xwininfo", "-root", "-tree").count(" 0x")}


def main():
    seconds, seed = float(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else random.randrange(1 << 30)
    print(f"seed {seed}")
    screen, chance, lives, rows = Screen(), random.Random(seed), [], []
    daemon = Daemon(screen, "0")
    threading.Thread(target=answer_boxes, args=[screen], daemon=True).start()
    ends = time.monotonic() + seconds
    while time.monotonic() < ends or len(rows) < 2:
        pause = time.monotonic() + min(60, seconds / 2)
        clients = [threading.Thread(target=keep_living, args=[*kind, random.Random(chance.random()), pause, lives], daemon=True)
                   for kind in ((daemon.commands, command), (lambda: daemon.connect(daemon.event_port), listen)) * CLIENTS]
        for client in clients:
            client.start()
        for client in clients:
            client.join()
        rows.append(measure(screen, daemon))
        print(f"{len(lives)} clients so far:", rows[-1], flush=True)
    daemon.end()
    grown = [name for name, value in rows[-1].items() if value > rows[0][name] + (ALLOWED_KIB if "KiB" in name else 0)]
    sys.exit(f"FAILED: {', '.join(grown)} grew" if grown else 0)


main()
