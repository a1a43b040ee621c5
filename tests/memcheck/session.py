#!/usr/bin/env python3
"""usage: session.py PROGRESSD SUPPRESSIONS

A session with every command, both window modes, boxes that are answered and boxes that are open at the end, a run
that is recorded and one that follows it, clients that vanish; all of it under memcheck. Fails on an error, and on
memory that nothing refers to any more at the end.
"""

import os
import re
import socket
import struct
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../python"))
from daemon import Daemon, box_answer, progress, read_until, until  # noqa: E402

ERRORS = 99
BOX = b"<msgbox>2[#]memcheck[#]<b>Overwrite</b> it?[#]16384[#]65792</msgbox>"
CONFIGURATION = (b"windowFonts=Arial,8|Arial,10|Arial,10|Arial,8;busyIndicator=10|10|0|0|%s;paintOffset=3|4;"
                 b"screenGeometry=1024,768;windowTitle=memcheck;windowPixmap=%s;windowIcon=%s;"
                 b"windowStyle=#336699|white|red|white|#eeeeee|black;windowControls=white|gray|silver|red")
IMAGE = os.path.abspath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../examples/Busy.png")).encode()


def press(title, key):
    """Waits for the window and presses a key in it."""
    window = until(lambda: subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                                          capture_output=True, text=True).stdout.split())
    if not window:
        sys.exit(f"FAILED: no window {title}")
    time.sleep(1)
    subprocess.run(["xdotool", "windowfocus", window[-1], "key", key])


def use_everything(daemon, commands, events):
    commands.sendall(b"<configuration>%s</configuration>" % (CONFIGURATION % (IMAGE, IMAGE, IMAGE)))
    time.sleep(1)
    for mode in ("on", "off"):
        commands.sendall(f"<configuration>windowModal={mode}</configuration>".encode())
        time.sleep(1)
        commands.sendall(progress(*(f"create:{slot};bar {slot}" for slot in range(10))))
        commands.sendall(progress("addText:3;text", "updateText:3;other", "addButt:0;first", "addButt:9;last",
                                  "busyOn", "activate", "update:20;5", "create:1;a;b", "nothing"))
        for percent in range(0, 100, 5):
            commands.sendall(progress(*(f"update:{slot};{percent}" for slot in range(10))))
            time.sleep(0.3)
        commands.sendall(progress("messageStart", "messageStop", "update:0;-1", "busyOff", "delText:3", "delButt:0"))
        press("memcheck", "Tab")
        press("memcheck", "Return")
        commands.sendall(progress(*(f"remove:{slot}" for slot in range(10)), "delButt:9"))
        read_until(events, b"isHidden")


def record_runs(commands, events):
    """Two runs alike: the second one follows the first."""
    for _ in range(2):
        commands.sendall(progress("create:0;Copying"))
        for percent in range(0, 100, 10):
            commands.sendall(progress(f"update:0;{percent}"))
            time.sleep(0.5)
        commands.sendall(progress("remove:0"))
        read_until(events, b"isHidden")


def vanish_in_many_ways(daemon):
    for number in range(25):
        channel = daemon.connect(daemon.command_port if number % 2 else daemon.event_port)
        channel.sendall(progress("update:0;50")[: number + 1])
        if number % 3:
            channel.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        channel.close()
        time.sleep(0.05)


def ask(commands):
    commands.sendall(BOX)
    press("memcheck", "Return")
    if box_answer(commands) != 65536:
        sys.exit("FAILED: the box was not answered")
    commands.sendall(b"<assert>it broke</assert>")
    press("Zerbak Quillet Assertion", "Escape")
    if box_answer(commands) != 262144:
        sys.exit("FAILED: the assertion was not answered")
    # These are still open when the daemon ends.
    commands.sendall(BOX)
    time.sleep(1)
    commands.sendall(progress("create:0;Copying") + b"<assert>open</assert>")
    time.sleep(1)


def main():
    program, suppressions = sys.argv[1], sys.argv[2]
    log = tempfile.NamedTemporaryFile("r")
    memcheck = ["valgrind", "--leak-check=full", "--show-leak-kinds=definite", "--errors-for-leak-kinds=definite",
                f"--error-exitcode={ERRORS}", f"--suppressions={suppressions}", "--num-callers=30",
                "--child-silent-after-fork=yes", f"--log-file={log.name}"]
    with Daemon(program, base_port=None, wrapper=memcheck) as daemon:
        daemon.wait_for_ports()
        events = daemon.events()
        events.settimeout(60)
        commands = daemon.commands()
        commands.settimeout(60)
        time.sleep(1)
        use_everything(daemon, commands, events)
        record_runs(commands, events)
        vanish_in_many_ways(daemon)
        ask(commands)
        commands.sendall(b"<exit/>")
        status = daemon.process.wait(120)
    report = log.read()
    print(report if status else "\n".join(re.findall(r"ERROR SUMMARY.*|definitely lost.*", report)))
    sys.exit(1 if status else 0)


main()
