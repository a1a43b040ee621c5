"""What a window shows. Each thing knows how it shall look and what the daemon was told, and gives the difference."""

from __future__ import annotations

import threading
from typing import Callable, Optional

Check = Callable[[], None]

NO_SLOT = -1
_PULSES = -2  # as what a bar shows, beside its percent


def plain(text: object, kind: str = "progress") -> str:
    """What an object reads, as a text that does not end a message of this kind: a character without a width stands
    within what would be the end."""
    return str(text).replace("\0", "").replace(f"</{kind}>", f"</\u200b{kind}>")


class Widget:
    """Something in a slot. `next_command()` is the thread's that talks to the daemon; the rest anybody's."""

    kind = "row"

    def __init__(self) -> None:
        #: Given by the thread; NO_SLOT when there was none left.
        self.slot: Optional[int] = None
        #: False when it shall go.
        self.is_wanted = True
        self._is_created = False

    def remove(self) -> None:
        """Takes it out of the window."""
        self.is_wanted = False

    def has_slot(self) -> bool:
        return self.slot is not None and self.slot != NO_SLOT

    def next_command(self) -> Optional[str]:
        """What the daemon must be told next, taken as told; None when it knows everything."""
        if not self._is_created:
            self._is_created = True
            return self._creation()
        return self._change()

    def removal(self) -> str:
        return f"remove:{self.slot}"

    def _creation(self) -> str:
        raise NotImplementedError

    def _change(self) -> Optional[str]:
        return None


class Bar(Widget):
    """A bar. `value` may be set or counted up freely: it is shown at most 25 times a second."""

    def __init__(self, caption: object, total: Optional[float], check: Check) -> None:
        super().__init__()
        self._caption = plain(caption)
        self._total = float(total) if total is not None else None
        self._check = check
        self._shown = 0
        self.value: float = 0
        self.is_pulsing = self._total is None

    def update(self, value: float) -> None:
        """Shows this much of the total. Raises Cancelled if that was asked for."""
        self.value = float(value)
        self.is_pulsing = self._total is None
        self._check()

    def pulse(self) -> None:
        """Moves to and fro, until the next `update()`."""
        self.is_pulsing = True
        self._check()

    def _creation(self) -> str:
        return f"create:{self.slot};{self._caption}"

    def _change(self) -> Optional[str]:
        wanted = self._percent()
        if wanted == self._shown:
            return None
        self._shown = wanted
        return f"pulse:{self.slot}" if wanted == _PULSES else f"update:{self.slot};{wanted}"

    def _percent(self) -> int:
        if self.is_pulsing or self._total is None:
            return _PULSES
        share = self.value / self._total if self._total else 1
        return int(max(0.0, min(100.0, 100 * share)))


class Text(Widget):
    """A line of text."""

    def __init__(self, text: object, check: Check) -> None:
        super().__init__()
        self._text = self._shown = plain(text)
        self._check = check

    def update(self, text: object) -> None:
        """Shows another text, or what `str()` makes of something else. Raises Cancelled if that was asked for."""
        self._text = plain(text)
        self._check()

    def removal(self) -> str:
        return f"delText:{self.slot}"

    def _creation(self) -> str:
        self._shown = self._text
        return f"addText:{self.slot};{self._shown}"

    def _change(self) -> Optional[str]:
        if self._text == self._shown:
            return None
        self._shown = self._text
        return f"updateText:{self.slot};{self._shown}"


class Button(Widget):
    """A button. "&" in its label marks the letter that presses it."""

    kind = "button"

    def __init__(self, label: object, cancels: bool = False) -> None:
        super().__init__()
        self._label = plain(label)
        self.cancels = cancels
        #: How often it was clicked so far.
        self.clicks = 0
        self._seen = 0

    def clicked(self) -> bool:
        """Whether it was clicked since this was last asked."""
        seen, self._seen = self._seen, self.clicks
        return seen != self._seen

    def removal(self) -> str:
        return f"delButt:{self.slot}"

    def _creation(self) -> str:
        return f"addButt:{self.slot};{self._label}"


class Question:
    """A box that waits for its answer."""

    def __init__(self, payload: str) -> None:
        self.payload = payload
        #: Its number on the channel, once it was asked.
        self.number: Optional[int] = None
        self.code: Optional[int] = None
        self.is_answered = threading.Event()

    def take_answer(self, code: int) -> None:
        self.code = code
        self.is_answered.set()


class Slots:
    """Slots that were claimed: each has room for a row and for a button."""

    def __init__(self, claim: Callable[[], int]) -> None:
        self._claim = claim
        self._free: dict[str, list[int]] = {"row": [], "button": []}

    def take(self, kind: str) -> int:
        """A slot whose row or button is free; NO_SLOT when there is none."""
        if not self._free[kind]:
            slot = self._claim()
            if slot == NO_SLOT:
                return NO_SLOT
            for free in self._free.values():
                free.append(slot)
        self._free[kind].sort()
        return self._free[kind].pop(0)

    def give_back(self, widget: Widget) -> None:
        if widget.slot is not None:
            self._free[widget.kind].append(widget.slot)
