#!/usr/bin/env python3
"""usage: load.py PROGRESSD LOAD SECONDS RATE...

Shows a dialog with ten bars and a button, lets ten clients each send RATE updates a second for SECONDS while ten
others read, clicks on the button and looks at the dialog meanwhile. A rate holds if it was kept up, every event
arrived in order on every channel, every click was answered within 100 ms, and the pictures of the dialog differ
(the bars move in step, so some are the same by chance). Fails if the first rate does not hold; further ones are
tried until one does not.
"""

import hashlib
import os
import re
import subprocess
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tests/python"))
from harness import Daemon, Screen  # noqa: E402

TITLE = "loaded"
LOOK = "windowStyle=#86f0e0|#10141c|#86f0e0|#10141c|#727d92|#1d2430"  # moving bars are to be seen
ALLOWED_SECONDS = 0.1


class User(threading.Thread):
    """Clicks on the button once a second and takes a picture of the dialog now and then."""

    def __init__(self, screen, window):
        super().__init__(daemon=True)
        self.screen, self.window = screen, window
        self.clicks = []
        self.pictures = set()
        self.looks = 0
        self.ended = threading.Event()
        self.mouse = subprocess.Popen(["xdotool", "-"], stdin=subprocess.PIPE, text=True, bufsize=1,
                                      env=screen.environment)

    def run(self):
        time.sleep(1)
        while not self.ended.wait(1):
            self.clicks.append(time.clock_gettime_ns(time.CLOCK_MONOTONIC))
            self.mouse.stdin.write("click 1\n")
            self.mouse.stdin.flush()
            if len(self.clicks) % 2 == 0:
                picture = self.screen.run("import", "-window", str(self.window.id), "rgb:-", text=False)
                self.pictures.add(hashlib.sha256(picture).digest())
                self.looks += 1

    def end(self):
        self.ended.set()
        self.join()
        self.mouse.stdin.close()
        self.mouse.wait()


def show_dialog(screen, channel):
    """Returns its window, with the pointer over the button."""
    channel.configure(f"windowTitle={TITLE}", "screenGeometry=1280,1024", LOOK)
    channel.progress(*(f"create:{slot};bar {slot}" for slot in range(10)), "addButt:0;Click")
    window = screen.window(TITLE)
    # The first button stands in the upper of the two rows of buttons, at the left.
    screen.xdotool(f"mousemove {window.x + 60} {window.y + int(window.height * 10.6 / 12)}")
    return window


def run_rate(program, load, seconds, rate):
    screen = Screen(size="1280x1024")
    daemon = Daemon(screen, "0", program=program)
    channel = daemon.commands()
    window = show_dialog(screen, channel)
    channel.close()
    before = daemon.cpu_seconds()
    user = User(screen, window)
    generator = subprocess.Popen([load, str(daemon.command_port), str(daemon.event_port), str(rate), str(seconds)],
                                 stdout=subprocess.PIPE, text=True)
    user.start()
    time.sleep(seconds - 1)
    user.end()
    output = generator.communicate()[0]
    used = daemon.cpu_seconds() - before
    daemon.end()
    screen.end()
    return judge(rate, seconds, output, user, used)


def judge(rate, seconds, output, user, used):
    heard = [int(time_ns) for time_ns in re.findall(r"clicked (\d+)", output)]
    result = re.search(r"sent (\d+) seconds ([\d.]+) behind ([\d.]+) fewest (\d+) misplaced (\d+)", output)
    sent, took, behind = int(result[1]), float(result[2]), float(result[3])
    delays = [(answer - click) / 1e9 for click, answer in zip(user.clicks, heard)]
    slowest = max(delays, default=99)
    holds = (took < seconds * 1.01 + 0.1 and behind < 1 and int(result[4]) == sent and int(result[5]) == 0 and
             len(heard) == len(user.clicks) and slowest <= ALLOWED_SECONDS and len(user.pictures) >= max(2, user.looks / 4))
    print(f"{rate:7} a second and channel: {sent} sent in {took:.1f} s, {result[4]} heard on each channel, "
          f"{result[5]} misplaced, the last after {behind * 1000:.0f} ms; {len(heard)} of {len(user.clicks)} clicks "
          f"answered, slowest {slowest * 1000:.0f} ms; {len(user.pictures)} of {user.looks} pictures are different; "
          f"processor {100 * used / took:.0f} %: {'holds' if holds else 'does not hold'}", flush=True)
    return holds


def main():
    program, load, seconds = sys.argv[1], sys.argv[2], int(sys.argv[3])
    for number, rate in enumerate(map(int, sys.argv[4:])):
        if not run_rate(program, load, seconds, rate):
            sys.exit(1 if number == 0 else 0)


main()
