"""What the daemon tells the desktop's other programs, over a session bus of the test's own, and where it leaves the
keyboard."""

import ast
import os
import re
import socket
import subprocess
import tempfile
import time

from harness import OPENBOX, PATIENCE, Case, main, progress, scratch, start, until

FITTED = ("windowLayout=fitted", "windowModal=off", "windowTitle=Job")
# The system's own, whose modules for the accessibility bus no other has.
PYTHON = "/usr/bin/python3"
READER = [PYTHON, os.path.join(os.path.dirname(os.path.abspath(__file__)), "screenReader.py")]
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
        services = f"{environment['XDG_RUNTIME_DIR']}/dbus-1/services"
        os.makedirs(services, exist_ok=True)
        with open(f"{services}/server.py", "w") as file:
            file.write(SERVER)
        with open(f"{services}/org.freedesktop.Notifications.service", "w") as file:
            file.write(f"[D-BUS Service]\nName=org.freedesktop.Notifications\nExec={PYTHON} {services}/server.py\n")
        self.notified = tempfile.NamedTemporaryFile("r")
        self.process = start(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, env={**environment, "NOTIFIED": self.notified.name}, text=True)
        self.address = self.process.stdout.readline().strip()
        self.heard = tempfile.NamedTemporaryFile("r")
        self.monitor = start(["dbus-monitor", "--address", self.address, "interface=com.canonical.Unity.LauncherEntry"],
                             stdout=open(self.heard.name, "w"))
        until(lambda: "NameLost" in self.text(), "the monitor")

    def text(self):
        with open(self.heard.name) as file:
            return file.read()

    def launcher(self):
        """Progress, whether it is to be seen, and whether the program asks for its user: all that was told."""
        return [(float(progress), seen == "true", urgent == "true") for progress, seen, urgent in re.findall(
            r'member=Update\n.*?"application://progressd.desktop"\n[^"]*"progress"\s+variant\s+double (\S+)\s.*?'
            r'"progress-visible"\s+variant\s+boolean (\w+).*?"urgent"\s+variant\s+boolean (\w+)', self.text(), re.S)]

    def notifications(self):
        """Title, text, with N for its seconds, and urgency."""
        self.notified.seek(0)
        return ast.literal_eval("[" + re.sub(r"\d+ s", "N s", self.notified.read()) + "]")

    def close(self):
        for process in (self.monitor, self.process):
            process.terminate()
            process.wait()
        self.process.stdout.close()
        self.heard.close()
        self.notified.close()


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
        heard = tempfile.NamedTemporaryFile("r")
        self.addCleanup(heard.close)
        program = start(["stdbuf", "-oL", "xev", "-name", "Other", "-event", "keyboard", *options],
                        env=self.screen.environment, stdout=open(heard.name, "w"))
        self.addCleanup(program.wait)
        self.addCleanup(program.terminate)
        window = until(lambda: self.screen.xdotool("search --onlyvisible --name ^Other$"), "the other window").split()[0]
        until(lambda: self.screen.focus() == int(window), "its focus")
        return window, heard.name

    def test_a_dialog_lets_others_type(self):
        for mode in ("off", "on"):
            with self.alone(mode):
                _, heard = self.other_window()
                _, events = self.job(f"windowModal={mode}")
                text = "all of this arrives " * 3
                typing = start(["xdotool", "type", "--delay", "15", text], env=self.screen.environment)
                events.progress("create:0;x", "addButt:0;Stop")
                shown = self.screen.window("Job")
                self.screen.key("Return")
                self.assertEqual(typing.wait(PATIENCE), 0)
                with open(heard) as file:
                    until(lambda: file.seek(0) == 0 and file.read().count("\nKeyPress") > len(text), "the letters")
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
                self.screen.focused("Copy")
                self.screen.key("Return")
                self.assertEqual(events.answer(), 1024)

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
        self.screen.focused("Copy")
        self.screen.key("Return")
        events.answer()
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

        def cover():
            self.other_window("-geometry", "790x590+0+0")

        def close(events):
            self.screen.focus_on("Job")
            self.screen.key("Escape")
            self.screen.gone("Job")

        for name, setting, act, percent, told in (
                ("in front", 0, lambda events: None, 100, None),
                ("in front, and hidden by the client", 0, lambda events: events.progress("messageStart"), 100, None),
                ("covered", 0, lambda events: cover(), 50, ("done after N s", 1)),
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
        bus = self.bus()
        environment = {**self.screen.environment, "DBUS_SESSION_BUS_ADDRESS": bus.address}
        with tempfile.TemporaryFile("w+") as log:
            reader = start([*READER], stdout=log, stdin=subprocess.PIPE, stderr=subprocess.STDOUT, env=environment,
                           text=True)

            def heard():
                log.seek(0)
                return log.read()

            def await_line(text):
                until(lambda: text in heard(), lambda: f"after {heard()}\n{text}")

            self.addCleanup(reader.stdin.close)
            self.addCleanup(reader.wait)
            self.addCleanup(reader.terminate)
            await_line("ready")
            _, events = self.job(DBUS_SESSION_BUS_ADDRESS=bus.address, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
            events.progress("create:0;Copying", "create:1;Looking", "pulse:1", "addButt:0;Stop", "update:0;30")
            await_line("shown: dialog 'Job'")
            await_line("value: progress bar 'Copying' 30")
            events.progress("update:0;40")
            await_line("value: progress bar 'Copying' 40")

            def ask(command, answer):
                reader.stdin.write(command + "\n")
                reader.stdin.flush()
                await_line(answer)

            ask("tell Copying", "told: progress bar 'Copying' 40")
            ask("tell Looking", "told: progress bar 'Looking' 0 busy")
            ask("press Stop", "pressed 'Stop'")
            events.until("clicked:0")
            events.send("<msgbox>4[#]Copy[#]Go on?[#]16384[#]65536</msgbox>")
            await_line("shown: alert 'Copy'")
            ask("tell Go on?", "told: label 'Go on?' in alert 'Copy'")
            # Behind the box nothing is pressed.
            ask("press Stop", "pressed 'Stop' again")
            ask("press No", "pressed 'No'")
            self.assertEqual(events.answer(), 65536)
            self.assertNotIn("clicked:0", events.served())


if __name__ == "__main__":
    main()
