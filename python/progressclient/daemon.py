"""Ways to a daemon: one that runs already, or one of this process's own."""

from __future__ import annotations

import contextlib
import os
import re
import secrets
import subprocess
import tempfile
import threading
import time
from typing import IO, Optional

from .channel import Channel
from .place import socket_path
from .terminal import has_display

START_DEADLINE = 10.0  # seconds, for a machine that is busy
_LONGEST_NAME = 100  # bytes; the name becomes part of a file's


class NamedDaemon:
    """A daemon that somebody started, and whose looks are theirs."""

    is_private = False

    def __init__(self, identifier: str) -> None:
        self._identifier = identifier

    def connect(self, stop: threading.Event) -> Channel:
        path = socket_path(self._identifier)
        try:
            return Channel.connect(path)
        except (FileNotFoundError, ConnectionRefusedError):
            raise OSError(f"no daemon answers at {path}") from None

    def end(self, until: float) -> None:
        """Leaves it as it is."""

    def forget(self) -> None:
        """There is nothing to forget."""


class PrivateDaemon:
    """A daemon for one client: it ends when the client has gone."""

    is_private = True

    def __init__(self, program: Optional[str], learn: str) -> None:
        self._program = program or os.environ.get("PROGRESSD") or "progressd"
        self._learn = learned_name(learn)
        self._path = socket_path(f"python-{os.getpid()}-{secrets.token_hex(4)}")
        self._process: Optional[subprocess.Popen[bytes]] = None

    def connect(self, stop: threading.Event) -> Channel:
        """Starts the daemon and waits until it takes a connection, it ends, or `stop` is set."""
        with tempfile.TemporaryFile() as complaints:
            self._start(complaints)
            try:
                return self._wait(stop, complaints)
            except BaseException:
                self.end(0)
                raise

    def end(self, until: float) -> None:
        """Waits until then (of the monotonic clock) for the daemon's end, and kills it if need be. What a daemon that
        was killed left behind goes: its identifier never comes again, so no later daemon would see to it."""
        if not self._process:
            return
        try:
            self._process.wait(max(0, until - time.monotonic()))
        except subprocess.TimeoutExpired:
            self._process.kill()
        if self._process.wait() < 0:
            for left in (self._path, os.path.splitext(self._path)[0] + ".lock"):
                with contextlib.suppress(OSError):
                    os.remove(left)

    def forget(self) -> None:
        """In the child of a fork: it is the parent's, and nobody here shall ask what became of it."""
        if self._process:
            self._process.returncode = 0

    def _start(self, complaints: IO[bytes]) -> None:
        identifier = os.path.splitext(os.path.basename(self._path))[0]
        try:
            self._process = subprocess.Popen(
                [self._program, "--private", identifier, "--learn", self._learn],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=complaints,
                env=None if has_display() else {**os.environ, "QT_QPA_PLATFORM": "offscreen"},
                start_new_session=True,  # so that Ctrl-C reaches this process only
            )
        except FileNotFoundError:
            raise OSError(f"there is no program {self._program}") from None

    def _wait(self, stop: threading.Event, complaints: IO[bytes]) -> Channel:
        assert self._process
        end = time.monotonic() + START_DEADLINE
        while self._process.poll() is None and time.monotonic() < end and not stop.wait(0.01):
            try:
                return Channel.connect(self._path)
            except (FileNotFoundError, ConnectionRefusedError):
                pass
        raise OSError(self._failure(complaints))

    def _failure(self, complaints: IO[bytes]) -> str:
        assert self._process
        if self._process.returncode is None:
            return f"{self._program} does not come up"
        complaints.seek(0)
        said = complaints.read(4096).decode("utf-8", "replace").strip().split("\n")
        # With status 1 or 2 its last word is the reason; the toolkit's own end begins with it.
        reason = said[-1 if self._process.returncode in (1, 2) else 0]
        return reason or f"{self._program} ended with status {self._process.returncode}"


def learned_name(name: str) -> str:
    """A name for what is learned that cannot leave its folder; the same that progressctl makes of it."""
    safe = re.sub(r"[\x00-\x1f\x7f/]|^\.", "_", name)
    return safe.encode("utf-8", "replace")[:_LONGEST_NAME].decode("utf-8", "ignore")
