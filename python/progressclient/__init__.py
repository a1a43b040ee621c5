"""Progress windows for Python programs, drawn by the daemon `progressd`.

    from progressclient import track, Progress

    for path in track(paths, "Copying"):
        copy(path)

    with Progress("Backup", cancel=True) as window:
        bar = window.bar("Files")
        bar.update(50)

`Channel` is the wire below it, for tests and other clients.
"""

from .channel import Channel, message
from .loops import track
from .place import socket_path
from .progress import Cancelled, Progress
from .widgets import Bar, Button, Text

__all__ = ["Bar", "Button", "Cancelled", "Channel", "Progress", "Text", "message", "socket_path", "track"]
