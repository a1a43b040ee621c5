"""What the daemon tells the desktop's other programs, over a session bus of the test's own, and where it leaves the
keyboard."""

import ast
import re
import socket
import subprocess
import tempfile
import time
from pathlib import Path

from harness import OPENBOX, PATIENCE, Case, main, progress, scratch, start, until

FITTED = ("windowLayout=fitted", "windowModal=off", "windowTitle=Job")
# The system's own, whose modules for the accessibility bus no other has.
PYTHON = "/usr/bin/python3"
READER = [PYTHON, Path(__file__).resolve().with_name("screenReader.py")]
# Shows notifications, in a file; the bus starts it for the first one.
SERVER = """
from os import environ
from gi.repository import Gio, GLib

def notify(connection, sender, path, interface, method, given, invocation):
    with open(environ["NOTIFIED"], "a") as file:
        print((given[3], given[4], given[6]["urgency"]), end=",", file=file)
    invocation.return_value(GLib.Variant("(u)", (1,)))

arguments = "".join(f'<arg type="{kind}" direction="in"/>' for kind in "s u s s s as a{sv} i".split())
described = Gio.DBusNodeInfo.new_for_xml('<node><interface name="org.freedesktop.Notifications"><method name="Notify">'
                                         + arguments + '<arg type="u" direction="out"/></method></interface></node>')
bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/org/freedesktop/Notifications", described.interfaces[0], notify)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.Notifications", 0)
GLib.MainLoop().run()
"""


class Bus:
    """A session bus, and who tells what there."""

    def __init__(self, environment):
        services = Path(scratch(), "dbus-1/services")
        services.mkdir(parents=True, exist_ok=True)
        Path(services, "server.py").write_text(SERVER)
        Path(services, "org.freedesktop.Notifications.service").write_text(
            f"[D-BUS Service]\nName=org.freedesktop.Notifications\nExec={PYTHON} {services}/server.py\n")
        self.notified, self.heard = (Path(tempfile.mkdtemp(dir=scratch()), name) for name in ("notified", "heard"))
        self.notified.touch()
        self.process = start(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, env={**environment, "NOTIFIED": str(self.notified)}, text=True)
        self.address = self.process.stdout.readline().strip()
        self.monitor = start(["dbus-monitor", "--address", self.address, "interface=com.canonical.Unity.LauncherEntry"],
                             stdout=self.heard.open("w"))
        until(lambda: "NameLost" in self.heard.read_text(), "the monitor")

    def launcher(self):
        """Progress, whether it is to be seen, and whether the program asks for its user: all that was told."""
        return [(float(progress), seen == "true", urgent == "true") for progress, seen, urgent in re.findall(
            r'member=Update\n.*?"application://progressd.desktop"\n[^"]*"progress"\s+variant\s+double (\S+)\s.*?'
            r'"progress-visible"\s+variant\s+boolean (\w+).*?"urgent"\s+variant\s+boolean (\w+)', self.heard.read_text(), re.S)]

    def notifications(self):
        """Title, text, with N for its seconds, and urgency."""
        return ast.literal_eval("[" + re.sub(r"\d+ s", "N s", self.notified.read_text()) + "]")

    def close(self):
        for process in (self.monitor, self.process):
            process.terminate()
            process.wait()
        self.process.stdout.close()


class Desktop(Case):
    managers = OPENBOX

    def job(self, *entries, **environment):
        """A daemon on the bus, if there is one, and an event channel of it."""
        daemon = self.daemon(env={**self.screen.environment, **environment})
        return daemon, daemon.events(*FITTED, *entries)

    def bus(self):
        bus = Bus(self.screen.environment)
        self.addClassCleanup(bus.close)  # later than a part's end
        return bus

    def progress_beside_window(self):
        found = re.search(r"= (\d+)", self.screen.run("xprop", "-id", str(self.screen.window("Job").id),
                                                      "_NET_WM_XAPP_PROGRESS"))
        return found and int(found.group(1))

    def other_window(self, *options):
        """Another program's, which has the keyboard, and what it hears of keys."""
        heard = Path(scratch(), "heard")
        program = start(["stdbuf", "-oL", "xev", "-name", "Other", "-event", "keyboard", *options],
                        env=self.screen.environment, stdout=heard.open("w"))
        self.addCleanup(program.wait)
        self.addCleanup(program.terminate)
        search = "search --onlyvisible --name ^Other$"
        until(lambda: str(self.screen.focus()) in self.screen.xdotool(search).split(), "the other window's focus")
        return heard

    def test_a_dialog_lets_others_type(self):
        for mode in ("off", "on"):
            with self.alone(mode):
                heard = self.other_window()
                _, events = self.job(f"windowModal={mode}")
                text = "all of this arrives " * 3
                typing = start(["xdotool", "type", "--delay", "15", text], env=self.screen.environment)
                events.progress("create:0;x", "addButt:0;Stop")
                shown = self.screen.window("Job")
                self.screen.key("Return")
                self.assertEqual(typing.wait(PATIENCE), 0)
                until(lambda: heard.read_text().count("\nKeyPress") > len(text), "the letters")
                # Brought to the front, it has the keyboard.
                self.assertEqual(events.served(), ["isShown", "totalProgress=0|-1"])
                self.assertEqual(self.screen.focused("Job").id == shown.id, mode == "on")
                self.screen.key("Return")
                events.until("clicked:0")
                # A box asks for it.
                events.progress("messageStart")
                self.screen.gone("Job")
                events.progress("messageStop")
                events.send("<msgbox>1[#]Copy[#]x[#]1024</msgbox>")
                self.assertEqual(self.answered(events), 1024)

    def test_the_taskbar_shows_a_run(self):
        bus = self.bus()
        daemon, events = self.job(DBUS_SESSION_BUS_ADDRESS=bus.address)
        events.progress("create:0;x")
        began = time.monotonic()
        for percent in range(1, 51):
            events.progress(f"update:0;{percent}")
            time.sleep(0.02)
        until(lambda: (0.5, True, False) in bus.launcher(), "half of the run")
        self.assertLessEqual(len(bus.launcher()), 2 + (time.monotonic() - began) * 5)
        until(lambda: self.progress_beside_window() == 50, "the progress beside the window")
        events.progress("activate")  # which replaces the window
        events.until("isActivated")
        until(lambda: self.progress_beside_window() == 50, "the progress on the copy")
        events.send("<msgbox>1[#]Copy[#]x[#]1024</msgbox>")
        until(lambda: bus.launcher()[-1] == (0.5, True, True), "a box that asks")
        self.answered(events)
        until(lambda: bus.launcher()[-1] == (0.5, True, False), "its answer")
        for end in ("<progress>remove:0</progress>", "<exit/>"):
            events.progress("create:0;x")
            until(lambda: bus.launcher()[-1][1], "a run")
            events.send(end)
            until(lambda: bus.launcher()[-1] == (0.0, False, False), "the end")
        self.assertEqual(daemon.status(), 0)
        self.assertEqual(bus.notifications(), [])

    def test_a_run_that_nobody_saw_ends_with_a_notification(self):
        bus = self.bus()
        expected = []

        def close(events):
            self.screen.focus_on("Job")
            self.screen.key("Escape")
            self.screen.gone("Job")

        for name, setting, act, percent, told in (
                ("in front", 0, lambda events: None, 100, None),
                ("in front, and hidden by the client", 0, lambda events: events.progress("messageStart"), 100, None),
                ("covered", 0, lambda events: self.other_window("-geometry", "790x590+0+0"), 50, ("done after N s", 1)),
                ("closed", 0, close, 100, ("done after N s", 1)),
                ("short", 60, close, 100, None),
                ("not asked for", -1, close, 100, None),
                ("given up", 0, close, -1, ("failed", 2))):
            with self.alone(name):
                daemon, events = self.job(f"notifyEnd={setting}", DBUS_SESSION_BUS_ADDRESS=bus.address)
                events.progress("create:0;x")
                self.screen.window("Job")
                time.sleep(1.1)
                act(events)
                # It ends before there is a server.
                events.send(progress(f"update:0;{percent}", "remove:0") + b"<exit/>")
                self.assertEqual(daemon.status(), 0)
                expected += [("Job", *told)] if told else []
                until(lambda: len(bus.notifications()) >= len(expected), "a notification")
                self.assertEqual(bus.notifications(), expected)

    def test_a_bus_that_never_answers_holds_nothing_up(self):
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(f"{scratch()}/mute")
            mute.listen()
            began = time.monotonic()
            _, events = self.job("windowTheme=auto", "notifyEnd=0", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                                 DBUS_SESSION_BUS_ADDRESS=f"unix:path={scratch()}/mute")
            events.progress("create:0;x", "update:0;50", "remove:0")
            events.until("isHidden")
            self.assertLess(time.monotonic() - began, PATIENCE / 3)

    def test_a_screen_reader_hears_it(self):
        address = {"DBUS_SESSION_BUS_ADDRESS": self.bus().address}
        log = Path(scratch(), "reader")
        reader = start(READER, stdout=log.open("w"), stdin=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                       env={**self.screen.environment, **address})
        for cleanup in (reader.stdin.close, reader.wait, reader.terminate):
            self.addCleanup(cleanup)

        def heard(line, command=""):
            if command:
                print(command, file=reader.stdin, flush=True)
            until(lambda: line in log.read_text(), lambda: f"after {log.read_text()}, {line}")

        heard("ready")
        _, events = self.job(QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **address)
        events.progress("create:0;Copying", "create:1;Looking", "pulse:1", "addButt:0;Stop", "update:0;30")
        heard("shown: dialog 'Job'")
        heard("value: progress bar 'Copying' 30")
        events.progress("update:0;40")
        heard("value: progress bar 'Copying' 40")
        heard("told: progress bar 'Copying' 40", "tell Copying")
        heard("told: progress bar 'Looking' 0 busy", "tell Looking")
        heard("pressed 'Stop'", "press Stop")
        events.until("clicked:0")
        events.send("<msgbox>4[#]Copy[#]Go on?[#]16384[#]65536</msgbox>")
        heard("shown: alert 'Copy'")
        heard("told: label 'Go on?' in alert 'Copy'", "tell Go on?")
        # Behind the box nothing is pressed.
        heard("pressed 'Stop' again", "press Stop")
        heard("pressed 'No'", "press No")
        self.assertEqual(events.answer(), 65536)
        self.assertNotIn("clicked:0", events.served())


if __name__ == "__main__":
    main()
