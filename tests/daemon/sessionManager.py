"""A session manager, xsm, ends the session, as a user asks it to in its menu."""

import os
import re
import subprocess
from pathlib import Path

from harness import Case, Screen, main, scratch, start, until


class SessionManager(Case):
    def test_ends_the_daemon(self):
        """Without a chance to save anything, and although a box is open that only its buttons answer."""
        Path(scratch(), ".xsmstartup").write_text("true\n")
        screen, output = Screen(), Path(scratch(), "xsm")
        screen.environment["HOME"] = scratch()
        xsm = start(["stdbuf", "-oL", "xsm", "-verbose"], env=screen.environment, stdout=output.open("w"),
                    stderr=subprocess.STDOUT)
        self.addCleanup(xsm.terminate)
        address = until(lambda: re.search("setenv SESSION_MANAGER (.*)\n", output.read_text()), "the session")
        screen.environment["SESSION_MANAGER"] = address[1]
        daemon = self.daemon("0", screen=screen)
        events, commands = daemon.events(), daemon.commands()
        commands.send("<msgbox>1[#]Copy[#]x[#]1024[#]2048</msgbox>")
        screen.focused("Copy")
        # The menu of the last button, and its last entry.
        screen.xdotool("search --sync --onlyvisible --name ^xsm: mousemove --window %1 140 50 mousedown 1")
        menu = until(lambda: re.search(r"^     0x\w+ \(has no name\): \(\)  (\d+)x(\d+)\+(\d+)\+(\d+)",
                                       screen.run("xwininfo", "-root", "-tree"), re.M), "the menu")
        width, height, x, y = map(int, menu.groups())
        screen.xdotool(f"mousemove {x + width // 2} {y + height // 4}")
        screen.xdotool(f"mousemove {x + width // 2} {y + height * 3 // 4} mouseup 1")
        events.until("shutDown")
        self.assertEqual(daemon.status(), 0)
        self.assertFalse(os.path.exists(daemon.lock))
        self.assertEqual(commands.answer(), 0)


if __name__ == "__main__":
    main()
