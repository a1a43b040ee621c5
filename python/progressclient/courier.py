"""The thread that does all the talking with the daemon, so that nothing the daemon does holds up the program."""

from __future__ import annotations

import os
import threading
import time
import weakref
from typing import Optional, Union

from .channel import DEADLINE, Channel
from .daemon import NamedDaemon, PrivateDaemon
from .widgets import Button, Question, Slots, Widget

TICK = 0.04  # seconds between two looks at what shall be shown
_READS_A_TICK = 16  # of 64 KiB, so that a daemon that floods us does not keep us


class Courier(threading.Thread):
    """Looks 25 times a second at what the window shall show, tells the daemon the difference, and hears the events.

    A thread, because a loop may be quick now and slow in a moment: whoever looks only between two items would leave
    what the quick ones did unshown for as long as the slow one takes. It also keeps the wire's state away from
    Ctrl-C, which only ever interrupts the main thread. The others leave word in plain attributes and lists.
    """

    def __init__(self, daemon: Union[NamedDaemon, PrivateDaemon], settings: str) -> None:
        super().__init__(name="progressclient", daemon=True)
        self._daemon = daemon
        self._settings = settings
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

    def leave(self, is_failed: bool) -> None:
        """Takes everything out of the window and waits until that is done, but not for long. A run that failed is
        not learned."""
        self._is_failed = is_failed
        self._leave.set()
        if self.is_alive():
            self.join(DEADLINE + 1)

    def forget(self) -> None:
        """In the child of a fork: the thread has stayed with the parent, and so has the window."""
        if self._channel:
            self._channel.close()
        self._leave = threading.Event()

    # The thread's own.

    def run(self) -> None:
        until = 0.0
        try:
            with self._daemon.connect(self._leave) as self._channel:
                self._talk(self._channel)
                until = time.monotonic() + DEADLINE
                self._say_goodbye(self._channel, until)
        except OSError as trouble:
            self.trouble = str(trouble)
        finally:
            self.is_decided.set()
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
            if self._leave.wait(TICK):
                return

    def _say_goodbye(self, channel: Channel, until: float) -> None:
        shown = [widget for widget in self.widgets if widget.has_slot()]
        commands = [widget.next_command() for widget in shown]
        if self._is_failed and self._daemon.is_private:
            commands.append("messageStart")  # the window goes, and the run is not learned
        for command in [*commands, *(widget.removal() for widget in shown)]:
            if command:
                channel.put("progress", command)
        channel.finish(until - time.monotonic())

    def _show(self, channel: Channel, slots: Slots) -> None:
        """Tells the daemon as much as it takes; the rest, perhaps newer by then, is for the next time."""
        for widget in list(self.widgets):
            if not widget.is_wanted:
                self._remove(widget, channel, slots)
                continue
            if widget.slot is None:
                widget.slot = slots.take(widget.kind)
            if widget.has_slot() and channel.flush() and (command := widget.next_command()):
                channel.put("progress", command)
        for question in self.questions:
            if question.number is None and channel.flush():
                question.number = channel.put("msgbox", question.payload)

    def _remove(self, widget: Widget, channel: Channel, slots: Slots) -> None:
        if widget.has_slot():
            if not channel.flush():
                return
            for command in filter(None, (widget.next_command(), widget.removal())):
                channel.put("progress", command)
            slots.give_back(widget)
        self.widgets.remove(widget)

    def _hear(self, channel: Channel) -> None:
        for _ in range(_READS_A_TICK):
            if not channel.receive():
                break
        while channel.events:
            self._take_event(channel.events.popleft())
        for question in list(self.questions):
            if question.number in channel.answers:
                question.take_answer(channel.answers.pop(question.number))
                self.questions.remove(question)
        if channel.ended:
            raise ConnectionError("the daemon has gone")

    def _take_event(self, event: str) -> None:
        if event == "closed":
            self.wants_out = True
        for widget in self.widgets:
            if isinstance(widget, Button) and event == f"clicked:{widget.slot}":
                widget.clicks += 1
                self.wants_out = self.wants_out or widget.cancels


_couriers: weakref.WeakSet[Courier] = weakref.WeakSet()


def _forget_all() -> None:
    for courier in _couriers:
        courier.forget()


os.register_at_fork(after_in_child=_forget_all)
