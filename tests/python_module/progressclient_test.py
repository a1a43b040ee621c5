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

PROGRESSD = "progressd"
PATIENCE = 30  # seconds; only a failure takes so long


def until(condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("it does not come about")
        time.sleep(0.01)


@contextlib.contextmanager
def pretender(identifier, answer, folder_mode=0o700):
    """Something that listens where a daemon would: `answer(connection)` for each client, or None to hang."""
    path = socket_path(identifier)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    os.chmod(os.path.dirname(path), folder_mode)

    def serve():
        while True:
            try:
                connection, _ = server.accept()
            except OSError:
                return
            with connection:
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
    with contextlib.suppress(OSError):
        while True:
            connection.sendall(b"<event>" * 9000)


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
        self.assertLess(time.monotonic() - begin, 2 * PATIENCE)
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
            with self.subTest(name), pretender("pretender", answer):
                self.loop(daemon="pretender")

    def test_nothing_there(self):
        self.assertIn("nobody.sock", self.loop(daemon="nobody"))
        self.assertIn("/no/progressd", self.loop(program="/no/progressd"))
        self.assertIn("false", self.loop(program="/bin/false"))
        display = os.environ.pop("DISPLAY")
        try:
            self.assertIn("no display", self.loop())
        finally:
            os.environ["DISPLAY"] = display

    def test_places_that_are_not_believed(self):
        with pretender("open", None, 0o755) as path:
            self.assertRaises(PermissionError, Channel.connect, path)
            os.chmod(os.path.dirname(path), 0o700)
            link = os.path.dirname(path) + "-link"
            os.symlink(os.path.dirname(path), link)
            self.assertRaises(PermissionError, Channel.connect, os.path.join(link, "open.sock"))
            os.remove(link)
        self.assertRaises(ValueError, socket_path, "a/b")


if __name__ == "__main__":
    PROGRESSD = sys.argv.pop(1)
    with tempfile.TemporaryDirectory() as runtime:
        os.environ["XDG_RUNTIME_DIR"] = runtime
        unittest.main()
