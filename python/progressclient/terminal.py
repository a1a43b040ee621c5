"""One line in place of a window, where there is no display."""

from __future__ import annotations

import itertools
import os
import re
import sys
import threading
import time
import unicodedata
import weakref
from typing import Mapping, Optional, TextIO

_REDRAWN_EVERY = 0.1  # seconds
_BAR_WIDTH = 20  # columns
_LEAST_LABEL = 10  # columns that it keeps beside the rest, if it needs them
_CONTROL = re.compile(r"[\x00-\x1f\x7f-\x9f\u2028-\u202e\u2066-\u2069]")

#: Held while something is written, so that the line and what `write()` prints take turns.
_writing = threading.RLock()
_lines: weakref.WeakSet[Line] = weakref.WeakSet()


def has_display() -> bool:
    """The last one says that the user knows better."""
    return any(os.environ.get(name) for name in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"))


class Line:
    """On a terminal a line that is redrawn; elsewhere a line whenever the text changes, and each 10 percent.

    Belongs to one thread, but for `erase()`. What it cannot write is left out.
    """

    def __init__(self) -> None:
        self._stream: Optional[TextIO] = sys.stderr
        self._is_redrawn = _is_terminal(sys.stderr)
        self._tells_terminal = self._is_redrawn and takes_progress(os.environ)
        self._due = 0.0
        self._time = CalmTime()
        self._shown = ""
        self._told: tuple[str, Optional[int]] = ("", None)
        with _writing:
            _lines.add(self)

    def show(self, label: str, count: str, percent: Optional[int], seconds: int) -> None:
        """percent: None while unknown. seconds: what remains; -1 while unknown."""
        label, count = _CONTROL.sub(" ", label), _CONTROL.sub(" ", count)
        time_left = self._time.text(seconds, time.monotonic())
        left = ", ".join(filter(None, (f"{percent} %", time_left))) if percent is not None else ""
        if self._is_redrawn:
            self._redraw(label, count, percent, left)
        elif self._is_worth_telling(label, percent):
            self._write(_joined(label, left) + "\n")

    def erase(self) -> bool:
        """Until it is shown anew. False if it was not."""
        was_shown, self._shown = self._shown, ""
        if was_shown:
            self._due = 0.0
            self._write("\r\x1b[K")
        return bool(was_shown)

    def close(self) -> None:
        with _writing:
            self.erase()
            if self._tells_terminal:
                self._write(progress_sequence(0, 0))

    def _redraw(self, label: str, count: str, percent: Optional[int], left: str) -> None:
        now = time.monotonic()
        if now < self._due:
            return
        bar = "" if percent is None else f"[{'#' * (percent * _BAR_WIDTH // 100):-<{_BAR_WIDTH}}]"
        with _writing:
            line = _fitted(label, count, bar, left, _columns(self._stream) - 1)  # the last column would wrap
            if line == self._shown:
                return
            self._due = now + _REDRAWN_EVERY
            self._shown = line
            sequence = progress_sequence(3 if percent is None else 1, percent or 0) if self._tells_terminal else ""
            self._write(f"\r{line}\x1b[K{sequence}")

    def _is_worth_telling(self, label: str, percent: Optional[int]) -> bool:
        tenth = None if percent is None else percent // 10
        if (label, tenth) == self._told or not (label or tenth):
            return False
        self._told = label, tenth
        return True

    def _write(self, text: str) -> None:
        if not self._stream:
            return
        try:
            with _writing:
                self._stream.write(text)
                self._stream.flush()
        except Exception:  # hung up, full, closed, or the program's own and odd
            self._stream = None


def write(*values: object, sep: str = " ", end: str = "\n", file: Optional[TextIO] = None) -> None:
    """Prints as `print()` does, without disturbing the line that stands in for a window on a terminal."""
    with _writing:
        erased = [line for line in _lines if line.erase()]
        print(*values, sep=sep, end=end, file=file, flush=bool(erased))


def takes_progress(environment: Mapping[str, str]) -> bool:
    """Whether the terminal is known to take the sequence for progress."""
    version = environment.get("VTE_VERSION", "")
    return (
        environment.get("TERM_PROGRAM") in ("WezTerm", "ghostty")
        or bool(environment.get("WT_SESSION"))
        or environment.get("ConEmuANSI") == "ON"
        or (version.isdecimal() and int(version) >= 7900)
        or re.search("P(?![a-z])", environment.get("TERM_FEATURES", "")) is not None  # a feature is a capital and more
    )


def progress_sequence(state: int, percent: int) -> str:
    """State 0 takes it away, 1 shows the percent, 3 that something goes on."""
    return f"\x1b]9;4;{state};{percent}\x1b\\"


class CalmTime:
    """What remains, for eyes that rest on it, as the daemon's windows show it: seconds below a minute, tens of them
    below ten minutes, then minutes. It changes no more often than such a unit, and grows only by two of them at least."""

    def __init__(self) -> None:
        self._shown = -1
        self._since = self._fell = 0.0

    def text(self, seconds: int, now: float) -> str:
        """Empty while nothing is known (-1), and for what has stood for longer than it says."""
        unit = _calm_unit(seconds)
        rounded = (seconds + unit // 2) // unit * unit
        is_soon = now - self._since < min(unit, _calm_unit(self._shown)) - 0.5  # no daemon ticks like a clock
        is_neighbour = self._shown <= rounded < self._shown + 2 * _calm_unit(rounded)
        if min(seconds, self._shown) < 0 or not (is_soon or is_neighbour):
            if self._shown < 0 or rounded < self._shown:
                self._fell = now
            self._shown, self._since = rounded, now
        return "" if now - self._fell > self._shown + 1 else remaining(self._shown)


def remaining(seconds: int) -> str:
    """Of a calm time."""
    if seconds < 0:
        return ""
    if seconds < 60:
        return f"{seconds} s left"
    if seconds < 600:
        return f"{seconds // 60} min {seconds % 60} s left"
    hours, minutes = divmod(seconds // 60, 60)
    return (f"{hours} h " if hours else "") + f"{minutes} min left"


def _calm_unit(seconds: int) -> int:
    return 1 if seconds < 60 else 10 if seconds < 600 else 60


def _is_terminal(stream: Optional[TextIO]) -> bool:
    try:
        return stream is not None and stream.isatty() and os.environ.get("TERM") != "dumb"
    except Exception:
        return False


def _columns(stream: Optional[TextIO]) -> int:
    try:
        return os.get_terminal_size(stream.fileno()).columns or 80 if stream else 80
    except Exception:
        return 80


def _joined(*parts: str) -> str:
    return " ".join(filter(None, parts))


def _fitted(label: str, count: str, bar: str, left: str, columns: int) -> str:
    """As much as has room: what says least goes first. A line that wraps could not be redrawn."""
    room = columns - min(_width(label), _LEAST_LABEL) - 1
    choices = (_joined(count, bar, left), _joined(count, left), left)
    rest = next((rest for rest in choices if _width(rest) <= room), left)
    return _cut(_joined(_cut(label, columns - _width(rest) - 1).rstrip(), rest), columns)


def _width(text: str) -> int:
    """In columns."""
    return sum(map(_letter_width, text))


def _cut(text: str, columns: int) -> str:
    return text[: sum(width <= columns for width in itertools.accumulate(map(_letter_width, text)))]


def _letter_width(letter: str) -> int:
    return 0 if unicodedata.combining(letter) else 2 if unicodedata.east_asian_width(letter) in "WF" else 1


def _forget_lines() -> None:
    """In the child of a fork: the line stays with the parent, and so may who holds the lock."""
    global _writing
    _writing = threading.RLock()
    _lines.clear()


os.register_at_fork(after_in_child=_forget_lines)
