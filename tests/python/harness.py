"""What the tests of the running daemon share: X servers of their own, daemons, channels, the log.

PROGRESSD names the daemon. PROGRESSD_WRAPPER may hold a command to run it under, and PROGRESSD_SLOWNESS by how much
that, or the way it is built, makes everything slower and larger.
"""

import atexit
import collections
import contextlib
import ctypes
import functools
import glob
import os
import re
import shlex
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

SLOWNESS = float(os.environ.get("PROGRESSD_SLOWNESS", "1"))
PATIENCE = 30 * SLOWNESS  # seconds; only a failure takes so long
ORDERLY = 128 + signal.SIGTERM
NOBODY = 65534  # another user
SKIPPED = 77  # for the build, which lists what was skipped
# Started by hand, a test has the fonts that it has in the build.
os.environ.setdefault("FONTCONFIG_FILE", str(Path(__file__).resolve().parent / "../data/fonts.conf"))


def until(condition, what="what was awaited", seconds=PATIENCE):
    """Waits until the condition gives something true, and returns that. `what` may be asked when it is missed."""
    deadline = time.monotonic() + seconds
    while True:
        if result := condition():
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"{what() if callable(what) else what} does not come")
        time.sleep(0.005)


def start(command, **options):
    """A process that ends with this one, whatever becomes of that."""
    libc = ctypes.CDLL(None)
    return subprocess.Popen(command, preexec_fn=lambda: libc.prctl(1, signal.SIGTERM), **options)


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def take_namespaces(*kinds):
    """Starts the script again where these are its own, as root or as anybody; it ends as skipped where it gets none."""
    if "OWN_NAMESPACES" in os.environ:
        return
    is_root = os.geteuid() == 0
    unshare = ["unshare", *kinds, *([] if is_root else ["--map-root-user"])]
    if subprocess.run([*unshare, "mount", "-t", "tmpfs", "none", "/tmp"], stderr=subprocess.DEVNULL).returncode:
        print("skipped: needs namespaces, as root or as anybody (unprivileged user namespaces):", *kinds)
        sys.exit(SKIPPED)
    os.environ["OWN_NAMESPACES"] = "root" if is_root else "user"
    os.execvp(unshare[0], [*unshare, sys.executable, *sys.argv])


def environment_of(**display):
    """This process's environment, with another display than its own, if it has one."""
    own = ("DISPLAY", "QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "DBUS_SESSION_BUS_ADDRESS")
    return {**{name: value for name, value in os.environ.items() if name not in own}, **display}


def as_bytes(text):
    return text if isinstance(text, bytes) else text.encode("latin-1")


def progress(*commands):
    return b"".join(b"<progress>" + as_bytes(command) + b"</progress>" for command in commands)


def configuration(*entries):
    return b"<configuration>" + b";".join(map(as_bytes, entries)) + b"</configuration>"


OK = 0x400  # the button


def box(title, *buttons, text="x"):
    return f"<msgbox>1[#]{title}[#]{text}" + "".join(f"[#]{button}" for button in buttons or [OK]) + "</msgbox>"


def write_picture(path, width, height, colour="000000"):
    """All in one colour; whatever its name says, a PPM."""
    Path(path).write_bytes(b"P6 %d %d 255\n" % (width, height) + bytes.fromhex(colour) * (width * height))


@functools.lru_cache(None)
def scratch():
    """A folder of this process's own, which goes with it."""
    folder = tempfile.mkdtemp()
    atexit.register(shutil.rmtree, folder, True)
    return folder


class Picture:
    """A picture of a screen."""

    def __init__(self, ppm):
        size = re.match(rb"P6\n(\d+) (\d+)\n255\n", ppm)
        self.width, self.height = map(int, size.groups())
        self.bytes = ppm[size.end():]

    def pixel(self, x, y):
        """As "rrggbb"."""
        at = 3 * (y * self.width + x)
        return self.bytes[at:at + 3].hex()

    def colours(self, area=None):
        """How many pixels of which colours there are in an area (x, y, width, height)."""
        left, top, width, height = area or (0, 0, self.width, self.height)
        left, right = max(0, left), min(self.width, left + width)
        counts = collections.Counter()
        for y in range(max(0, top), min(self.height, top + height)):
            row = self.bytes[3 * (y * self.width + left):3 * (y * self.width + right)]
            counts.update(row[at:at + 3] for at in range(0, len(row), 3))
        return collections.Counter({colour.hex(): count for colour, count in counts.items()})


class Window:
    def __init__(self, identity, title, width, height, x, y):
        self.id, self.title, self.area = int(identity, 16), title, (int(x), int(y), int(width), int(height))
        self.x, self.y, self.width, self.height = self.area
        self.right, self.bottom = self.x + self.width, self.y + self.height


class Screen:
    """A virtual X server with the managers named, and what a user sees and does in front of it."""

    def __init__(self, *managers, size="800x600"):
        reader, writer = os.pipe()
        # A server that resets when its last client goes would hang up on the next one.
        self.server = start(["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{size}x24", "-nolisten", "tcp",
                             "-noreset"], pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as numbers:
            display = ":" + numbers.readline().strip()
        self.environment = environment_of(DISPLAY=display, XDG_RUNTIME_DIR=scratch(), XDG_STATE_HOME=f"{scratch()}/state")
        self.managers = [start(shlex.split(manager), env=self.environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL) for manager in managers]
        if managers:
            until(lambda: "yes" in self.run("xprop", "-root", "_READY"), "the window manager")
        atexit.register(self.end)

    def end(self):
        for process in (*self.managers, self.server):
            process.terminate()
            process.wait()

    def run(self, *command, text=True):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              stdin=subprocess.DEVNULL, text=text, errors="replace" if text else None,
                              timeout=PATIENCE).stdout

    # Keys and clicks go through the X server, as those of a real user. Keys by name: "Return", "shift+Tab".

    def xdotool(self, arguments):
        return self.run("xdotool", *arguments.split())

    def key(self, *keys):
        self.xdotool("key --delay 0 " + " ".join(keys))

    def click(self, x, y):
        self.xdotool(f"mousemove {x} {y} click 1")

    def drag(self, x, y, right, down):
        self.xdotool(f"mousemove {x} {y} mousedown 1 mousemove {x + right // 2} {y + down // 2} "
                     f"mousemove {x + right} {y + down} mouseup 1")

    def facts(self, window):
        return self.run("xwininfo", "-id", str(window.id))

    def windows(self, title=".*"):
        """The daemons' mapped windows with this title, the topmost first; one without any has the title "progressd"."""
        pattern = rf'^ *(0x\w+) "({title})": \("progressd" "progressd"\) +(\d+)x(\d+)\S+ +\+(-?\d+)\+(-?\d+)$'
        found = [Window(*facts) for facts in re.findall(pattern, self.run("xwininfo", "-root", "-tree"), re.M)]
        return [window for window in found if "IsViewable" in self.facts(window)]

    def order(self, *titles):
        """These titles in the order of their windows, the topmost first."""
        return [window.title for window in self.windows("|".join(titles))]

    def window(self, title="unknown"):
        """Waits until exactly one is shown."""
        def only_one():
            found = self.windows(title)
            return len(found) == 1 and found[0]

        return until(only_one, lambda: f"in {self.run('xwininfo', '-root', '-tree')}\nthe window {title}")

    def focus(self):
        return int(self.xdotool("getwindowfocus") or 0)

    def focused(self, title="unknown"):
        """The same, and waits until it has the keyboard."""
        until(lambda: self.focus() == self.window(title).id, f"the focus on {title}")
        return self.window(title)

    def press(self, keys, title="unknown"):
        """Keys, with blanks between, as soon as it has the keyboard."""
        self.focused(title)
        self.key(*keys.split())

    def focus_on(self, title="unknown"):
        """Gives it the keyboard, as a user does."""
        self.xdotool(f"windowfocus {self.window(title).id}")
        return self.focused(title)

    def gone(self, title="unknown"):
        """Waits until none is shown, and until a window manager has given the keyboard to somebody else."""
        until(lambda: not self.windows(title), f"the end of the window {title}")
        root = int(re.search(r"Window id: (\w+)", self.run("xwininfo", "-root")).group(1), 16)
        until(lambda: not self.managers or self.focus() not in (0, 1, root), "the manager's turn")

    def picture(self):
        return Picture(self.run("import", "-silent", "-window", "root", "-depth", "8", "ppm:-", text=False))

    def settled(self):
        """A picture that is the same as the one before it."""
        pictures = [self.picture()]
        until(lambda: pictures.append(self.picture()) or pictures[-1].bytes == pictures[-2].bytes, "a picture that stays")
        return pictures[-1]


class Channel:
    """A client's connection. What does not come in time fails the test."""

    def __init__(self, connection):
        self.socket, self.received = connection, b""
        connection.settimeout(PATIENCE)

    def send(self, text):
        self.socket.sendall(as_bytes(text))

    def progress(self, *commands):
        self.send(progress(*commands))

    def configure(self, *entries):
        self.send(configuration(*entries))

    def more(self):
        """Reads on; false at the end of the channel."""
        try:
            piece = self.socket.recv(1 << 20)
        except ConnectionResetError:
            piece = b""
        self.received += piece
        return bool(piece)

    def read(self, count):
        while len(self.received) < count:
            assert self.more(), f"closed after {self.received!r}"
        taken, self.received = self.received[:count], self.received[count:]
        return taken

    def answer(self):
        """The code of the button that answered a box."""
        return struct.unpack("=I", self.read(4))[0]

    def event(self):
        """The next event, before which nothing else has come."""
        kind, _, text = self.item().partition(" ")
        assert kind == "event", f"not an event: {kind} {text}"
        return text

    def until(self, last):
        """The next events up to and including this one."""
        events = []
        while not events or events[-1] != last:
            try:
                events.append(self.event())
            except (AssertionError, socket.timeout) as error:
                raise AssertionError(f"no {last} after {events[-20:]}: {error}") from None
        return events

    def served(self, *commands):
        """On an event channel: these, and what was sent on it before, have been handled then. The events that came
        meanwhile."""
        self.progress(*commands, "activate")
        return self.until("isActivated")[:-1]

    def pending(self):
        """What has arrived and was not taken yet."""
        self.socket.setblocking(False)
        try:
            while self.more():
                pass
        except BlockingIOError:
            pass
        self.socket.settimeout(PATIENCE)
        return self.received

    def rest(self):
        """What comes until the daemon closes the channel."""
        while self.more():
            pass
        return self.received

    def item(self):
        """The next thing that comes, as "event isShown"; on a local channel answers, too."""
        while not (found := re.match(rb"<(event|answer|claimed)>([^<]*)</\1>", self.received)):
            assert not self.received or self.received.startswith(b"<"), f"between two things: {self.received!r}"
            assert self.more(), f"closed after {self.received!r}"
        self.received = self.received[found.end():]
        return f"{found[1].decode()} {found[2].decode()}"

    def ask(self, text):
        self.send(text)
        return self.item()

    def close(self):
        """Hangs up, and returns, with what came until then, when the daemon has noticed."""
        self.socket.shutdown(socket.SHUT_WR)
        rest = self.rest()
        self.socket.close()
        return rest

    def reset(self):
        """Hangs up as a client that is killed: the daemon sees an error, not an end."""
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()


def resident_kib(pid, what="VmRSS"):
    """Memory of a process; with "VmHWM" the most that it ever had."""
    return int(re.search(rf"^{what}:\s+(\d+)", Path(f"/proc/{pid}/status").read_text(), re.M)[1])


class Daemon:
    """A daemon with an identifier and a folder of its own. Its files go with it."""

    count = 0

    def __init__(self, screen, *arguments, identifier=None, program=None, wait=True, private=False, **options):
        Daemon.count += 1
        self.identifier = identifier or f"test{os.getpid()}-{Daemon.count}"
        self.folder = tempfile.mkdtemp(dir=scratch())
        self.lock = f"/tmp/HalvornRunning_{self.identifier}.lock"
        self.path = f"{screen.environment['XDG_RUNTIME_DIR']}/progressd/{self.identifier}.sock"
        self.errors = tempfile.TemporaryFile()
        wrapper = shlex.split(os.environ.get("PROGRESSD_WRAPPER", ""))
        options = {"cwd": self.folder, "env": screen.environment, "stderr": self.errors, **options}
        self.process = start([*wrapper, program or os.environ["PROGRESSD"],
                              *["--private"] * private, self.identifier, *arguments], **options)
        self.pid, self.private, self.status_was_seen = self.process.pid, private, False
        self.ends_by_exit = wait and not private and not arguments
        if wait and not private:
            self.command_port, self.event_port = until(self.ports, "the daemon")

    def ports(self):
        assert self.process.poll() is None, f"the daemon ended with {self.process.returncode}: {self.stderr()}"
        try:
            lines = Path(self.lock).read_text().split("\n")
        except OSError:
            return None
        return tuple(map(int, lines[:2])) if len(lines) == 3 else None

    def connect(self, port, source="127.0.0.1"):
        channel = socket.create_connection(("127.0.0.1", port), PATIENCE, source_address=(source, 0))
        channel.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        return Channel(channel)

    def commands(self):
        return self.connect(self.command_port)

    def local(self, text=""):
        """A client on the local socket, as soon as that is there."""
        def connected():
            channel = socket.socket(socket.AF_UNIX)
            if channel.connect_ex(self.path) == 0:
                return Channel(channel)
            channel.close()
            assert self.process.poll() is None, self.stderr()
            return None

        client = until(connected, "the socket")
        if text:  # An empty one, too, is refused by a channel that was closed at once.
            client.send(text)
        return client

    def events(self, *entries):
        """An event channel that the daemon has taken in, after these settings."""
        channel = self.connect(self.event_port)
        channel.configure(*entries)
        channel.served()
        return channel

    def files(self):
        return glob.glob(f"/tmp/*_{self.identifier}[.-]*") + glob.glob(f"/var/*/*_{self.identifier}[.-]*")

    def statistics(self):
        return next((file.read_text() for file in Path("/var").glob(f"*/currentTimestamps_{self.identifier}.txt")), "")

    def stderr(self):
        """What it has printed so far; the test has then taken notice."""
        self.errors.seek(0)
        text = self.errors.read().decode(errors="replace")
        self.errors.truncate(0)
        return text

    def status(self):
        """Waits until it ends by itself, in the way that the test expects."""
        self.status_was_seen = True
        return self.process.wait(PATIENCE)

    def ask_to_end(self):
        """In order, where it can, so that leaks are found. Returns the statuses that it may have then."""
        if self.ends_by_exit:
            with contextlib.suppress(ConnectionError):  # it may just be ending with its last client
                self.commands().send("<exit/>")
            return (0,)
        self.process.terminate()
        return (ORDERLY, 0) if self.private else (-signal.SIGTERM,)  # a private one may just be ending

    def end(self):
        """Ends it; fails if it has not ended as it should, or has printed something that nobody looked at."""
        expected = (0,) if self.process.poll() is not None else self.ask_to_end()
        # That the log is somebody else's counts for nothing.
        status = self.process.wait(PATIENCE)
        errors = re.sub(r"progressd: \S+/VKT-progressbar\.log is no .*\n", "", self.stderr())
        for path in self.files():
            shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)
        assert self.status_was_seen or status in expected, f"ended with {status} instead of {expected}: {errors}"
        assert not errors, f"the daemon wrote: {errors}"

    # What it uses.

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def sockets(self):
        """Those of its channels and its display. A thread of the toolkit's opens something else when it has its first turn."""
        links = []
        for path in glob.glob(f"/proc/{self.pid}/fd/*"):
            with contextlib.suppress(FileNotFoundError):  # closed meanwhile
                links.append(os.readlink(path))
        return {link for link in links if link.startswith("socket:")}

    def cpu_seconds(self):
        fields = Path(f"/proc/{self.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Log:
    """What is written to the diagnostic log from now on, by all daemons of the machine."""

    PATHS = ("/var/instrument/VKT-progressbar.log", "/tmp/VKT-progressbar.log")

    def __init__(self):
        self.sizes = {path: os.path.getsize(path) if os.path.exists(path) else 0 for path in self.PATHS}

    def text(self):
        text = ""
        for path, size in self.sizes.items():
            if os.path.exists(path):
                with open(path, errors="replace") as file:
                    file.seek(size)
                    text += file.read()
        return text

    def has(self, text):
        until(lambda: text in self.text(), f'"{text}" in the log')


@functools.lru_cache(None)
def screen(*managers):
    return Screen(*managers)


# It is there before it cares for windows, and loses those that are mapped meanwhile.
OPENBOX = ("openbox --sm-disable --startup 'xprop -root -f _READY 8s -set _READY yes'",)


def on_all_screens(test, but=None):
    """Runs a case, given the mode's setting, in both modes with and without a window manager, but in one."""

    @functools.wraps(test)
    def each(self):
        for self.managers in ((), OPENBOX):
            for mode in ("windowModal=on", "windowModal=off"):
                if (self.managers, mode) != but:
                    with self.alone(mode, managers=self.managers):
                        test(self, mode)

    return each


class Case(unittest.TestCase):
    """Cases on a screen that they share with the file's others; by default without a window manager."""

    managers = ()

    @property
    def screen(self):
        return screen(*self.managers)

    def daemon(self, *arguments, screen=None, **options):
        daemon = Daemon(screen or self.screen, *arguments, **options)
        self.addCleanup(daemon.end)
        return daemon

    @contextlib.contextmanager
    def alone(self, *arguments, **parameters):
        """A part of a case whose daemons end with it."""
        with self.subTest(*arguments, **parameters):
            try:
                yield
            finally:
                self.doCleanups()

    def ask(self, asker, title="Copy", *buttons, text="x"):
        """A box, as soon as it has the keyboard."""
        asker.send(box(title, *buttons, text=text))
        return self.screen.focused(title)

    def repeat_quickly(self):
        """Held keys do, and Return goes up at the case's end."""
        self.screen.run("xset", "r", "rate", "50", "100")
        self.addCleanup(self.screen.run, "xset", "r", "rate")
        self.addCleanup(self.screen.xdotool, "keyup Return")

    def answered(self, asker, keys="Return", title="Copy"):
        """What who asked is told when a user has answered the box with these keys, and it has gone."""
        self.screen.press(keys, title)
        code = asker.answer()
        self.screen.gone(title)
        return code

    def session(self, *entries, arguments=()):
        """A new daemon with an event channel and a command channel that it has taken in."""
        daemon = self.daemon(*arguments)
        events, commands = daemon.events(*entries), daemon.commands()
        commands.progress("activate")
        events.until("isActivated")
        return daemon, events, commands


def main():
    """Runs a file's cases, one at least, and ends as one that is skipped, and says why, if one of them was."""
    result = unittest.main(exit=False, warnings="ignore").result
    for test, reason in result.skipped:
        print(f"skipped: {test.id()} {reason}")
    sys.exit(1 if not result.wasSuccessful() or result.testsRun == 0 else SKIPPED if result.skipped else 0)
