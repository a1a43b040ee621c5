"""The wire: one connection to a daemon's local socket, message by message."""

from __future__ import annotations

import collections
import math
import re
import select
import socket
import time
from typing import Callable, Optional, TypeVar

from .place import believe_path, believe_peer
from .words import BOXES, REPLIES, message

T = TypeVar("T")

DEADLINE = 5.0  # seconds, for whatever does not wait for a person

_KEPT_EVENTS = 65536
_LONGEST_MESSAGE = 65536  # bytes; the daemon's own are some dozens
_INCOMING = re.compile(rb"<(%s)>([^<]*)</\1>" % "|".join(REPLIES).encode())


class Channel:
    """One connection. Belongs to one thread at a time.

    Time-outs are in seconds; None waits for ever. When the time is up, TimeoutError is raised; when the daemon
    has hung up, ConnectionError. Both are OSErrors, as is everything else that can go wrong here.
    """

    def __init__(self, connection: socket.socket) -> None:
        """Takes over a connected socket."""
        connection.setblocking(False)
        self._socket = connection
        self._unsent = bytearray()
        self._unread = b""
        self._asked = 0
        self._claims: collections.deque[int] = collections.deque(maxlen=64)
        #: What was heard and not yet taken by `event()`; beyond 65,536 the oldest are lost.
        self.events: collections.deque[str] = collections.deque(maxlen=_KEPT_EVENTS)
        #: Answers that were not yet taken by `answer()`: number of the box to the code of its button.
        self.answers: dict[int, int] = {}
        #: True when the daemon has hung up.
        self.ended = False

    @classmethod
    def connect(cls, path: str, timeout: Optional[float] = DEADLINE) -> Channel:
        """Connects to the daemon at this path, if path and listener can be believed."""
        believe_path(path)
        end = _end(timeout)
        connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        try:
            _connect(connection, path, end)
            believe_peer(connection)
        except BaseException:
            connection.close()
            raise
        return cls(connection)

    def __enter__(self) -> Channel:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def fileno(self) -> int:
        return self._socket.fileno()

    def close(self) -> None:
        self._socket.close()

    # Sending.

    def send(self, kind: str, payload: Optional[str] = None, timeout: Optional[float] = DEADLINE) -> int:
        """Sends one message. Of a box ("assert", "msgbox") gives the number that its answer will carry, else 0."""
        number = self.put(kind, payload)
        self._drain(_end(timeout))
        return number

    def write(self, data: bytes, timeout: Optional[float] = DEADLINE) -> None:
        """Sends bytes as they are. When the time is up, the rest goes out before whatever is sent next."""
        self._unsent += data
        self._drain(_end(timeout))

    def put(self, kind: str, payload: Optional[str] = None) -> int:
        """Like `send()`, but never waits: what the daemon does not take now is left to `flush()`."""
        self._unsent += message(kind, payload)
        self._asked += kind in BOXES
        self.flush()
        return self._asked if kind in BOXES else 0

    def flush(self) -> bool:
        """Sends what `put()` left, as far as goes without waiting; True when nothing is left."""
        try:
            while self._unsent:
                del self._unsent[: self._socket.send(self._unsent, socket.MSG_NOSIGNAL)]
        except BlockingIOError:
            pass
        return not self._unsent

    def finish(self, timeout: Optional[float] = DEADLINE) -> None:
        """Ends the sending direction and waits for the daemon's hanging up: then everything was handled."""
        end = _end(timeout)
        self._drain(end)
        self._socket.shutdown(socket.SHUT_WR)
        while not self.ended:
            self._wait(select.POLLIN, end)
            self.receive()

    def _drain(self, end: float) -> None:
        while not self.flush():
            self._wait(select.POLLOUT, end)

    # Hearing.

    def listen(self, timeout: Optional[float] = DEADLINE) -> None:
        """Asks for the events from now on."""
        self.send("events", timeout=timeout)

    def event(self, timeout: Optional[float] = DEADLINE) -> str:
        """The next event, such as "clicked:3"."""
        return self._await(lambda: self.events.popleft() if self.events else None, _end(timeout))

    def answer(self, number: int, timeout: Optional[float] = None) -> int:
        """The code of the button that answered this box; 0 for none."""
        return self._await(lambda: self.answers.pop(number, None), _end(timeout))

    def claim(self, timeout: Optional[float] = DEADLINE) -> int:
        """Reserves a slot for as long as the channel is open; -1 when there is none.

        After a TimeoutError the answer may still come, and would be taken for the next one: close the channel.
        """
        end = _end(timeout)
        self.send("claim", timeout=timeout)
        return self._await(lambda: self._claims.popleft() if self._claims else None, end)

    def receive(self) -> bool:
        """Sorts what has come, at most 64 KiB of it, without waiting; False when there was nothing."""
        try:
            piece = self._socket.recv(65536)
        except BlockingIOError:
            return False
        except ConnectionResetError:
            piece = b""
        self.ended = not piece
        self._unread += piece
        self._sort()
        return bool(piece)

    def _sort(self) -> None:
        taken = 0
        for found in _INCOMING.finditer(self._unread):
            taken = found.end()
            self._take(found.group(1), found.group(2).decode("utf-8", "replace"))
        self._unread = self._unread[taken:]
        if len(self._unread) > _LONGEST_MESSAGE:
            raise ConnectionError("what answers there is no progress daemon")

    def _take(self, kind: bytes, text: str) -> None:
        try:
            if kind == b"event":
                self.events.append(text)
            elif kind == b"claimed":
                self._claims.append(int(text))
            else:
                number, code = map(int, text.split(";"))
                if 0 < number <= self._asked:
                    self.answers[number] = code
        except ValueError:
            raise ConnectionError(f"the daemon gives a strange answer: {text[:40]!r}") from None

    def _await(self, take: Callable[[], Optional[T]], end: float) -> T:
        while (found := take()) is None:
            if self.ended:
                raise ConnectionError("the daemon has hung up")
            self._wait(select.POLLIN, end)
            self.receive()
        return found

    def _wait(self, direction: int, end: float) -> None:
        poll = select.poll()
        poll.register(self._socket, direction)
        if not poll.poll(None if end == math.inf else max(0.0, end - time.monotonic()) * 1000):
            raise TimeoutError("the daemon does not answer")


def _connect(connection: socket.socket, path: str, end: float) -> None:
    while True:
        connection.settimeout(None if end == math.inf else max(0.001, end - time.monotonic()))
        try:
            return connection.connect(path)
        except BlockingIOError:  # so many wait already that nobody else may
            if time.monotonic() >= end:
                raise TimeoutError(f"the daemon at {path} does not answer") from None
            time.sleep(0.01)


def _end(timeout: Optional[float]) -> float:
    """On the monotonic clock."""
    return math.inf if timeout is None else time.monotonic() + timeout
