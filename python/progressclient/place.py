"""Where a daemon's local socket lies, and whether to believe what lies there."""

from __future__ import annotations

import os
import socket
import stat
import struct
from typing import Optional

_OTHERS = stat.S_IRWXG | stat.S_IRWXO


def socket_path(identifier: str) -> str:
    """The path of the socket of the daemon of this identifier, whether it runs or not.

    Raises ValueError for an empty identifier or one with a "/" or a zero character: it has no local socket.
    """
    if not identifier or "/" in identifier or "\0" in identifier:
        raise ValueError(f"no local socket for the identifier {identifier!r}")
    return os.path.join(_folder(), identifier + ".sock")


def believe_path(path: str) -> None:
    """Raises PermissionError unless the socket and its folder are this user's own, and the folder nobody else's."""
    folder = os.path.dirname(path)
    found = os.lstat(folder)
    if not stat.S_ISDIR(found.st_mode) or found.st_uid != os.geteuid() or found.st_mode & _OTHERS:
        raise PermissionError(f"{folder} is not a folder of this user alone")
    found = os.lstat(path)
    if not stat.S_ISSOCK(found.st_mode) or found.st_uid != os.geteuid():
        raise PermissionError(f"{path} is not a socket of this user")


def believe_peer(connection: socket.socket) -> None:
    """Raises PermissionError unless this user or root listens, by the kernel's word."""
    credentials = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, struct.calcsize("iII"))
    _, user, _ = struct.unpack("iII", credentials)
    if user not in (0, os.geteuid()):
        raise PermissionError(f"the daemon belongs to the user {user}")


def _folder() -> str:
    runtime = os.environ.get("XDG_RUNTIME_DIR", "")
    if os.path.isabs(runtime) and _own_mode(runtime) is not None:
        return os.path.join(runtime, "progressd")
    usual = f"/run/user/{os.geteuid()}"  # the variable is missing after su, in cron and in services
    if _own_mode(usual) == 0o700:
        return os.path.join(usual, "progressd")
    return f"/tmp/progressd-{os.geteuid()}"


def _own_mode(path: str) -> Optional[int]:
    """The permissions of a folder of this user; None for what is none."""
    try:
        found = os.stat(path)
    except OSError:
        return None
    is_own = stat.S_ISDIR(found.st_mode) and found.st_uid == os.geteuid()
    return found.st_mode & (stat.S_IRWXU | _OTHERS) if is_own else None
