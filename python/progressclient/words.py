"""The protocol's words, as far as this package says or hears them, and texts that cannot be taken for one."""

from __future__ import annotations

import re
from typing import Optional, Sequence

MOST_BUTTONS = 10  # in a box
MOST_AMOUNT = 2**53

#: What is sent, by tag; the last three have no payload.
TAGS = (CONFIGURATION, ASSERT, MSGBOX, PROGRESS, EXIT, LISTEN, CLAIM) = (
    *("configuration", "assert", "msgbox", "progress", "exit", "events", "claim"),
)
BOXES = (ASSERT, MSGBOX)
REPLIES = ("event", "answer", "claimed")
SEPARATOR = "[#]"  # between the fields of a box

#: The daemon passes over those that it does not know: "amount" is younger than the others.
COMMANDS = (CREATE, UPDATE, PULSE, REMOVE, ADD_TEXT, UPDATE_TEXT, DEL_TEXT, ADD_BUTTON, DEL_BUTTON, AMOUNT, GIVE_UP) = (
    *("create", "update", "pulse", "remove", "addText", "updateText", "delText", "addButt", "delButt"),
    *("amount", "messageStart"),
)
EVENTS = (CLOSED, CLICKED, TOTAL) = ("closed", "clicked:", "totalProgress=")

#: Settings of a window of one's own, before its title.
LOOKS = {"windowTheme": "auto", "windowLayout": "fitted", "estimate": "adaptive", "windowModal": "off"}
TITLE = "windowTitle"
NOTIFY = "notifyEnd"  # seconds
SETTINGS = (*LOOKS, TITLE, NOTIFY)

ICONS = ("none", "information", "warning", "critical", "question")

#: The codes of a box's buttons, which are the toolkit's.
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
DEFAULT_BUTTON = 0x100  # the bit of the one that Return presses

_LONGEST_TEXT = 10000  # characters


def words_of(thing: object) -> str:
    """What an object reads. One that cannot say is called by its type: a job does not end for what it says."""
    try:
        return "".join(str(thing)[:_LONGEST_TEXT])
    except Exception:
        return f"<{type(thing).__name__}>"


def plain(text: str, kind: str = PROGRESS) -> str:
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
    title = re.sub(r"[\x01-\x1f]", " ", plain(title, CONFIGURATION)).replace(";", "\u037e")
    settings = {**LOOKS, TITLE: title, **({NOTIFY: "10"} if notifies else {})}
    return ";".join(f"{key}={value}" for key, value in settings.items())


def box(icon: str, title: str, text: str, buttons: Sequence[str], default: Optional[str]) -> str:
    """The payload of a "msgbox". Raises ValueError for an icon or a button that there is not, a default that is none
    of the buttons, or more than ten buttons."""
    unknown = [name for name in buttons if name not in BUTTONS]
    if icon not in ICONS or unknown or len(buttons) > MOST_BUTTONS:
        raise ValueError(f"no such box: icon {icon!r}, buttons {buttons!r}")
    if default is not None and default not in buttons:
        raise ValueError(f"{default!r} is none of the buttons")
    fields = [plain(field, MSGBOX).replace(SEPARATOR, "[\u200b#]") for field in (title, text)]
    codes = [str(BUTTONS[name] | (DEFAULT_BUTTON if name == default else 0)) for name in buttons]
    return SEPARATOR.join([str(ICONS.index(icon)), *fields, *codes])


def button_name(code: Optional[int]) -> Optional[str]:
    """The name of the button of this code; None for none."""
    return next((name for name, known in BUTTONS.items() if known == code), None)
