"""The window, and the loop in a window."""

from __future__ import annotations

import atexit
import contextlib
import math
import os
import sys
import threading
import time
import warnings
from types import TracebackType
from typing import Iterable, Optional, TypeVar, Union

from .courier import Courier
from .daemon import START_DEADLINE, Daemon
from .loops import Loop
from .terminal import Line, has_display, write
from .widgets import PERCENT, Bar, Button, Question, Text
from .words import box, button_name, configuration, words_of

T = TypeVar("T")

_LOOK = 0.25  # seconds between two looks whether who should answer is still there

#: Those of this process; in the child of a fork, of its parent too.
open_windows: list[Progress] = []


class Cancelled(Exception):
    """The user has clicked on Cancel or closed the window, and the program asked to be told."""


class Progress:
    """A progress window, to be used with `with`; at its end everything that it shows goes.

    Without a display a line on standard error takes its place, which tells the same. Without a daemon there is one
    warning (RuntimeWarning), and everything else does nothing. Nothing but `ask()` waits for the daemon or the user.
    The window stays with the process that made it: in the child of a fork all this does nothing either.

    There is room for ten bars and texts, and for ten buttons; beyond that nothing is shown.

    title: the window's; by default the script's name.
    cancel: True or a label for a Cancel button; then a click on it, or closing the window, has the next step in the
        window (of `track()`, `update()`, ...) raise `Cancelled`, and every one after it.
    daemon: the identifier of a daemon that runs; by default one is started, and ends with the window.
    program: the daemon's program; by default that of the environment's PROGRESSD, else "progressd".
    learn: the name under which a daemon of one's own learns how long this takes; by default the title, "" for not
        at all. What has an end by an exception or `break` is not learned.
    settings: further ones, such as "windowTheme=dark;windowText=white|white". A daemon of one's own gets them behind
        the usual looks and the title, one that is named gets nothing else.
    notify: a desktop notification tells the end of work that took longer than 10 s, if nobody was looking.
    """

    __slots__ = ("daemon", "_title", "_courier", "_cancel_button", "_cancel_askers", "_loops")

    def __init__(
        self,
        title: object = "",
        *,
        cancel: Union[bool, str] = False,
        daemon: Optional[str] = None,
        program: Optional[str] = None,
        learn: Optional[str] = None,
        settings: str = "",
        notify: bool = False,
    ) -> None:
        self.daemon = daemon
        name = _first(title, _script())
        self._title = name or "Python"
        way = Daemon(daemon, program, name if learn is None else words_of(learn))
        line = None
        if way.is_private:
            settings = f"{configuration(self._title, notify)};{settings}"
            line = None if has_display() else Line()
        self._courier = Courier(way, settings, line)
        self._cancel_button: Optional[Button] = None
        self._cancel_askers = 0
        #: How many use it, of a window that was opened for a loop and closes with the last one.
        self._loops: Optional[int] = None
        self._open()
        if cancel:
            self._offer_cancel(cancel)
        open_windows.append(self)

    def __enter__(self) -> Progress:
        return self

    def __exit__(
        self, kind: Optional[type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        self.close(is_failed=kind is not None)

    def close(self, is_failed: bool = False) -> None:
        """Takes the window away. A run that failed is not learned."""
        if self in open_windows:
            open_windows.remove(self)
            self._courier.leave(is_failed)
            self._warn_of_trouble()

    # What it shows.

    def bar(self, caption: object = "", total: Optional[float] = PERCENT, unit: object = "") -> Bar:
        """Shows a bar, which is full at `total`; it moves to and fro while that is None. Beyond ten bars and texts
        nothing is shown.

        With a total of your own the window shows how much of it is done, and the rate, in this unit ("files"; "B" for
        bytes); what remains is told from how long as much took before.
        """
        return self._courier.add(Bar(caption, total, unit, self.check))

    def text(self, text: object) -> Text:
        """Shows a line of text, or what `str()` makes of something else. Beyond ten bars and texts nothing is shown."""
        return self._courier.add(Text(text, self.check))

    def button(self, label: object) -> Button:
        """Shows a button. Beyond ten buttons nothing is shown."""
        return self._courier.add(Button(label))

    def track(
        self,
        iterable: Union[Iterable[T], int],
        description: object = "",
        total: Optional[float] = None,
        *,
        cancel: Union[bool, str] = False,
        disable: bool = False,
        desc: object = "",
        caption: object = "",
        unit: object = "",
    ) -> Loop[T]:
        """The items, with a bar in this window; see the function `track()`."""
        open_window = None if disable else lambda: self
        return Loop(iterable, _first(description, desc, caption), total, unit, cancel, open_window)

    write = staticmethod(write)

    # What the user wants.

    def check(self) -> None:
        """Raises `Cancelled` if that was asked for and the user wants it."""
        if self._courier.wants_out and self._cancel_button:
            raise Cancelled(self._title)

    def ask(
        self,
        text: object,
        *buttons: str,
        default: Optional[str] = None,
        icon: str = "question",
        title: object = None,
        timeout: Optional[float] = None,
    ) -> Optional[str]:
        """Shows a box and waits for the user's answer: the name of one of the buttons.

        buttons: one to ten of "ok", "yes", "no", "cancel", "retry", ... (`words.BUTTONS`); by default "ok".
        default: the one that Return presses.
        icon: "none", "information", "warning", "critical" or "question".
        timeout: in seconds; when they are over the box stays on the screen, unheard.

        None when there was no answer: the time is up, or there is no window (any more).
        """
        title = self._title if title is None else words_of(title)
        question = Question(box(icon, title, words_of(text), buttons or ("ok",), default))
        if self._courier.line:
            return None
        self._courier.questions.append(question)
        end = math.inf if timeout is None else time.monotonic() + timeout
        while self._courier.is_alive() and time.monotonic() < end:
            if question.is_answered.wait(min(_LOOK, max(0, end - time.monotonic()))):
                break
        return button_name(question.code)

    # Below the surface.

    def _open(self) -> None:
        try:
            if sys.is_finalizing():  # a thread would never come up
                raise RuntimeError("the interpreter is going")
            self._courier.start()
            self._courier.is_decided.wait(START_DEADLINE)
        except RuntimeError as trouble:  # no further thread to be had
            self._courier.trouble = str(trouble)
        except BaseException:
            self._courier.leave(is_failed=True)
            raise
        self._warn_of_trouble()

    def _warn_of_trouble(self) -> None:
        trouble, self._courier.trouble = self._courier.trouble, None
        if trouble is not None:
            _warn(f"going on without a progress window: {trouble}")

    def _offer_cancel(self, label: Union[bool, str]) -> None:
        with _sharing:
            self._cancel_askers += 1
            if not self._cancel_button:
                self._courier.wants_out = False
                self._cancel_button = self._courier.add(Button(label if isinstance(label, str) else "Cancel", cancels=True))

    def _withdraw_cancel(self) -> None:
        with _sharing:
            self._cancel_askers -= 1
            if self._cancel_button and not self._cancel_askers:
                self._cancel_button.remove()
                self._cancel_button = None

    def _let_go(self, is_failed: bool) -> None:
        """One loop less."""
        with _sharing:
            if self._loops is not None:
                self._loops -= 1
                if not self._loops:
                    self.close(is_failed)


def _first(*names: object) -> str:
    """The first of them that says anything."""
    return next(filter(None, map(words_of, names)), "")


def _script() -> str:
    name = os.path.basename(sys.argv[0]) if getattr(sys, "argv", None) else ""
    return "" if name in ("-c", "-m", "-") else name


def _warn(text: str) -> None:
    try:
        warnings.warn(text, RuntimeWarning, stacklevel=_callers_level())
    except Exception:  # as an error it would end the program that it only concerns
        with contextlib.suppress(Exception):  # there may be no standard error
            sys.stderr.write(f"{text}\n")


def _callers_level() -> int:
    """How far up the caller of this package is, for a warning that this function's caller gives."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back and frame.f_globals.get("__name__", "").split(".")[0] == __package__:
        level, frame = level + 1, frame.f_back
    return level


def track(
    iterable: Union[Iterable[T], int],
    description: object = "",
    total: Optional[float] = None,
    *,
    cancel: Union[bool, str] = False,
    disable: bool = False,
    desc: object = "",
    caption: object = "",
    unit: object = "",
    title: object = "",
    daemon: Optional[str] = None,
    program: Optional[str] = None,
    learn: Optional[str] = None,
    notify: bool = False,
) -> Loop[T]:
    """The items, one by one, with a window that shows how far they are. The loop runs in any case.

    iterable: the items; a number is as good as its range.
    description, desc, caption: three names of the bar's caption.
    total: how many there are; by default `len(iterable)`. The bar moves to and fro where that is unknown.
    cancel: True or a label for a Cancel button; then a click on it, or closing the window, raises `Cancelled` at the
        next item.
    disable: show nothing.
    unit: what is counted: "files", say; "B" for bytes.
    title: the window's; by default the description.
    daemon, program, learn, notify: as for `Progress`.

    A window that this process has open already (on the same daemon) is shared: loops within loops, and loops of
    several threads, are bars in one window.
    """
    name = _first(description, desc, caption)

    def open_window() -> Progress:
        with _sharing:
            window = next((window for window in open_windows if window.daemon == daemon), None)
            if window is None:
                window = Progress(_first(title, name), daemon=daemon, program=program, learn=learn, notify=notify)
                window._loops = 0
            if window._loops is not None:
                window._loops += 1
            return window

    return Loop(iterable, name, total, unit, cancel, None if disable else open_window)


#: Held while loops come to a window, or to its Cancel, and leave it.
_sharing = threading.RLock()


def _renew_lock() -> None:
    global _sharing
    _sharing = threading.RLock()


def _close_all() -> None:
    """What is open at the program's end was left, not finished."""
    for window in list(open_windows):
        window.close(is_failed=True)


os.register_at_fork(after_in_child=_renew_lock)
atexit.register(_close_all)
