"""A screen reader that says in lines what it hears on the accessibility bus, and does what it is told in lines:
"tell NAME", "press NAME"."""

import sys

import pyatspi
from gi.repository import GLib

pressed = set()


def found(name, node=None):
    """The shown thing of this name in the daemon's windows."""
    if node is None:
        programs = [program for program in pyatspi.Registry.getDesktop(0) if program and program.name == "progressd"]
        return next(filter(None, (found(name, window) for program in programs for window in program)), None)
    if node.name == name and node.getState().contains(pyatspi.STATE_SHOWING):
        return node
    return next(filter(None, (found(name, child) for child in node)), None)


def described(node):
    text = f"{node.getRoleName()} {node.name!r}"
    if node.getRole() == pyatspi.ROLE_PROGRESS_BAR:
        text += f" {node.queryValue().currentValue:g}"
    if node.getState().contains(pyatspi.STATE_BUSY):
        text += " busy"
    if node.parent and node.parent.getRole() == pyatspi.ROLE_ALERT:
        text += f" in {described(node.parent)}"
    return text


def say(text):
    print(text, flush=True)


def hear(event):
    kind = "value" if event.type.startswith("object:property") else event.detail1 and "shown"
    try:
        if kind:
            say(f"{kind}: {described(event.source)}")
    except GLib.Error:
        pass  # it has gone already


def obey(stream, _):
    line = stream.readline()
    if not line:
        pyatspi.Registry.stop()
        return False
    command, name = line.strip().split(" ", 1)
    node = found(name)
    if not node:
        say(f"no {name}")
    elif command == "tell":
        say("told: " + described(node))
    else:
        node.queryAction().doAction(0)
        say(f"pressed {name!r}" + " again" * (name in pressed))
        pressed.add(name)
    return True


pyatspi.Registry.registerEventListener(hear, "object:property-change:accessible-value", "object:state-changed:showing")
GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, obey)
say("ready")
pyatspi.Registry.start()
