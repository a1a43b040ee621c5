"""Progress windows for Python programs, drawn by the daemon `progressd`.

    from progressclient import track, Progress

    for path in track(paths, "Copying"):
        copy(path)

    with Progress("Backup", cancel=True) as window:
        bar = window.bar("Files")
        bar.update(50)

`Channel` is the wire below it, for tests and other clients.
"""

from .channel import Channel
from .loops import Loop
from .place import socket_path
from .progress import Cancelled, Progress, track
from .terminal import write
from .widgets import Bar, Button, Text
from .words import message

__all__ = [
    *("Bar", "Button", "Cancelled", "Channel", "Loop", "Progress", "Text"),
    *("message", "socket_path", "track", "write"),
]
