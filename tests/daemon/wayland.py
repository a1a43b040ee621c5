"""The windows under a Wayland compositor, with real keys and pictures, and no X server."""

import atexit
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from harness import NOBODY, OPENBOX, ORDERLY, PATIENCE, Case, Picture, Screen, environment_of, main, progress, scratch, start, until

FITTED = "<configuration>windowLayout=fitted;windowTheme=light;windowModal=off;windowTitle=Job</configuration><events/>"
PAUSE = "500"  # milliseconds, longer than between two keys of who types


class Compositor(Screen):
    """Sway, as root another user's, which it has to be, with a screen that nobody sees."""

    def __init__(self):
        self.folder = Path(tempfile.mkdtemp())
        atexit.register(self.end)
        as_other = []
        if os.geteuid() == 0:
            os.chown(self.folder, NOBODY, NOBODY)
            as_other = ["setpriv", "--reuid", str(NOBODY), "--regid", str(NOBODY), "--clear-groups"]
        config = self.folder / "config"
        config.write_text("output HEADLESS-1 resolution 800x600 bg #345678 solid_color\nxwayland disable\n")
        config.chmod(0o644)
        environment = environment_of(HOME=str(self.folder), XDG_RUNTIME_DIR=str(self.folder), WLR_BACKENDS="headless",
                                     WLR_LIBINPUT_NO_DEVICES="1", WLR_RENDERER="pixman", LD_PRELOAD="")
        self.server, self.managers = start([*as_other, "sway", "-c", str(config)], env=environment,
                                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL), []
        display, control = (until(lambda: self.socket(name), name) for name in ("wayland-", "sway-ipc"))
        self.environment = environment_of(XDG_RUNTIME_DIR=scratch(), WAYLAND_DISPLAY=display, SWAYSOCK=control,
                                          # The toolkit never gives back what it holds of a compositor.
                                          ASAN_OPTIONS=os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0")

    def socket(self, begin):
        assert self.server.poll() is None, "sway has ended"
        return next((str(path) for path in self.folder.glob(begin + "*") if path.suffix != ".lock"), None)

    def end(self):
        super().end()
        shutil.rmtree(self.folder, True)

    def nodes(self):
        """The daemons' windows by title."""
        def below(node):
            if node.get("app_id") == "progressd":
                yield node["name"], node
            for child in node["nodes"] + node["floating_nodes"]:
                yield from below(child)

        return dict(below(json.loads(self.run("swaymsg", "-r", "-t", "get_tree"))))

    def focused(self, title="Job"):
        def window():
            found = self.nodes().get(title)
            return found and found["focused"] and found

        return until(window, f"the focus on {title}")

    def gone(self, title="Job"):
        until(lambda: title not in self.nodes(), f"the end of {title}")

    def key(self, *keys):
        self.run("wtype", "-s", PAUSE, *(argument for key in keys for argument in ("-k", key)))

    def picture(self, title="Job"):
        place = "{x},{y} {width}x{height}".format(**self.nodes()[title]["rect"])
        return Picture(self.run("grim", "-t", "ppm", "-g", place, "-", text=False))


class Wayland(Case):
    managers = OPENBOX

    @classmethod
    def setUpClass(cls):
        cls.compositor = Compositor()

    def client(self, text=FITTED, screen=None):
        daemon = self.daemon(screen=screen or self.compositor, private=True)
        client = daemon.local()
        client.send(text)
        client.daemon = daemon
        return client

    def test_a_dialog_shows_what_it_is_told_and_hears_keys(self):
        client = self.client()
        client.progress("create:0;x", "addButt:0;Stop", "addButt:1;Go")
        client.until("isShown")
        rect = self.compositor.focused()["rect"]

        def colours():
            return self.compositor.picture().colours()

        until(lambda: len(colours()) > 20, "the texts")
        before = colours()
        client.progress("update:0;60")
        until(lambda: max((colours() - before).values(), default=0) > rect["width"], "the bar")
        self.compositor.press("Return", "Job")
        client.until("clicked:0")
        self.compositor.key("Tab", "space")
        client.until("clicked:1")
        self.compositor.run("swaymsg", "[title=Job]", "kill")
        client.until("closed")
        self.compositor.gone()
        client.progress("activate")
        self.compositor.press("Escape", "Job")
        client.until("closed")
        self.compositor.gone()

    def test_a_dialog_that_appears_lets_nothing_be_pressed(self):
        """Whoever types gets to see it, and the compositor gives it the keyboard."""
        client, other = self.client(), self.client(FITTED.replace("Job", "Other"))
        other.progress("addButt:0;x")
        self.compositor.focused("Other")
        typing = start(["wtype", "-s", str(PAUSE), "-k", "Return", "-d", "30", *["word"] * 15, "-k", "Return", "-k", "space",
                        "-k", "Escape", "-d", "30", *["word"] * 5], env=self.compositor.environment)
        other.until("clicked:0")
        client.progress("create:0;x", "addButt:0;Stop")
        self.assertEqual(typing.wait(PATIENCE), 0)
        self.compositor.focused()
        self.assertEqual(client.served(), ["isShown", "totalProgress=0|-1"])
        self.compositor.press("Return", "Job")
        client.until("clicked:0")

    def test_a_box_is_in_front_and_hears_keys(self):
        for layout in ("windowModal=off", "windowModal=on", "windowLayout=grid;windowModal=on"):
            for first in ("dialog", "box"):
                with self.alone(layout, first=first):
                    client = self.client(FITTED + f"<configuration>{layout}</configuration>")

                    def another(window):
                        """In front of a dialog that is shown, or replaced by a copy, the box is another window."""
                        until(lambda: self.compositor.focused("Copy")["id"] != window, "the box in front")
                        return self.compositor.focused("Copy")["id"]

                    dialog, box = progress("create:0;x", "addButt:0;Stop"), "<msgbox>4[#]Copy[#]Go on?[#]16384[#]65536</msgbox>"
                    client.send(dialog if first == "dialog" else box)
                    window = self.compositor.focused("Job" if first == "dialog" else "Copy")["id"]
                    client.send(box if first == "dialog" else dialog)
                    window = another(window)
                    client.served()
                    if layout == "windowModal=off":
                        another(window)
                    self.compositor.press("Return", "Copy")
                    self.assertEqual(client.item(), "answer 1;16384")
                    self.compositor.gone("Copy")
                    self.compositor.press("Return", "Job")
                    client.until("clicked:0")

    def test_a_display_that_has_stopped_keeps_no_daemon(self):
        for display in (self.compositor, Screen()):
            with self.alone(type(display).__name__):
                client = self.client(screen=display)
                client.progress("create:0;x")
                client.until("isShown")
                display.server.send_signal(signal.SIGSTOP)
                self.addCleanup(display.server.send_signal, signal.SIGCONT)
                client.send("<msgbox>1[#]Copy[#]x[#]1024</msgbox>")
                time.sleep(0.5)  # until it waits for the display
                client.daemon.process.terminate()
                self.assertEqual(client.daemon.status(), ORDERLY)
                self.assertFalse(os.path.exists(client.daemon.path))

    def test_clients_show_their_windows(self):
        """A pipe, and a loop of Python's, which end when they are cancelled."""
        loop = "from progressclient import track; import time; [time.sleep(1) for _ in track(range(99), 'Job', cancel=True)]"
        for command in ([os.environ["PROGRESSCTL"], "pipe", "--title", "Job", "--", "sleep", "99"], [sys.executable, "-c", loop]):
            with self.subTest(command[0]):
                client = start(command, env=self.compositor.environment, stderr=subprocess.DEVNULL)
                self.addCleanup(client.wait)
                self.addCleanup(client.kill)
                self.compositor.press("Escape", "Job")
                self.assertEqual(client.wait(PATIENCE), 1)
                self.compositor.gone()

    def test_a_display_that_works_comes_first(self):
        both = {**self.compositor.environment, "DISPLAY": self.screen.environment["DISPLAY"]}
        daemon = self.daemon(env=both)
        daemon.events("windowTitle=Job").progress("create:0;x")
        self.screen.window("Job")
        self.assertEqual(self.compositor.nodes(), {})


if __name__ == "__main__":
    main()
