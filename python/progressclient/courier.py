"""The thread that does all the talking with the daemon, so that nothing the daemon does holds up the program."""

from __future__ import annotations

import os
import threading
import time
import weakref
from typing import Optional, TypeVar

from .channel import DEADLINE, Channel
from .daemon import Daemon
from .terminal import Line
from .widgets import MOST_AMOUNT, Bar, Button, Question, Slots, Widget
from .words import words_of

W = TypeVar("W", bound=Widget)

TICK = 0.04  # seconds between two looks at what shall be shown
_GIVE_UP = "messageStart"  # a run across which it comes is not learned; it hides the window, too
_READS_A_TICK = 16  # of 64 KiB, so that a daemon that floods us does not keep us


class Courier(threading.Thread):
    """Looks 25 times a second at what the window shall show, tells the daemon the difference, and hears the events.

    A thread, because a loop may be quick now and slow in a moment: whoever looks only between two items would leave
    what the quick ones did unshown for as long as the slow one takes. It also keeps the wire's state away from
    Ctrl-C, which only ever interrupts the main thread. The others leave word in plain attributes and lists.
    """

    def __init__(self, daemon: Daemon, settings: str, line: Optional[Line]) -> None:
        """line: what is drawn where nobody sees the window, whether or not there is a daemon."""
        super().__init__(name="progressclient", daemon=True)
        self._daemon = daemon
        self._settings = settings
        self.line = line
        self._seconds = -1  # that remain, as the daemon says
        self._amounts = Amounts()
        self._leave = threading.Event()
        self._is_failed = False
        self._channel: Optional[Channel] = None
        #: Set as soon as it is known whether there is a window.
        self.is_decided = threading.Event()
        #: Why there is no window (any more); None while all is well.
        self.trouble: Optional[str] = None
        #: The user has closed the window or clicked on a button that cancels.
        self.wants_out = False
        self.widgets: list[Widget] = []
        self.questions: list[Question] = []
        _couriers.add(self)

    def add(self, widget: W) -> W:
        """Shows it, if there is a window."""
        if self.is_alive():
            self.widgets.append(widget)
            self._amounts.note(self.widgets)
        return widget

    def leave(self, is_failed: bool) -> None:
        """Takes everything out of the window and waits until that is done, but not for long. A run that failed is
        not learned."""
        self._is_failed = is_failed
        self._leave.set()
        if self.is_alive() and self is not threading.current_thread():  # where a loop left behind may be collected
            self.join(DEADLINE + 1)

    def forget(self) -> None:
        """In the child of a fork: the thread has stayed with the parent, and so has the window."""
        if self._channel:
            self._channel.close()
        self._daemon.forget()
        self._leave = threading.Event()

    # The thread's own.

    def run(self) -> None:
        until = 0.0
        try:
            with self._daemon.connect(self._leave) as self._channel:
                self._talk(self._channel)
                until = time.monotonic() + DEADLINE
                self._say_goodbye(self._channel, until)
        except Exception as trouble:  # also what nobody has thought of: the program goes on
            self.trouble = None if self.line else words_of(trouble) or type(trouble).__name__
        finally:
            self.is_decided.set()
            if self.line:
                self._draw_to_the_end(self.line)
            self._daemon.end(until)

    def _talk(self, channel: Channel) -> None:
        channel.put("events")
        if self._settings:
            channel.put("configuration", self._settings)
        slots = Slots(channel.claim)
        self.is_decided.set()
        while True:
            self._hear(channel)
            self._show(channel, slots)
            if self.line:
                self._draw(self.line)
            if self._leave.wait(TICK):
                return

    def _draw_to_the_end(self, line: Line) -> None:
        """Also what the daemon's end has left of the work."""
        self._seconds = -1
        is_over = False
        while not is_over:
            is_over = self._leave.wait(TICK)
            for gone in [widget for widget in self.widgets if not widget._is_wanted]:
                self.widgets.remove(gone)
            self._draw(line)
        line.close()

    def _draw(self, line: Line) -> None:
        rows = [widget for widget in list(self.widgets) if widget._is_wanted and not isinstance(widget, Button)]
        bars = [bar for bar in rows if isinstance(bar, Bar)]
        percents = [percent for percent in (bar._percent() for bar in bars) if percent >= 0]
        line.show(
            "  ".join(filter(None, (row._label() for row in rows))),
            bars[-1]._counted() if bars else "",
            sum(percents) // len(percents) if percents else None,
            self._seconds,
        )

    def _say_goodbye(self, channel: Channel, until: float) -> None:
        """When the channel of a run that failed closes, its unfinished bars go with their slots, and the run is not
        learned. Full ones are finished no more."""
        shown = [widget for widget in self.widgets if widget._has_slot()]
        if self._is_failed:
            commands = [f"update:{bar._slot};0" for bar in shown if isinstance(bar, Bar)]
        else:
            commands = [command for widget in shown for command in widget._news()]
            commands += [widget._farewell() for widget in shown]
        self._tell(channel, commands)
        channel.finish(until - time.monotonic())

    def _show(self, channel: Channel, slots: Slots) -> None:
        """Tells the daemon as much as it takes; the rest, perhaps newer by then, is for the next time."""
        for widget in list(self.widgets):
            if not widget._is_wanted:
                self._remove(widget, channel, slots)
                continue
            if widget._slot is None:
                widget._slot = slots.take(widget._kind)
            if widget._has_slot() and channel.flush():
                self._tell(channel, widget._news())
        self._amounts.note(self.widgets)
        self._tell(channel, self._amounts.news())
        for question in self.questions:
            if question.number is None and channel.flush():
                question.number = channel.put("msgbox", question.payload)

    def _remove(self, widget: Widget, channel: Channel, slots: Slots) -> None:
        if widget._has_slot():
            if not channel.flush():
                return
            self._tell(channel, widget._news())
            is_last = not any(other._is_wanted and other._has_slot() for other in list(self.widgets))
            if widget._is_failed and is_last and self._daemon.is_private:
                self._tell(channel, [_GIVE_UP])
            self._tell(channel, [widget._farewell()])
            slots.give_back(widget)
        self.widgets.remove(widget)

    def _tell(self, channel: Channel, commands: list[str]) -> None:
        for command in commands:
            channel.put("progress", command)

    def _hear(self, channel: Channel) -> None:
        for _ in range(_READS_A_TICK):
            if not channel.receive():
                break
        while channel.events:
            self._take_event(channel.events.popleft())
        for question in list(self.questions):
            if question.number in channel.answers:
                question.code = channel.answers.pop(question.number)
                question.is_answered.set()
                self.questions.remove(question)
        if channel.ended:
            raise ConnectionError("the daemon has gone")

    def _take_event(self, event: str) -> None:
        if event == "closed":
            self.wants_out = True
        elif event.startswith("totalProgress="):
            self._seconds = int(event.partition("|")[2] or -1)
        for widget in self.widgets:
            if isinstance(widget, Button) and event == f"clicked:{widget._slot}":
                widget._clicks += 1
                self.wants_out = self.wants_out or widget._cancels


class Amounts:
    """How much there is to do in a window: the totals of its bars, as far as they have the unit of the first one.

    That the unit stays, also when its bar has gone, that a bar that goes takes nothing away, and that each one counts
    that ever came, keeps what loops in a loop tell from depending on the moment. When nothing is shown any more, the
    run is over, and this with it.
    """

    def __init__(self) -> None:
        self._noting = threading.RLock()
        self._unit: Optional[str] = None
        self._known: dict[Bar, int] = {}
        self._amount = self._told = 0

    def note(self, widgets: list[Widget]) -> None:
        """These are shown, as any thread may tell."""
        with self._noting:
            if not widgets:
                self._unit, self._known, self._amount, self._told = None, {}, 0, 0
            bars = [bar for bar in list(widgets) if isinstance(bar, Bar) and bar._is_wanted and bar._known_amount()]
            if bars and self._unit is None:
                self._unit = bars[0]._unit
            known = {bar: bar._known_amount() for bar in bars if bar._unit == self._unit}
            if any(self._known.get(bar) != amount for bar, amount in known.items()):
                self._amount = min(MOST_AMOUNT, sum(known.values()))
            self._known = known

    def news(self) -> list[str]:
        """What the daemon must be told, taken as told."""
        with self._noting:
            told, self._told = self._told, self._amount
            return [f"amount:{self._amount}"] if self._amount != told else []


_couriers: weakref.WeakSet[Courier] = weakref.WeakSet()


def _forget_all() -> None:
    for courier in list(_couriers):
        courier.forget()


os.register_at_fork(after_in_child=_forget_all)
