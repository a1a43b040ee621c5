"""The window."""

from __future__ import annotations

import math
import os
import re
import sys
import time
import warnings
from types import TracebackType
from typing import Iterable, Iterator, Optional, TypeVar, Union

from .boxes import box_payload, button_name
from .courier import Courier
from .daemon import START_DEADLINE, NamedDaemon, PrivateDaemon
from .widgets import Bar, Button, Question, Text, Widget, plain

T = TypeVar("T")
W = TypeVar("W", bound=Widget)

_LOOK = 0.25  # seconds between two looks whether who should answer is still there

#: Those of this process; in the child of a fork, of its parent too.
open_windows: list[Progress] = []


class Cancelled(Exception):
    """The user has clicked on Cancel or closed the window, and the program asked to be told."""


class Progress:
    """A progress window, to be used with `with`; at its end everything that it shows goes.

    Without a display or a daemon there is one warning (RuntimeWarning), and everything else does nothing. Nothing
    but `ask()` waits for the daemon or the user. The window stays with the process that made it: in the child of a
    fork all this does nothing either.

    title: the window's; by default the script's name.
    cancel: True or a label for a Cancel button; then a click on it, or closing the window, has the next step in the
        window (of `track()`, `update()`, ...) raise `Cancelled`, and every one after it.
    daemon: the identifier of a daemon that runs; by default one is started, and ends with the window.
    program: the daemon's program; by default that of the environment's PROGRESSD, else "progressd".
    learn: the name under which a daemon of one's own learns how long this takes; by default the title, "" for not
        at all. What has an end by an exception or `break` is not learned.
    settings: further ones, such as "windowTheme=dark;windowText=white|white". A daemon of one's own gets them behind
        the usual looks and the title, one that is named gets nothing else.
    """

    def __init__(
        self,
        title: str = "",
        *,
        cancel: Union[bool, str] = False,
        daemon: Optional[str] = None,
        program: Optional[str] = None,
        learn: Optional[str] = None,
        settings: str = "",
    ) -> None:
        self.daemon = daemon
        self._title = title or _script() or "Python"
        self._has_warned = False
        if daemon is None:
            way = PrivateDaemon(program, (title or _script()) if learn is None else learn)
            self._courier = Courier(way, f"{_looks(self._title)};{settings}")
        else:
            self._courier = Courier(NamedDaemon(daemon), settings)
        self._cancel_button: Optional[Button] = None
        self._cancel_askers = 0
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

    def bar(self, caption: object = "", total: Optional[float] = 100) -> Bar:
        """Shows a bar, which is full at `total`; without one it moves to and fro."""
        return self._add(Bar(caption, total, self.check))

    def text(self, text: object) -> Text:
        """Shows a line of text, or what `str()` makes of something else."""
        return self._add(Text(text, self.check))

    def button(self, label: object) -> Button:
        """Shows a button."""
        return self._add(Button(label))

    def track(
        self,
        items: Iterable[T],
        caption: str = "",
        total: Optional[float] = None,
        *,
        cancel: Union[bool, str] = False,
    ) -> Iterator[T]:
        """The items, with a bar in this window; see the function `track()`."""
        courier = self._courier
        if cancel:
            self._offer_cancel(cancel)
        bar = self.bar(caption, _length(items) if total is None else total)
        try:
            for item in items:
                yield item
                bar.value += 1
                if courier.wants_out:
                    self.check()
        finally:
            bar.remove()
            if cancel:
                self._withdraw_cancel()

    # What the user wants.

    def check(self) -> None:
        """Raises `Cancelled` if that was asked for and the user wants it."""
        if self._courier.wants_out and self._cancel_button:
            raise Cancelled(self._title)

    def ask(
        self,
        text: str,
        *buttons: str,
        default: Optional[str] = None,
        icon: str = "question",
        title: Optional[str] = None,
        timeout: Optional[float] = None,
    ) -> Optional[str]:
        """Shows a box and waits for the user's answer: the name of one of the buttons.

        buttons: one to ten of "ok", "yes", "no", "cancel", "retry", ... (`boxes.BUTTONS`); by default "ok".
        default: the one that Return presses.
        icon: "none", "information", "warning", "critical" or "question".
        timeout: in seconds; when they are over the box stays on the screen, unheard.

        None when there was no answer: the time is up, or there is no window (any more).
        """
        title = self._title if title is None else title
        question = Question(box_payload(icon, title, text, buttons or ("ok",), default))
        self._courier.questions.append(question)
        end = math.inf if timeout is None else time.monotonic() + timeout
        while self._courier.is_alive() and time.monotonic() < end:
            if question.is_answered.wait(min(_LOOK, max(0, end - time.monotonic()))):
                break
        return button_name(question.code)

    # Below the surface.

    def _open(self) -> None:
        try:
            self._courier.start()
            self._courier.is_decided.wait(START_DEADLINE)
        except RuntimeError as trouble:  # no further thread to be had
            self._courier.trouble = str(trouble)
        except BaseException:
            self._courier.leave(is_failed=True)
            raise
        self._warn_of_trouble()

    def _warn_of_trouble(self) -> None:
        if self._courier.trouble is not None and not self._has_warned:
            self._has_warned = True
            text = f"going on without a progress window: {self._courier.trouble}"
            warnings.warn(text, RuntimeWarning, stacklevel=_callers_level())

    def _add(self, widget: W) -> W:
        if self._courier.is_alive():
            self._courier.widgets.append(widget)
        return widget

    def _offer_cancel(self, label: Union[bool, str]) -> None:
        self._cancel_askers += 1
        if not self._cancel_button:
            self._courier.wants_out = False
            self._cancel_button = self._add(Button(label if isinstance(label, str) else "Cancel", cancels=True))

    def _withdraw_cancel(self) -> None:
        self._cancel_askers -= 1
        if self._cancel_button and not self._cancel_askers:
            self._cancel_button.remove()
            self._cancel_button = None


def _length(items: object) -> Optional[int]:
    try:
        return len(items)  # type: ignore[arg-type]
    except (TypeError, AttributeError):
        return None


def _script() -> str:
    name = os.path.basename(sys.argv[0]) if getattr(sys, "argv", None) else ""
    return "" if name in ("-c", "-m", "-") else name


def _looks(title: str) -> str:
    """Settings; a title stands on one line, and the look-alike of ";" in its place, which would end the setting."""
    title = re.sub(r"[\x01-\x1f]", " ", plain(title, "configuration")).replace(";", "\u037e")
    return f"windowTheme=auto;windowLayout=fitted;estimate=adaptive;windowModal=off;windowTitle={title}"


def _callers_level() -> int:
    """How far up the caller of this package is, for a warning that this function's caller gives."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back and frame.f_globals["__name__"].split(".")[0] in (__package__, "contextlib"):
        level, frame = level + 1, frame.f_back
    return level
