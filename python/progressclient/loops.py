"""A loop with its bar."""

from __future__ import annotations

from numbers import Integral
from types import TracebackType
from typing import TYPE_CHECKING, Callable, Generator, Generic, Iterable, Iterator, Optional, TypeVar, Union

from .widgets import Bar

if TYPE_CHECKING:
    from .progress import Progress

T = TypeVar("T")


class Loop(Bar, Generic[T]):
    """The items of a loop, and its bar: what `track()` gives.

    The window opens when the first item is asked for, or with `with`; it goes with the last item, `break`, an
    exception, or the end of `with`. When the items are gone through once more, nothing is shown.
    """

    __slots__ = ("_items", "_window", "_open", "_cancel", "_users", "_is_failed", "_steps")

    def __init__(
        self,
        items: Union[Iterable[T], int],
        caption: object,
        total: object,
        unit: object,
        cancel: Union[bool, str],
        open_window: Optional[Callable[[], Progress]],
    ) -> None:
        """open_window: None for a loop that shows nothing."""
        # Integral: also those of number libraries.
        self._items: Iterable[T] = range(items) if isinstance(items, Integral) else items  # type: ignore
        super().__init__(caption, _length(self._items) if total is None else total, unit, lambda: None)
        self._cancel = cancel
        self._window: Optional[Progress] = None
        self._open = open_window
        self._users = 0
        self._is_failed = False
        self._steps: Optional[Generator[T, None, None]] = None

    def __len__(self) -> int:
        """How many items there are, or the total that was given. Raises TypeError if neither is known."""
        length = _length(self._items)
        if length is None and self._total is None:
            raise TypeError("how many items there are is not known")
        return int(self._total or 0) if length is None else length

    def __bool__(self) -> bool:
        return True

    def __iter__(self) -> Iterator[T]:
        return self._steps or self._run()

    def __next__(self) -> T:
        self._steps = self._steps or self._run()
        return next(self._steps)

    def __enter__(self) -> Loop[T]:
        if self._open:
            show, self._open = self._open, None
            self._window = show()
            self._check = self._window.check
            self._window._courier.add(self)
            if self._cancel:
                self._window._offer_cancel(self._cancel)
        self._users += 1
        return self

    def __exit__(
        self, kind: Optional[type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        self._users -= 1
        self._is_failed = self._is_failed or kind is not None
        if not self._users:
            self._hide()

    def close(self) -> None:
        """Takes the bar away, and the window if nobody else uses it."""
        steps, self._steps = self._steps, None
        if steps:
            steps.close()
        self._hide()

    def _hide(self) -> None:
        window, self._window = self._window, None
        if window:
            if self._cancel:
                window._withdraw_cancel()
            window._let_go(self._is_failed)  # before the bar goes: a bar that was removed looks finished
            self.remove()

    def _run(self) -> Generator[T, None, None]:
        with self:
            if not self._window:
                yield from self._items
                return
            courier = self._window._courier
            for item in self._items:
                yield item
                self._completed += 1
                if courier.wants_out:
                    self._check()


def _length(items: object) -> Optional[int]:
    """None where it is not known, for whatever reason: the loop shall run all the same."""
    try:
        return len(items)  # type: ignore[arg-type]
    except Exception:
        return None
