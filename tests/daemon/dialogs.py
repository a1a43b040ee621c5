"""The dialog that stays, and the one that is replaced by a copy; and the runs that it learns."""

import os
import re
import time
from pathlib import Path

from harness import SLOWNESS, Case, Log, main, resident_kib, scratch, until, write_picture

RUN = ("create:0;x", "addButt:0;y")


class Dialogs(Case):
    def bypasses_the_manager(self, window):
        return "Override Redirect State: yes" in self.screen.facts(window)

    def test_modal_one_stays(self):
        # Half as wide as the configured screen, even where the real one is smaller.
        daemon, events, _ = self.session("screenGeometry=1800,600")
        events.progress("create:0;x")
        dialog = self.screen.window()
        self.assertEqual(dialog.area, ((1800 - 916) // 2, (600 - dialog.height) // 2, 916, dialog.height))
        self.assertTrue(self.bypasses_the_manager(dialog))
        events.progress("activate", "messageStart", "messageStop", "remove:0", "create:0;x")
        events.until("isHidden")
        events.served()
        self.assertEqual(self.screen.window().id, dialog.id)
        # It moves with the offset, and keeps the size that it was made with.
        events.configure("screenGeometry=100,100", "paintOffset=5|-7")
        moved = (dialog.x + 5, dialog.y - 7, dialog.width, dialog.height)
        until(lambda: self.screen.window().area == moved, "the dialog at its new place")
        # The other mode replaces it, and its own has the copy stay.
        events.configure("windowModal=off", "windowTitle=Copy")
        events.served()
        copy = self.screen.window("Copy")
        self.assertTrue(copy.id != dialog.id and not self.bypasses_the_manager(copy))
        self.screen.gone()
        events.configure("windowModal=oN", "windowTitle=Never seen")
        events.served()
        self.assertEqual(self.screen.window("Copy").id, copy.id)

    def test_non_modal_one_is_replaced(self):
        daemon, log = self.daemon(), Log()
        events = daemon.events("windowModal=off", "windowStyle=#f00|#fff|#0f0|#fff|#00f|#ff0")
        events.progress(*RUN, "update:0;50")
        events.until("isShown")
        seen = [self.screen.window()]
        self.assertFalse(self.bypasses_the_manager(seen[0]))
        log.has(": ---- queueing dialog for delete result=")
        for command in ("activate", "messageStart", "messageStop"):
            events.progress(command)
            if command == "messageStart":
                self.screen.gone()
            else:
                until(lambda: self.screen.window().id not in [window.id for window in seen])
                seen.append(self.screen.window())
        # It shows what the first one did, a bar at its half, and answers clicks.
        dialog = self.screen.window()
        until(lambda: self.screen.picture().colours(dialog.area)["ff0000"] > 300)
        self.screen.click(dialog.x + 84, dialog.bottom - 48)
        events.until("clicked:0")
        events.progress("remove:0", "delButt:0")
        events.until("isHidden")
        self.screen.gone()

    def test_the_end_of_a_shown_one_is_logged(self):
        """Also where the daemon ends before the copy is on the screen."""
        for mode, rest in (("on", ""), ("off", ""), ("off", "<progress>remove:0</progress>")):
            with self.alone(mode, rest=rest):
                log = f"{scratch()}/{mode}{len(rest)}.log"
                daemon = self.daemon("--log", log, private=True)
                client = daemon.local(f"<configuration>windowModal={mode}</configuration>")
                client.send(f"<progress>create:0;x</progress>{rest}<exit/>")
                self.assertEqual(daemon.status(), 0)
                with open(log) as file:
                    self.assertEqual("---- destroying dialog while open" in file.read(), not rest)

    def test_a_burst_takes_no_more_memory(self):
        """Many replacements in one write: no window or picture each, and none of any size."""
        for settings, count in ((), 2200), (("screenGeometry=32767,32767",), 20), (("windowPixmap=big.ppm",), 200):
            with self.alone(settings):
                daemon = self.daemon()
                write_picture(f"{daemon.folder}/big.ppm", 800, 600)
                events = daemon.events("windowModal=off", *settings)
                events.served("create:0;x")
                self.screen.picture()
                processes = {"the daemon": daemon.pid, "the X server": self.screen.server.pid}
                before = {name: resident_kib(pid, "VmHWM") for name, pid in processes.items()}
                events.progress(*["activate"] * count)
                for _ in range(count):
                    events.until("isActivated")
                for name, pid in processes.items():
                    self.assertLess(resident_kib(pid, "VmHWM") - before[name], 20_480 * SLOWNESS, name)

    def test_mark_the_focus_when_shown_again(self):
        daemon, events, _ = self.session("windowControls=#000000|#000000|#000000|#ff00ff")

        def is_marked():
            return self.screen.picture().colours(self.screen.window().area)["ff00ff"] > 100

        events.progress(*RUN)
        until(is_marked)
        # The display has no time to take the keyboard away.
        events.progress("delButt:0", "remove:0", *RUN)
        events.until("isHidden")
        until(is_marked)

    def test_empty_titles(self):
        """The dialog has none then, and the box."""
        daemon, events, commands = self.session("windowTitle=")
        commands.progress("create:0;x")
        events.until("isShown")
        commands.send("<msgbox>1[#][#]x[#]1024</msgbox>")
        until(lambda: self.screen.run("xwininfo", "-root", "-tree").count('(has no name): ("progressd"') == 2)


class Runs(Case):
    def test_are_learned(self):
        """Or not, where somebody has interfered. All at the same time: each takes more than a second."""
        runs = {}
        for interference in ("none", "button by mouse", "button by key", "hidden by the client", "copied", "answered box",
                             "open box"):
            _, events, commands = runs[interference] = self.session(f"windowTitle={interference}")
            commands.progress(*RUN)
            dialog = self.screen.focused(interference)
            if interference == "button by mouse":
                self.screen.click(dialog.x + 84, dialog.bottom - 48)
            elif interference == "button by key":
                self.screen.key("Return")
            elif interference == "hidden by the client":
                commands.progress("messageStart", "messageStop")
            elif interference == "copied":
                commands.configure("windowModal=off")
                commands.progress("activate")
            elif interference.endswith("box"):
                self.ask(commands)
                if interference == "answered box":
                    self.assertEqual(self.answered(commands), 1024)
            if interference.startswith("button"):
                events.until("clicked:0")
        time.sleep(1.1)  # a run of less than a second would not be learned anyway
        for interference, (daemon, events, commands) in runs.items():
            with self.subTest(interference):
                commands.progress("update:0;90", "delButt:0", "remove:0")
                events.until("isHidden")
                if interference == "none":
                    self.assertEqual(daemon.statistics().count("\n"), 2, "it is saved at once")
                commands.send("<exit/>")
                self.assertEqual(daemon.status(), 0)
                lines = daemon.statistics().split("\n")
                self.assertEqual(lines[0], "fileversion=2")
                self.assertEqual(len(lines) == 3, interference in ("none", "button by mouse", "copied"))

    def test_follow_one_that_was_learned(self):
        """The daemon tells what remains, across the replacement of the dialog, and learns the new run's end."""
        identifier = f"learned{os.getpid()}"
        course = "".join(f"{second * 1001:08}." for second in range(100))
        Path(f"/var/tmp/currentTimestamps_{identifier}.txt").write_text(
            f"fileversion=2\n001447671234:00000100:00000001:{course}\n")
        daemon = self.daemon(identifier=identifier)
        events = daemon.events("windowStyle=#f00|#fff|#0f0|#fff|#00f|#ff0")
        events.progress("create:0;x")
        began = time.monotonic()
        for second in range(1, 6):
            time.sleep(max(0, began + second - time.monotonic()))
            events.progress(f"update:0;{second}")
            if second == 3:
                events.configure("windowModal=off")
                events.progress("activate")
        events.progress("remove:0")
        heard = " ".join(events.until("isHidden"))
        estimates = re.findall(r"totalProgress=(\d+)\|(\d+)", heard)
        self.assertTrue(estimates, heard)
        for elapsed, remaining in estimates:
            self.assertTrue(2 <= int(elapsed) and int(remaining) == 100 - int(elapsed), heard)
        # Half of both durations.
        self.assertRegex(daemon.statistics().split("\n")[1], "^.{12}:0000005[1-3]:00000002")


if __name__ == "__main__":
    main()
