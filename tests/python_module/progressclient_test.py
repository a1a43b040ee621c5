"""The Python module against the daemon, and against what only pretends to be one."""

import contextlib
import math
import os
import re
import signal
import subprocess
import sys
import threading
import time
import warnings
from unittest import mock

import progressclient.terminal as terminal
from client import ClientCase
from harness import OPENBOX, PATIENCE, main, screen, until
from progressclient import Cancelled, Channel, Progress, socket_path, track

PROGRESSD = os.environ["PROGRESSD"]


def setUpModule():
    environment = screen(*OPENBOX).environment
    os.environ.clear()
    os.environ.update(environment)


class ModuleCase(ClientCase):
    def recorder(self):
        """What a daemon that gives slots has been told so far."""
        fake = self.fake()
        return lambda: re.findall("<progress>(.*?)</progress>", fake.heard.decode(), re.DOTALL)


class Faults(ModuleCase):
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
        for name, how in (
            ("hangs", {"silent": True}),
            ("hangs up", {"answer": b""}),
            ("dies later", {"answer": b"<claimed>0</claimed><claimed>1</claimed>"}),
            ("floods", {"answer": b"<event>" * 1_000_000}),
            ("lies", {"answer": b"<claimed>none</claimed>"}),
        ):
            with self.alone(name):
                self.fake(**how)
                self.loop(daemon=self.name)

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
        self.fake(silent=True)
        self.addCleanup(os.chmod, self.folder, 0o700)
        for mode, is_believed in ((0o755, False), (0o710, False), (0o2700, True), (0o700, True)):
            with self.subTest(oct(mode)):
                os.chmod(self.folder, mode)
                if is_believed:
                    Channel.connect(self.path).close()
                else:
                    self.assertRaises(PermissionError, Channel.connect, self.path)
        os.symlink(self.folder, f"{runtime}/link")
        self.assertRaises(PermissionError, Channel.connect, f"{runtime}/link/{self.name}.sock")


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


class Told(ModuleCase):
    """What the daemon is told, and that nothing that is handed in ends the job."""

    def test_strange_lengths(self):
        for length in (RuntimeError, -1, 10**30, 2.5):
            with self.alone(length):
                told, items = self.recorder(), []
                for item in track(Strange(length), daemon=self.name):
                    until(lambda: "pulse:0" in told())
                    items.append(item)
                self.assertEqual(items, [1, 2, 3])

    def test_strange_values(self):
        told = self.recorder()
        with Progress(daemon=self.name) as window:
            bar, text = window.bar(Strange(3), 40), window.text(Strange(3))
            for value in STRANGE:
                self.assertEqual(list(window.track(3, value, value, unit=value)), [0, 1, 2])
                bar.value = bar.text = bar.caption = bar.total = value
                text.update(value)
                bar.advance(value)
                bar.update(value)
                time.sleep(0.05)
            bar.total, bar.completed, bar.caption, bar.text = 40, 20, "all well", None
            until(lambda: "updateText:0;all well, 20 of 40" in told() and "update:0;50" in told())

    def test_texts_and_counts(self):
        told = self.recorder()
        with Progress(daemon=self.name) as window:
            bar = window.bar("Files", 40, unit="files")
            window.bar("Bytes", 3.4e9, unit="B").advance(1.2e9)
            window.bar("Percent").update(12)
            bar.advance(11)
            bar.advance()
            bar.text = "a.txt; %p"
            text = "Files: a.txt; %\u200bp"
            until(lambda: f"updateText:0;{text}, 12 of 40 files" in told())
            bar.update(50)
            until(lambda: "update:0;50" in told())
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
            with self.alone(expected):
                told = self.recorder()

                def amount():
                    return [command[7:] for command in told() if command.startswith("amount:")][-1:]

                with Progress(daemon=self.name) as window:
                    show(window)
                    until(lambda: told() and amount() == expected, "the amount")
                self.assertEqual(amount(), expected)

    def test_beyond_the_slots(self):
        told = self.recorder()
        with Progress(daemon=self.name) as window:
            rows = [window.bar(number) for number in range(12)]
            rows[11].update(50)
            until(lambda: "create:9;9" in told())
            rows[3].remove()
            until(lambda: "remove:3" in told())
            window.text("in the room")
            until(lambda: "addText:3;in the room" in told())

    def test_loops(self):
        self.fake()
        for expected, iterable, how in (
            (3, "abc", {}),
            (10, 10, {}),
            (3, range(3), {"disable": True}),
            (7, iter("abc"), {"total": 7}),
            (TypeError, iter("abc"), {}),
        ):
            with self.subTest(expected), track(iterable, daemon=self.name, desc="Items", **how) as loop:
                if isinstance(expected, int):
                    self.assertEqual(len(loop), expected)
                else:
                    self.assertRaises(expected, len, loop)
                items = list(loop)
                self.assertEqual((loop.caption, loop.completed), ("Items", 0 if how.get("disable") else len(items)))
        self.assertNotIn("progressclient", [thread.name for thread in threading.enumerate()])

    def test_failed_loops_are_left_unfinished(self):
        told = self.recorder()
        with contextlib.suppress(KeyError):
            for item in track(range(3), daemon=self.name):
                raise KeyError
        with contextlib.closing(track(range(3), daemon=self.name)) as loop:
            next(loop)
        with contextlib.suppress(KeyError), Progress(daemon=self.name) as window:
            window.bar().update(100)  # it counts as finished when the channel closes
            until(lambda: "update:0;100" in told())
            raise KeyError
        self.assertEqual([command for command in told() if command.startswith("remove")], [])
        self.assertEqual(told()[-1], "update:0;0")

    def test_names_that_do_not_exist(self):
        self.fake()
        with Progress(daemon=self.name) as window:
            for thing in (window, window.bar(), window.text(""), window.button(""), track(3)):
                with self.assertRaises(AttributeError, msg=repr(thing)):
                    thing.captoin = 1


class NoDisplay(ClientCase):
    """A line takes the window's place; the daemon, which nobody sees, says how long it takes."""

    PROGRAM = """
import sys, time
from progressclient import Progress, write
with Progress("Line", learn="", program=sys.argv[1]) as window:
    bar = window.bar("Items", 8)
    for item in range(8):
        if item == 4:
            bar.text = "\x1b[31mhalf"
            write("between")
        assert window.ask("?") is None
        time.sleep(0.4)
        bar.advance()
"""

    def start(self, program, *arguments, **streams):
        hidden = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}
        environment = {name: value for name, value in os.environ.items() if name not in hidden}
        environment.update(TERM="xterm", TERM_PROGRAM="WezTerm")
        return subprocess.Popen([sys.executable, "-W", "error", "-c", program, *arguments], env=environment, **streams)

    def test_terminal(self):
        said = self.in_terminal(self.start, self.PROGRAM, PROGRESSD)
        for expected in (r"\rItems 0 of 8 \[-+\] 0 %\x1b\[K", r"\x1b\[Kbetween\r\n", r"\d %, \d s left", r"Items:  \[31mh"):
            self.assertRegex(said, expected)
        self.assertLess(max(map(len, re.findall(r"\r([^\r\x1b]+)", said))), 80)
        self.assertIn("\x1b]9;4;1;50\x1b\\", said)
        self.assertTrue(said.endswith("\r\x1b[K\x1b]9;4;0;0\x1b\\"), said[-60:])

    def test_pipe(self):
        for program in (PROGRESSD, "/no/progressd"):
            with self.start(self.PROGRAM, program, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as process:
                said = process.communicate(timeout=PATIENCE)[1]
            self.assertEqual(process.returncode, 0)
            lines = [re.sub(", .*", "", line) for line in said.splitlines()]
            self.assertEqual([lines[0], lines[-1]], ["Items 0 %", "Items:  [31mhalf 100 %"])
            # One for each item, unless it had no turn meanwhile.
            self.assertEqual((" left" in said, sorted(set(lines), key=lines.index)), (program == PROGRESSD, lines), said)
            self.assertNotIn("\x1b", said)

    def test_narrow_terminals(self):
        show = "from progressclient.terminal import Line; Line().show('漢字 and more', '2 of 4', 50, 3)"
        bar = "[" + "#" * 10 + "-" * 10 + "]"
        for columns, expected in (
            (71, f"漢字 and more 2 of 4 {bar} 50 %, 3 s left"),
            (57, f"漢字 and mo 2 of 4 {bar} 50 %, 3 s left"),
            (51, "漢字 and more 2 of 4 50 %, 3 s left"),
            (21, "漢字 50 %, 3 s left"),
            (19, "漢 50 %, 3 s left"),
            (5, "50 %"),
        ):
            self.assertIn(f"\r{expected}\x1b[K", self.in_terminal(self.start, show, columns=columns), columns)

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


class Window(ModuleCase):
    """A daemon that is named, and a listener beside the client."""

    def setUp(self):
        super().setUp()
        daemon = self.daemon("--learn", "", identifier=self.name, private=True)
        self.process = daemon.process
        self.listener = daemon.local("<configuration>windowLayout=fitted;windowTitle=Shared</configuration><events/>")

    def tearDown(self):
        self.listener.close()
        self.assertEqual(self.process.wait(PATIENCE), 0)

    def hear(self, beginning):
        while not self.listener.event().startswith(beginning):
            pass

    def test_quick_items_before_a_slow_one_are_shown(self):
        for item in track(range(50000), "Items", daemon=self.name):
            if item == 49500:
                self.hear("totalProgress=99")
        self.hear("isHidden")

    def test_cancel(self):
        for keys in (["Tab", "Return"], ["Escape"]):  # the button, and closing the window
            steps = iter(range(int(100 * PATIENCE)))
            with self.subTest(keys), self.assertRaises(Cancelled):
                for step in track(steps, "Of unknown length", cancel=True, daemon=self.name):
                    if step == 0:
                        self.hear("isShown")
                        self.press(*keys, title="Shared")
                    time.sleep(0.01)
            self.hear("isHidden")

    def test_daemon_that_pauses_and_box(self):
        with Progress("Keep?", daemon=self.name) as window:
            bar = window.bar("Steps", total=1000)
            self.hear("isShown")
            self.process.send_signal(signal.SIGSTOP)
            for step in range(1000):
                bar.advance()
            self.process.send_signal(signal.SIGCONT)
            threading.Thread(target=self.press, args=["Return"], kwargs={"title": r"Keep\?"}).start()
            self.assertEqual(window.ask("[#] </msgbox> ключ", "yes", "no", default="no"), "no")


class PrivateDaemon(ModuleCase):
    def test_learns_under_its_name_and_leaves_nothing(self):
        for is_learned, in_loop, at_end in ((True, None, None), (False, KeyError, None), (False, None, Cancelled)):
            name = f"learned{is_learned}{in_loop is None}"
            with self.subTest(name), mock.patch.dict(os.environ, PROGRESSD=PROGRESSD):
                with contextlib.suppress(KeyError, Cancelled), Progress("a;\nb</configuration>", learn=name) as window:
                    if at_end:
                        window.bar().update(100)  # a run of full bars is not finished by that
                    try:
                        for number in window.track(range(3)):
                            self.press("Tab", title="a.* b<.*>")
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
    main()
