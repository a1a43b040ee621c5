#!/usr/bin/env python3
"""The Python module: progressclient_test.py PROGRESSD, on a display of its own, with python/ in PYTHONPATH."""

import contextlib
import os
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings

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
        yield path
        server.shutdown(socket.SHUT_RDWR)
    os.unlink(path)


def flood(connection):
    while True:
        connection.sendall(b"<event>" * 9000)


def press(title, *keys):
    window = ["xdotool", "search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"]
    for command in (window, ["xdotool", "key", *keys]):
        subprocess.run(command, check=True, timeout=PATIENCE, stdout=subprocess.DEVNULL)


class Faults(unittest.TestCase):
    """Whatever is at the other end, the loop runs, and says once why it cannot be seen."""

    def loop(self, **how):
        begin = time.monotonic()
        with warnings.catch_warnings(record=True) as said:
            warnings.simplefilter("always")
            with Progress("Loop", **how) as window:
                text = window.text("x" * 1000)
                for item in track(range(20), "Items", daemon=window.daemon):
                    text.update(f"{item}" * 1000)
                    time.sleep(0.01)
                self.assertIsNone(window.ask("Still there?", timeout=0.1))
        self.assertEqual(item, 19)
        self.assertLess(time.monotonic() - begin, PATIENCE)
        self.assertEqual([w.filename for w in said], [__file__], [str(w.message) for w in said])
        return str(said[0].message)

    def test_pretenders(self):
        for name, answer in (
            ("hangs", None),
            ("hangs up", lambda connection: None),
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
        ):
            self.assertIn(expected, self.loop(**how))

    def test_places_that_are_not_believed(self):
        with pretender(None, 0o755) as path:
            folder = os.path.dirname(path)
            self.assertRaises(PermissionError, Channel.connect, path)
            os.chmod(folder, 0o700)
            os.symlink(folder, folder + "-link")
            self.assertRaises(PermissionError, Channel.connect, os.path.join(folder + "-link", NAME + ".sock"))


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
        heard = [self.listener.event(PATIENCE)]
        while not heard[-1].startswith(beginning):
            heard.append(self.listener.event(PATIENCE))
        return heard

    def test_quick_items_before_a_slow_one_are_shown(self):
        begin = time.monotonic()
        for item in track(range(50000), "Items", daemon=NAME):
            if item == 49500:
                heard = self.hear("totalProgress=99")
        self.assertLess(len(heard), 10 + 27 * (time.monotonic() - begin))
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

    def test_killed_client(self):
        program = f"import progressclient as p, time\nfor i in p.track([1, 2], daemon='{NAME}'): time.sleep(100)"
        client = subprocess.Popen([sys.executable, "-c", program])
        self.hear("isShown")
        client.kill()
        client.wait()
        self.hear("isHidden")

    def test_daemon_that_pauses_and_box(self):
        with Progress("Keep?", daemon=NAME) as window:
            bar = window.bar("Steps", total=1000)
            self.hear("isShown")
            self.process.send_signal(signal.SIGSTOP)
            begin = time.monotonic()
            for step in range(1000):
                bar.update(step)
            self.assertLess(time.monotonic() - begin, 2)
            self.process.send_signal(signal.SIGCONT)
            threading.Thread(target=press, args=("Keep?", "Return")).start()
            self.assertEqual(window.ask("[#] </msgbox> ключ", "yes", "no", default="no"), "no")


class PrivateDaemon(unittest.TestCase):
    def test_learns_under_its_name_and_leaves_nothing(self):
        name = f"module test {os.getpid()}"
        os.environ["PROGRESSD"] = PROGRESSD
        with Progress("a;\nb</configuration>", learn=name) as window:
            for number in window.track(range(3)):
                window.text(number)
                press("^a.* b<.*>$", "Tab")
                time.sleep(0.6)
        folder = "/var/instrument" if os.path.isdir("/var/instrument") else "/var/tmp"
        os.remove(f"{folder}/currentTimestamps_{name}.txt")
        self.assertEqual([f for f in os.listdir(os.path.dirname(socket_path("x"))) if "python-" in f], [])


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as runtime:
        os.environ["XDG_RUNTIME_DIR"] = runtime
        unittest.main()
