"""What the protocol fixes: messages, boxes, settings; and texts that cannot be taken for anything else."""

from __future__ import annotations

import re
from typing import Optional, Sequence

BOXES = ("assert", "msgbox")
REPLIES = ("event", "answer", "claimed")
ICONS = ("none", "information", "warning", "critical", "question")

#: The codes of a box's buttons, which are the toolkit's.
BUTTONS = {
    name: 0x400 << place
    for place, name in enumerate(
        "ok save save-all open yes yes-to-all no no-to-all abort retry ignore close cancel discard help apply reset"
        " restore-defaults".split()
    )
}
DEFAULT_BUTTON = 0x100  # the bit of the one that Return presses
MOST_BUTTONS = 10  # in a box

_SEPARATOR = "[#]"  # between the fields of a box
_LOOKS = "windowTheme=auto;windowLayout=fitted;estimate=adaptive;windowModal=off"  # of a window of one's own
_LONGEST_TEXT = 10000  # characters


def words_of(thing: object) -> str:
    """What an object reads; None reads nothing. One that cannot say is called by its type: a job does not end for what
    it says."""
    try:
        return "" if thing is None else "".join(str(thing)[:_LONGEST_TEXT])
    except Exception:
        return f"<{type(thing).__name__}>"


def plain(text: str, kind: str = "progress") -> str:
    """A text that does not end a message of this kind: a character without a width stands within what would be its
    end."""
    return text.replace("\0", "").replace(f"</{kind}>", f"</\u200b{kind}>")


def message(kind: str, payload: Optional[str] = None) -> bytes:
    """The bytes of one message: "<kind>payload</kind>", without a payload "<kind/>".

    Raises ValueError if the payload holds the closing tag, also one that shows only when zero characters, which
    the daemon drops, are taken out. Half a surrogate pair becomes "?".
    """
    if payload is None:
        return f"<{kind}/>".encode()
    payload = payload.replace("\0", "")
    if f"</{kind}>" in payload:
        raise ValueError(f"</{kind}> within a message of that kind")
    return f"<{kind}>{payload}</{kind}>".encode("utf-8", "replace")


def configuration(title: str, notifies: bool) -> str:
    """A title stands on one line, and the look-alike of ";" in its place, which would end the setting."""
    title = re.sub(r"[\x01-\x1f]", " ", plain(title, "configuration")).replace(";", "\u037e")
    return f"{_LOOKS};windowTitle={title}" + (";notifyEnd=10" if notifies else "")


def box(icon: str, title: str, text: str, buttons: Sequence[str], default: Optional[str]) -> str:
    """The payload of a "msgbox". Raises ValueError for an icon or a button that there is not, a default that is none
    of the buttons, or more than ten buttons."""
    if icon not in ICONS or not BUTTONS.keys() >= set(buttons) or len(buttons) > MOST_BUTTONS:
        raise ValueError(f"no such box: icon {icon!r}, buttons {buttons!r}")
    if default is not None and default not in buttons:
        raise ValueError(f"{default!r} is none of the buttons")
    fields = [plain(field, "msgbox").replace(_SEPARATOR, "[\u200b#]") for field in (title, text)]
    codes = [str(BUTTONS[name] | (DEFAULT_BUTTON if name == default else 0)) for name in buttons]
    return _SEPARATOR.join([str(ICONS.index(icon)), *fields, *codes])


def button_name(code: Optional[int]) -> Optional[str]:
    """The name of the button of this code; None for none."""
    return next((name for name, known in BUTTONS.items() if known == code), None)
