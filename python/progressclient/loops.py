"""A window around a loop."""

from __future__ import annotations

import os
import threading
from contextlib import contextmanager
from typing import Iterable, Iterator, Optional, TypeVar, Union

from .progress import Progress, open_windows

T = TypeVar("T")

#: Windows that were opened for a loop, with how many loops use them.
_users: dict[Progress, int] = {}
_sharing = threading.RLock()


def track(
    items: Iterable[T],
    caption: str = "",
    total: Optional[float] = None,
    *,
    cancel: Union[bool, str] = False,
    title: str = "",
    daemon: Optional[str] = None,
    program: Optional[str] = None,
    learn: Optional[str] = None,
) -> Iterator[T]:
    """The items, one by one, with a window that shows how far they are. The loop runs in any case.

    caption: the bar's.
    total: how many there are; by default `len(items)`. The bar moves to and fro where that is unknown.
    cancel: True or a label for a Cancel button; then a click on it, or closing the window, raises `Cancelled` at the
        next item.
    title: the window's; by default the caption.
    daemon, program, learn: as for `Progress`.

    A window that this process has open already (on the same daemon) is shared: loops within loops, and loops of
    several threads, are bars in one window.
    """
    with _shared_window(title or caption, daemon, program, learn) as window:
        yield from window.track(items, caption, total, cancel=cancel)


@contextmanager
def _shared_window(
    title: str, daemon: Optional[str], program: Optional[str], learn: Optional[str]
) -> Iterator[Progress]:
    """A window that is open already, else one that closes with the last loop that uses it."""
    with _sharing:
        window = next((window for window in open_windows if window.daemon == daemon), None)
        if window is None:
            window = Progress(title, daemon=daemon, program=program, learn=learn)
            _users[window] = 0
        if window in _users:
            _users[window] += 1
    is_failed = True
    try:
        yield window
        is_failed = False
    finally:
        _leave(window, is_failed)


def _leave(window: Progress, is_failed: bool) -> None:
    with _sharing:
        if window not in _users:
            return
        _users[window] -= 1
        if not _users[window]:
            del _users[window]
            window.close(is_failed)


def _renew_lock() -> None:
    global _sharing
    _sharing = threading.RLock()


os.register_at_fork(after_in_child=_renew_lock)
