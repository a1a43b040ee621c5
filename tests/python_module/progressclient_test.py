#!/usr/bin/env python3
"""The Python module: progressclient_test.py PROGRESSD, on a display of its own, with python/ in PYTHONPATH."""

import contextlib
import itertools
import math
import os
import pty
import re
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest
import warnings
from unittest import mock

import progressclient.terminal as terminal
from progressclient import Cancelled, Channel, Progress, socket_path, track

PROGRESSD = sys.argv.pop(1)
NAME = "moduleTest"
PATIENCE = 30  # seconds; only a failure takes so long


@contextlib.contextmanager
def pretender(answer, folder_mode=0o700):
    """Something that listens where a daemon would: `answer(connection)` for each client, or None to hang."""
    path = socket_path(NAME)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    os.chmod(os.path.dirname(path), folder_mode)

    def serve():
        with contextlib.suppress(OSError):
            while True:
                with server.accept()[0] as connection, contextlib.suppress(OSError):
                    answer(connection)

    with socket.socket(socket.AF_UNIX) as server:
        server.bind(path)
        server.listen(1)
        if answer:
            threading.Thread(target=serve, daemon=True).start()
        try:
            yield path
        finally:
            server.shutdown(socket.SHUT_RDWR)
            os.unlink(path)
            os.chmod(os.path.dirname(path), 0o700)


def flood(connection):
    while True:
        connection.sendall(b"<event>" * 9000)


@contextlib.contextmanager
def recorder():
    """A daemon that gives slots, and the commands that it was told so far."""
    heard = bytearray()

    def answer(connection):
        slots = itertools.chain(range(10), itertools.repeat(-1))
        while piece := connection.recv(65536):
            heard.extend(piece)
            for _ in range(piece.count(b"<claim/>")):
                connection.sendall(b"<claimed>%d</claimed>" % next(slots))

    with pretender(answer):
        yield lambda: re.findall("<progress>(.*?)</progress>", heard.decode(), re.DOTALL)


def wait_for(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, "it does not come"
        time.sleep(0.01)


def press(title, *keys):
    window = ["xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"]
    for command in (window, ["xdotool", "key", *keys]):
        subprocess.run(command, check=True, timeout=PATIENCE, stdout=subprocess.DEVNULL)


class Faults(unittest.TestCase):
    """Whatever is at the other end, the loop runs, and says once why it cannot be seen."""

    def loop(self, **how):
        with warnings.catch_warnings(record=True) as said:
            warnings.simplefilter("always")
            with Progress("Loop", **how) as window:
                text = window.text("x" * 1000)
                for item in track(range(20), "Items", daemon=window.daemon):
                    text.update(f"{item}" * 1000)
                    time.sleep(0.01)
                self.assertIsNone(window.ask("Still there?", timeout=0.1))
        self.assertEqual(item, 19)
        self.assertEqual([w.filename for w in said], [__file__], [str(w.message) for w in said])
        return str(said[0].message)

    def test_pretenders(self):
        for name, answer in (
            ("hangs", None),
            ("dies later", lambda connection: time.sleep(0.1)),
            ("floods", flood),
            ("lies", lambda connection: connection.sendall(b"<claimed>none</claimed>")),
        ):
            with self.subTest(name), pretender(answer):
                self.loop(daemon=NAME)

    def test_nothing_there(self):
        for expected, how in (
            ("nobody.sock", {"daemon": "nobody"}),
            ("/no/progressd", {"program": "/no/progressd"}),
            ("/bin/false ended", {"program": "/bin/false"}),
            ("no local socket", {"daemon": "a/b"}),
        ):
            self.assertIn(expected, self.loop(**how))
        with warnings.catch_warnings(), contextlib.redirect_stderr(None):
            warnings.simplefilter("error")
            self.assertEqual(list(track(range(3), daemon="nobody")), [0, 1, 2])

    def test_places(self):
        runtime, usual = os.environ["XDG_RUNTIME_DIR"], f"/run/user/{os.geteuid()}"
        is_usual = os.path.isdir(usual) and os.stat(usual).st_mode & 0o777 == 0o700
        other = f"{usual}/progressd" if is_usual else f"/tmp/progressd-{os.geteuid()}"
        for value, folder in ((runtime, f"{runtime}/progressd"), ("", other), ("tmp", other), ("/no", other)):
            with self.subTest(value), mock.patch.dict(os.environ, XDG_RUNTIME_DIR=value):
                self.assertEqual(socket_path("x"), f"{folder}/x.sock")
        for mode, is_believed in ((0o700, True), (0o2700, True), (0o755, False), (0o710, False)):
            with self.subTest(oct(mode)), pretender(None, mode) as path:
                if is_believed:
                    Channel.connect(path).close()
                else:
                    self.assertRaises(PermissionError, Channel.connect, path)
        with pretender(None) as path:
            os.symlink(os.path.dirname(path), f"{runtime}/link")
            self.assertRaises(PermissionError, Channel.connect, f"{runtime}/link/{NAME}.sock")


class Strange(list):
    """Has whatever length it is given, or raises it, and cannot be read."""

    def __init__(self, length):
        super().__init__([1, 2, 3])
        self.length = length

    def __len__(self):
        if isinstance(self.length, type):
            raise self.length
        return self.length

    def __str__(self):
        raise RuntimeError


STRANGE = (None, math.nan, 1.7e308, "x", [], Strange(3), -5, 10**400, "\ud800", "a\0</prog\0ress>", "%p")


class Told(unittest.TestCase):
    """What the daemon is told, and that nothing that is handed in ends the job."""

    def test_strange_lengths(self):
        for length in (RuntimeError, -1, 10**30, 2.5):
            with self.subTest(length), recorder() as told:
                items = []
                for item in track(Strange(length), daemon=NAME):
                    wait_for(lambda: "pulse:0" in told())
                    items.append(item)
                self.assertEqual(items, [1, 2, 3])

    def test_strange_values(self):
        with recorder() as told, Progress(daemon=NAME) as window:
            bar, text = window.bar(Strange(3), 40), window.text(Strange(3))
            for value in STRANGE:
                self.assertEqual(list(window.track(3, value, value, unit=value)), [0, 1, 2])
                bar.value = bar.text = bar.caption = bar.total = value
                text.update(value)
                bar.advance(value)
                bar.update(value)
                time.sleep(0.05)
            bar.total, bar.completed, bar.caption, bar.text = 40, 20, "all well", None
            wait_for(lambda: "updateText:0;all well, 20 of 40" in told() and "update:0;50" in told())

    def test_texts_and_counts(self):
        with recorder() as told, Progress(daemon=NAME) as window:
            bar = window.bar("Files", 40, unit="files")
            window.bar("Bytes", 3.4e9, unit="B").advance(1.2e9)
            window.bar("Percent").update(12)
            bar.advance(11)
            bar.advance()
            bar.text = "a.txt; %p"
            text = "Files: a.txt; %\u200bp"
            wait_for(lambda: f"updateText:0;{text}, 12 of 40 files" in told())
            bar.update(50)
            wait_for(lambda: "update:0;50" in told())
            self.assertEqual((bar.completed, bar.total, bar.value), (20, 40, 20))
        for expected in (
            *(f"create:0;{text}", "update:0;30", "remove:0", "create:1;Bytes", "updateText:1;Bytes, 1.2 of 3.4 GB"),
            *("create:2;Percent", "update:2;12"),
        ):
            self.assertIn(expected, told())

    def test_amounts(self):
        def loops(window):
            for _ in window.track(range(4)):
                list(window.track(range(7)))
                time.sleep(0.06)

        for expected, show in (
            ([], lambda window: window.bar().update(7)),
            ([], lambda window: window.bar(total=2**54)),
            (["50"], lambda window: setattr(window.bar(total=5), "total", 50)),
            (["11"], lambda window: [window.bar("", *bar) for bar in ((5, "files"), (1000, "B"), (6, "files"))]),
            (["11"], loops),
        ):
            with self.subTest(expected), recorder() as told:
                with Progress(daemon=NAME) as window:
                    show(window)
                    time.sleep(0.2)
                amounts = [command[7:] for command in told() if command.startswith("amount:")]
                self.assertEqual(amounts[-1:], expected)

    def test_beyond_the_slots(self):
        with recorder() as told, Progress(daemon=NAME) as window:
            rows = [window.bar(number) for number in range(12)]
            rows[11].update(50)
            wait_for(lambda: "create:9;9" in told())
            rows[3].remove()
            wait_for(lambda: "remove:3" in told())
            window.text("in the room")
            wait_for(lambda: "addText:3;in the room" in told())

    def test_loops(self):
        for expected, iterable, how in (
            (3, "abc", {}),
            (10, 10, {}),
            (3, range(3), {"disable": True}),
            (7, iter("abc"), {"total": 7}),
            (TypeError, iter("abc"), {}),
        ):
            with self.subTest(expected), recorder(), track(iterable, daemon=NAME, desc="Items", **how) as loop:
                if isinstance(expected, int):
                    self.assertEqual(len(loop), expected)
                else:
                    self.assertRaises(expected, len, loop)
                items = list(loop)
                self.assertEqual((loop.caption, loop.completed), ("Items", 0 if how.get("disable") else len(items)))
        self.assertNotIn("progressclient", [thread.name for thread in threading.enumerate()])

    def test_failed_loops_are_left_unfinished(self):
        with recorder() as told:
            with contextlib.suppress(KeyError):
                for item in track(range(3), daemon=NAME):
                    raise KeyError
            with contextlib.closing(track(range(3), daemon=NAME)) as loop:
                next(loop)
            with contextlib.suppress(KeyError), Progress(daemon=NAME) as window:
                window.bar().update(100)  # it counts as finished when the channel closes
                wait_for(lambda: "update:0;100" in told())
                raise KeyError
        self.assertEqual([command for command in told() if command.startswith("remove")], [])
        self.assertEqual(told()[-1], "update:0;0")

    def test_names_that_do_not_exist(self):
        with recorder(), Progress(daemon=NAME) as window:
            for thing in (window, window.bar(), window.text(""), window.button(""), track(3)):
                with self.assertRaises(AttributeError, msg=repr(thing)):
                    thing.captoin = 1


class NoDisplay(unittest.TestCase):
    """A line takes the window's place; the daemon, which nobody sees, says how long it takes."""

    PROGRAM = """
import sys, time
from progressclient import Progress, write
with Progress("Line", learn="", program=sys.argv[1]) as window:
    bar = window.bar("Items", 8)
    window._courier.is_decided.wait()
    for item in range(8):
        if item == 4:
            bar.text = "\x1b[31mhalf"
            write("between")
        assert window.ask("?") is None
        time.sleep(0.4)
        bar.advance()
"""

    def start(self, program, **streams):
        hidden = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}
        environment = {name: value for name, value in os.environ.items() if name not in hidden}
        environment.update(TERM="xterm", TERM_PROGRAM="WezTerm")
        return subprocess.Popen([sys.executable, "-W", "error", "-c", self.PROGRAM, program], env=environment, **streams)

    def test_terminal(self):
        try:
            ours, theirs = pty.openpty()
        except OSError:
            self.skipTest("needs a pseudo terminal, of /dev/pts")
        termios.tcsetwinsize(theirs, (24, 60))
        with self.start(PROGRESSD, stdout=theirs, stderr=theirs) as process, open(ours, "rb", 0) as end:
            os.close(theirs)
            said = ""
            with contextlib.suppress(OSError):  # what a terminal that nobody has open any more gives
                while piece := end.read(65536):
                    said += piece.decode()
        self.assertEqual(process.returncode, 0)
        for expected in (r"\rItems 0 of 8 \[-+\] 0 %\x1b\[K", r"\x1b\[Kbetween\r\n", r"\d %, \d s left", r"Items:  \[31mh"):
            self.assertRegex(said, expected)
        self.assertLess(max(map(len, re.findall(r"\r([^\r\x1b]+)", said))), 60)
        self.assertIn("\x1b]9;4;1;50\x1b\\", said)
        self.assertTrue(said.endswith("\r\x1b[K\x1b]9;4;0;0\x1b\\"), said[-60:])

    def test_pipe(self):
        for program in (PROGRESSD, "/no/progressd"):
            with self.start(program, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as process:
                said = process.communicate(timeout=PATIENCE)[1]
            self.assertEqual(process.returncode, 0)
            lines = [re.sub(", .*", "", line) for line in said.splitlines()]
            self.assertEqual([lines[0], lines[-1]], ["Items 0 %", "Items:  [31mhalf 100 %"])
            self.assertEqual((" left" in said, len(set(lines)), len(lines)), (program == PROGRESSD, 9, 9), said)
            self.assertNotIn("\x1b", said)

    def test_narrow_terminals(self):
        for columns, expected in (
            (60, "漢字 and more 2 of 4 [#####-----] 50 %, 3 s left"),
            (46, "漢字 and mo 2 of 4 [#####-----] 50 %, 3 s left"),
            (40, "漢字 and more 2 of 4 50 %, 3 s left"),
            (20, "漢字 50 %, 3 s left"),
            (18, "漢 50 %, 3 s left"),
            (4, "50 %"),
            (0, ""),
        ):
            line = terminal._fitted("漢字 and more", "2 of 4", "[#####-----]", "50 %, 3 s left", columns)
            self.assertEqual(line, expected, columns)

    def test_terminals_that_take_progress(self):
        for expected, environment in (
            (False, {}),
            (False, {"VTE_VERSION": "7899", "TERM_PROGRAM": "vscode", "ConEmuANSI": "OFF", "TERM_FEATURES": "T3PaCw"}),
            (True, {"VTE_VERSION": "7900"}),
            (True, {"TERM_PROGRAM": "ghostty"}),
            (True, {"ConEmuANSI": "ON"}),
            (True, {"TERM_FEATURES": "T3CwPSc7"}),
        ):
            self.assertEqual(terminal.takes_progress(environment), expected, environment)

    def test_remaining(self):
        for seconds, text in ((-1, ""), (0, "0 s left"), (70, "1 min 10 s left"), (600, "10 min left"), (7260, "2 h 1 min left")):
            self.assertEqual(terminal.remaining(seconds), text)
        for expected, seconds in (
            ([60, 60, 60, 59, 58, 58, 58, 57], [62, 61, 60, 59, 58, 59, 58, 57]),
            ([130] * 10 + [120, 120], range(128, 116, -1)),
            ([3, 5, 4, -1, 2, 2, -1, 2], [3, 5, 4, -1, 2, 3, -1, 2]),
            ([1, 1, 1, -1, -1, 0], [1, 1, 2, 1, 1, 0]),  # one that stands says nothing
        ):
            calm = terminal.CalmTime()
            shown = [calm.text(left, now) for now, left in enumerate(seconds)]
            self.assertEqual(shown, [terminal.remaining(each) for each in expected])


class Window(unittest.TestCase):
    """A daemon that is named, and a listener beside the client."""

    def setUp(self):
        self.process = subprocess.Popen([PROGRESSD, "--private", NAME, "--learn", ""], stderr=subprocess.DEVNULL)
        self.listener = self.connect(time.monotonic() + PATIENCE)
        self.listener.send("configuration", "windowLayout=fitted;windowTitle=Shared")
        self.listener.listen()

    def connect(self, end):
        while time.monotonic() < end:
            with contextlib.suppress(FileNotFoundError, ConnectionRefusedError):
                return Channel.connect(socket_path(NAME), PATIENCE)
            time.sleep(0.01)
        self.fail("the daemon does not come up")

    def tearDown(self):
        with self.listener:
            self.listener.finish(PATIENCE)
        self.assertEqual(self.process.wait(PATIENCE), 0)

    def hear(self, beginning):
        while not self.listener.event(PATIENCE).startswith(beginning):
            pass

    def test_quick_items_before_a_slow_one_are_shown(self):
        for item in track(range(50000), "Items", daemon=NAME):
            if item == 49500:
                self.hear("totalProgress=99")
        self.hear("isHidden")

    def test_cancel(self):
        for keys in (["Tab", "Return"], ["Escape"]):  # the button, and closing the window
            steps = iter(range(100 * PATIENCE))
            with self.subTest(keys), self.assertRaises(Cancelled):
                for step in track(steps, "Of unknown length", cancel=True, daemon=NAME):
                    if step == 0:
                        self.hear("isShown")
                        press("Shared", *keys)
                    time.sleep(0.01)
            self.hear("isHidden")

    def test_daemon_that_pauses_and_box(self):
        with Progress("Keep?", daemon=NAME) as window:
            bar = window.bar("Steps", total=1000)
            self.hear("isShown")
            self.process.send_signal(signal.SIGSTOP)
            for step in range(1000):
                bar.advance()
            self.process.send_signal(signal.SIGCONT)
            threading.Thread(target=press, args=("Keep?", "Return")).start()
            self.assertEqual(window.ask("[#] </msgbox> ключ", "yes", "no", default="no"), "no")


class PrivateDaemon(unittest.TestCase):
    def test_learns_under_its_name_and_leaves_nothing(self):
        for is_learned, in_loop, at_end in ((True, None, None), (False, KeyError, None), (False, None, Cancelled)):
            name = f"learned{is_learned}{in_loop is None}"
            with self.subTest(name), mock.patch.dict(os.environ, PROGRESSD=PROGRESSD):
                with contextlib.suppress(KeyError, Cancelled), Progress("a;\nb</configuration>", learn=name) as window:
                    if at_end:
                        window.bar().update(100)  # a run of full bars is not finished by that
                    try:
                        for number in window.track(range(3)):
                            press("^a.* b<.*>$", "Tab")
                            time.sleep(0.6)
                            if in_loop and number == 2:
                                raise in_loop
                    finally:
                        time.sleep(0.3)  # the loop's bar goes some time before the window
                    if at_end:
                        raise at_end
            self.assertEqual(os.path.exists(f"{os.environ['XDG_STATE_HOME']}/progressd/{name}.txt"), is_learned, name)
        self.assertEqual([f for f in os.listdir(os.path.dirname(socket_path("x"))) if "python-" in f], [])


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as runtime:
        os.environ.update(XDG_RUNTIME_DIR=runtime, XDG_STATE_HOME=runtime)
        unittest.main()
