"""The daemon behind a window: one that runs already, or one of this process's own."""

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


class Daemon:
    """Without an identifier it is one for this client alone, which ends when the client has gone."""

    def __init__(self, identifier: Optional[str], program: Optional[str], learn: str) -> None:
        self.is_private = identifier is None
        self._identifier = f"python-{os.getpid()}-{secrets.token_hex(4)}" if identifier is None else identifier
        self._program = program or os.environ.get("PROGRESSD") or "progressd"
        self._learn = _learned_name(learn)
        self._process: Optional[subprocess.Popen[bytes]] = None

    def connect(self, stop: threading.Event) -> Channel:
        """Starts it, if it is one's own, and waits until it takes a connection, it ends, or `stop` is set."""
        path = socket_path(self._identifier)
        if not self.is_private:
            with contextlib.suppress(FileNotFoundError, ConnectionRefusedError):
                return Channel.connect(path)
            raise OSError(f"no daemon answers at {path}")
        with tempfile.TemporaryFile() as complaints:
            self._process = self._start(complaints)
            try:
                end = time.monotonic() + START_DEADLINE
                while self._process.poll() is None and time.monotonic() < end and not stop.wait(0.01):
                    with contextlib.suppress(FileNotFoundError, ConnectionRefusedError):
                        return Channel.connect(path)
                raise OSError(self._failure(self._process.returncode, complaints))
            except BaseException:
                self.end(0)
                raise

    def end(self, until: float) -> None:
        """Waits until then (of the monotonic clock) for the end of one's own, and kills it if need be. What one that
        was killed left behind goes: its identifier never comes again, so no later daemon would see to it."""
        if not self._process:
            return
        try:
            self._process.wait(max(0, until - time.monotonic()))
        except subprocess.TimeoutExpired:
            self._process.kill()
        if self._process.wait() < 0:
            for suffix in ("sock", "lock"):
                with contextlib.suppress(OSError):
                    os.remove(socket_path(self._identifier)[:-4] + suffix)

    def forget(self) -> None:
        """In the child of a fork: it is the parent's, and nobody here shall ask what became of it."""
        if self._process:
            self._process.returncode = 0

    def _start(self, complaints: IO[bytes]) -> subprocess.Popen[bytes]:
        try:
            return subprocess.Popen(
                [self._program, "--private", self._identifier, "--learn", self._learn],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=complaints,
                env=None if has_display() else {**os.environ, "QT_QPA_PLATFORM": "offscreen"},
                start_new_session=True,  # so that Ctrl-C reaches this process only
            )
        except FileNotFoundError:
            raise OSError(f"there is no program {self._program}") from None

    def _failure(self, status: Optional[int], complaints: IO[bytes]) -> str:
        if status is None:
            return f"{self._program} does not come up"
        complaints.seek(0)
        said = complaints.read(4096).decode("utf-8", "replace").strip().split("\n")
        # With status 1 or 2 its last word is the reason; the toolkit's own end begins with it.
        return said[-1 if status in (1, 2) else 0] or f"{self._program} ended with status {status}"


def _learned_name(name: str) -> str:
    """A name for what is learned that cannot leave its folder; the same that progressctl makes of it."""
    safe = re.sub(r"[\x00-\x1f\x7f/]|^\.", "_", name)
    return safe.encode("utf-8", "replace")[:_LONGEST_NAME].decode("utf-8", "ignore")
