"""What a window shows. Each thing knows how it shall look and what the daemon was told, and gives the difference."""

from __future__ import annotations

import heapq
import math
import os
import re
import threading
import time
from typing import Callable, Optional

from .words import plain, words_of

Check = Callable[[], None]

MOST_AMOUNT = 2**53
NO_SLOT = -1
PERCENT = float("100")  # the total of a bar that is told percents: by identity, since 100 may be an amount as well
_PULSES = -2  # as what a bar shows, beside its percent
_COUNT_EVERY = 0.25  # seconds; what changes more often cannot be read
_RATE_AFTER = 1.0  # seconds

#: Guards what is counted up by several threads.
_counting = threading.RLock()


class Widget:
    """Something in a slot. `_slot`, `_told` and `_news()` are the thread's that talks to the daemon; the rest
    anybody's."""

    __slots__ = ("_slot", "_told", "_is_wanted", "_words", "_check")

    _kind = "row"
    _creation, _removal = "create", "remove"
    _is_failed = False  # what goes with it has not come to its end

    def __init__(self, words: object, check: Check) -> None:
        self._words = words_of(words)
        self._slot: Optional[int] = None  # NO_SLOT when there was none left
        self._told: Optional[tuple[str, int]] = None
        self._is_wanted = True
        self._check = check

    def remove(self) -> None:
        """Takes it out of the window."""
        self._is_wanted = False

    def _label(self) -> str:
        """Its text, as it stands."""
        return self._words

    def _percent(self) -> int:
        return 0

    def _calm_count(self) -> str:
        """What is added to its text as time goes by."""
        return ""

    def _plain(self, text: str) -> str:
        return plain(text)

    def _has_slot(self) -> bool:
        return self._slot is not None and self._slot != NO_SLOT

    def _news(self) -> list[str]:
        """What the daemon must be told, taken as told."""
        text, percent = self._label(), self._percent()
        if self._told:  # not at first: in a grid, which shows what the row was made with, a count would stand still
            text = ", ".join(filter(None, (text, self._calm_count())))
        text = self._plain(text)
        news = []
        if self._told is None:
            news.append(f"{self._creation}:{self._slot};{text}")
        elif self._told[0] != text:
            news.append(f"updateText:{self._slot};{text}")
        if percent != (self._told[1] if self._told else 0):
            news.append(f"pulse:{self._slot}" if percent == _PULSES else f"update:{self._slot};{percent}")
        self._told = text, percent
        return news

    def _farewell(self) -> str:
        return f"{self._removal}:{self._slot}"


class Bar(Widget):
    """A bar. What it is told is shown at most 25 times a second.

    What is set to something that is no number is unknown: the bar moves to and fro.
    """

    __slots__ = ("_text", "_total", "_completed", "_is_pulsing", "_counts", "_unit", "_count", "_due", "_begin")

    def __init__(self, caption: object, total: object, unit: object, check: Check) -> None:
        super().__init__(caption, check)
        self._text = ""
        self._unit = words_of(unit)
        self._completed = 0.0
        self._is_pulsing = False
        self._count = ""
        self._due = 0.0  # on the monotonic clock, as the begin, which stands beside what was done by then
        self._begin: Optional[tuple[float, float]] = None
        self.total = total  # type: ignore[assignment]

    @property
    def caption(self) -> str:
        """What it is called; anything may be set."""
        return self._words

    @caption.setter
    def caption(self, caption: object) -> None:
        self._words = words_of(caption)

    @property
    def text(self) -> str:
        """What it is about just now, shown behind the caption; anything may be set."""
        return self._text

    @text.setter
    def text(self, text: object) -> None:
        self._text = words_of(text)

    @property
    def total(self) -> Optional[float]:
        """At how much it is full; None while that is unknown."""
        return self._total

    @total.setter
    def total(self, total: object) -> None:
        self._counts = total is not PERCENT
        known = _number(total)
        self._total = known if known is not None and known >= 0 else None

    @property
    def completed(self) -> float:
        """How much of the total is done."""
        return self._completed

    @completed.setter
    def completed(self, completed: object) -> None:
        known = _number(completed)
        self._is_pulsing = known is None
        if known is not None:
            self._completed = known

    value = completed  # the older name

    def advance(self, n: float = 1) -> None:
        """Counts up what is completed, from any thread. Raises Cancelled if that was asked for."""
        with _counting:
            self.completed = self._completed + (_number(n) or 0)
        self._check()

    def update(self, percent: float) -> None:
        """Shows this percent of the total. Raises Cancelled if that was asked for."""
        if self._total is None:
            self.total = PERCENT
        known = _number(percent)
        self.completed = math.nan if known is None else known * (self._total or 0) / 100  # no number: unknown
        self._check()

    def pulse(self) -> None:
        """Moves to and fro, until it is told how far it is. Raises Cancelled if that was asked for."""
        self._is_pulsing = True
        self._check()

    def _label(self) -> str:
        return ": ".join(filter(None, (self._words, self._text)))

    def _plain(self, text: str) -> str:
        # A character without a width keeps the daemon from reading "%p", "%v" and "%m" as numbers of the bar.
        return plain(re.sub("%(?=[pvm])", "%\u200b", text))

    def _percent(self) -> int:
        total = self._total
        if self._is_pulsing or total is None:
            return _PULSES
        return int(max(0.0, min(100.0, 100 * self._completed / total))) if total else 100

    def _calm_count(self) -> str:
        """No newer than can be read."""
        now = time.monotonic()
        if now >= self._due:
            self._due = now + _COUNT_EVERY
            self._count = self._counted()
        return self._count

    def _counted(self) -> str:
        """"12 of 40 files, 3.1/s"."""
        total, done, unit, now = self._total, self._completed, self._unit, time.monotonic()
        begin, done_before = self._begin = self._begin or (now, done)
        if not self._counts or not (total or done):
            return ""
        count = f"{_amount(done, unit, total)} of {_amount(total, unit)}" if total else _amount(done, unit)
        if unit and unit != "B":
            count += f" {unit}"
        rate = (done - done_before) / (now - begin) if now - begin >= _RATE_AFTER else 0
        return f"{count}, {_amount(rate, unit)}/s" if rate >= 1 else count

    def _known_amount(self) -> int:
        """What it adds to the window's amount; 0 for none."""
        total = self._total
        return int(total) if self._counts and total and total <= MOST_AMOUNT else 0


class Text(Widget):
    """A line of text."""

    __slots__ = ()

    _creation, _removal = "addText", "delText"

    def update(self, text: object) -> None:
        """Shows another text, or what `str()` makes of something else. Raises Cancelled if that was asked for."""
        self._words = words_of(text)
        self._check()


class Button(Widget):
    """A button. "&" in its label marks the letter that presses it."""

    __slots__ = ("_cancels", "_clicks", "_seen")

    _kind = "button"
    _creation, _removal = "addButt", "delButt"

    def __init__(self, label: object, cancels: bool = False) -> None:
        super().__init__(label, lambda: None)
        self._cancels = cancels
        self._clicks = self._seen = 0

    @property
    def clicks(self) -> int:
        """How often it was clicked so far."""
        return self._clicks

    def clicked(self) -> bool:
        """Whether it was clicked since this was last asked."""
        seen, self._seen = self._seen, self._clicks
        return seen != self._seen


class Question:
    """A box that waits for its answer."""

    def __init__(self, payload: str) -> None:
        self.payload = payload
        self.number: Optional[int] = None  # on the channel, once it was asked
        self.code: Optional[int] = None
        self.is_answered = threading.Event()


class Slots:
    """Slots that were claimed: each has room for a row and for a button."""

    def __init__(self, claim: Callable[[], int]) -> None:
        self._claim = claim
        self._free: dict[str, list[int]] = {"row": [], "button": []}

    def take(self, kind: str) -> int:
        """The lowest slot whose row or button is free; NO_SLOT when there is none."""
        if not self._free[kind]:
            slot = self._claim()
            if slot == NO_SLOT:
                return NO_SLOT
            for free in self._free.values():
                heapq.heappush(free, slot)
        return heapq.heappop(self._free[kind])

    def give_back(self, widget: Widget) -> None:
        if widget._slot is not None:
            heapq.heappush(self._free[widget._kind], widget._slot)


def _number(thing: object) -> Optional[float]:
    """None for what is no number, or one with which nothing can be reckoned."""
    try:
        number = float(thing)  # type: ignore[arg-type]
    except Exception:
        return None
    return number if abs(number) < 1e300 else None


def _amount(amount: float, unit: str, beside: float = 0) -> str:
    """"1200", "3.1"; of bytes "1.2 GB", without the unit where it stands beside a total."""
    if unit != "B":
        return f"{amount:.0f}" if amount >= 100 or amount == int(amount) else f"{amount:.1f}"
    power = min(5, int(math.log10(max(beside or amount, 1)) / 3))
    scaled = amount / 1000**power
    digits = f"{scaled:.1f}" if power else f"{scaled:.0f}"
    return digits if beside else f"{digits} {['B', 'kB', 'MB', 'GB', 'TB', 'PB'][power]}"


def _renew_lock() -> None:
    """In the child of a fork: who held it may have stayed with the parent."""
    global _counting
    _counting = threading.RLock()


os.register_at_fork(after_in_child=_renew_lock)
