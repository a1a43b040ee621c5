"""The payload of a box, and what its answers are called."""

from __future__ import annotations

from typing import Optional, Sequence

from .widgets import plain

ICONS = ("none", "information", "warning", "critical", "question")

#: The protocol's codes of the buttons, which are the toolkit's.
BUTTONS = {
    "ok": 0x400,
    "save": 0x800,
    "save-all": 0x1000,
    "open": 0x2000,
    "yes": 0x4000,
    "yes-to-all": 0x8000,
    "no": 0x10000,
    "no-to-all": 0x20000,
    "abort": 0x40000,
    "retry": 0x80000,
    "ignore": 0x100000,
    "close": 0x200000,
    "cancel": 0x400000,
    "discard": 0x800000,
    "help": 0x1000000,
    "apply": 0x2000000,
    "reset": 0x4000000,
    "restore-defaults": 0x8000000,
}
_DEFAULT = 0x100
_MOST_BUTTONS = 10


def box_payload(icon: str, title: str, text: str, buttons: Sequence[str], default: Optional[str]) -> str:
    """Raises ValueError for an icon or a button that there is not, a default that is none of the buttons, or more than
    ten buttons."""
    unknown = [name for name in buttons if name not in BUTTONS]
    if icon not in ICONS or unknown or len(buttons) > _MOST_BUTTONS:
        raise ValueError(f"no such box: icon {icon!r}, buttons {buttons!r}")
    if default is not None and default not in buttons:
        raise ValueError(f"{default!r} is none of the buttons")
    codes = [str(BUTTONS[name] | (_DEFAULT if name == default else 0)) for name in buttons]
    return "[#]".join([str(ICONS.index(icon)), _field(title), _field(text), *codes])


def button_name(code: Optional[int]) -> Optional[str]:
    """The name of the button of this code; None for none."""
    return next((name for name, known in BUTTONS.items() if known == code), None)


def _field(text: str) -> str:
    return plain(text, "msgbox").replace("[#]", "[\u200b#]")
