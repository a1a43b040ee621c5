"""What the tests of the clients share: progressctl with a daemon's name of its own, and a daemon that is none.

PROGRESSCTL and PROGRESSD name the programs.
"""

import contextlib
import itertools
import os
import re
import socket
import struct
import subprocess
import termios
import threading

from harness import OPENBOX, PATIENCE, Case, start

numbers = itertools.count(1)


class Result:
    def __init__(self, process):
        output, errors = process.communicate(timeout=PATIENCE)
        self.status, self.output, self.errors = process.returncode, output.decode(), errors.decode()


class ClientCase(Case):
    managers = OPENBOX

    def setUp(self):
        self.name = f"client{os.getpid()}-{next(numbers)}"
        self.folder = os.path.join(self.screen.environment["XDG_RUNTIME_DIR"], "progressd")
        os.makedirs(self.folder, mode=0o700, exist_ok=True)
        self.path = os.path.join(self.folder, self.name + ".sock")
        self.environment = {
            **self.screen.environment, "PROGRESS_IDENTIFIER": self.name, "TITLE": self.name,
            "PATH": os.path.dirname(os.environ["PROGRESSCTL"]) + ":" + os.environ["PATH"]}

    def begin(self, script, **options):
        """Runs a script of the shell."""
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return start(["bash", "-c", script], env=self.environment, **streams)

    def run_script(self, script, **options):
        return Result(self.begin(script, **options))

    def ctl(self, arguments):
        return self.run_script("exec progressctl " + arguments)

    def start_shared(self):
        """A daemon for all clients, whose window has this case's name."""
        self.addCleanup(lambda: os.path.exists(self.path) and self.ctl("stop"))
        self.assertEqual(self.ctl("start").status, 0)
        self.assertEqual(self.ctl("configure windowTitle=$TITLE windowModal=off").status, 0)

    def daemon_process(self):
        """The number of the process that listens, by the kernel's word."""
        with socket.socket(socket.AF_UNIX) as probe:
            probe.connect(self.path)
            return struct.unpack("iII", probe.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[0]

    def fake(self, **how):
        fake = FakeDaemon(self.path, **how)
        self.addCleanup(fake.close)
        return fake

    def press(self, *keys, title=None):
        """In a window that is given the keyboard for it."""
        self.screen.focus_on(title or self.name)
        self.screen.key(*keys)

    def in_terminal(self, begin, *program, columns=80):
        """What a program that `begin` starts shows on a terminal."""
        try:
            ours, theirs = os.openpty()
        except OSError:
            self.skipTest("needs a pseudo terminal, of /dev/pts")
        termios.tcsetwinsize(theirs, (24, columns))
        process, shown = begin(*program, stdout=theirs, stderr=theirs), b""
        os.close(theirs)
        with open(ours, "rb", 0) as terminal, contextlib.suppress(OSError):  # which it gives when it is left
            while piece := terminal.read(65536):
                shown += piece
        self.assertEqual(process.wait(PATIENCE), 0)
        return shown.decode()

    def check(self, result, status, complaint=""):
        """How it ended, and what it complained of in one line, if at all."""
        self.assertEqual(result.status, status, result.errors)
        self.check_line(result.errors, complaint)
        return result

    def check_line(self, errors, part):
        self.assertEqual(errors.count("\n"), 1 if part else 0, errors)
        self.assertIn(part, errors)


class FakeDaemon:
    """Answers at a socket as a daemon would, or with an `answer` of its own before it hangs up; keeps what it
    has heard and answered."""

    def __init__(self, path, answer=None, claims=True, silent=False):
        self.path, self.answer, self.claims, self.heard = path, answer, claims, b""
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.bind(path)
        self.socket.listen()
        if not silent:
            self.serve_aside()

    def serve_aside(self):
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        with contextlib.suppress(OSError):
            while True:
                threading.Thread(target=self.attend, args=self.socket.accept()[:1], daemon=True).start()

    def attend(self, channel):
        slots = itertools.chain(range(10), itertools.repeat(-1))
        with contextlib.suppress(OSError), channel:
            if self.answer is not None:
                channel.sendall(self.answer)
                channel.shutdown(socket.SHUT_WR)
            while self.answer != b"" and (piece := channel.recv(65536)):
                for _ in re.findall(b"<claim/>", piece) if self.claims else ():
                    channel.sendall(b"<claimed>%d</claimed>" % next(slots))
                self.heard += piece

    def messages(self):
        """What it has heard since the last call, in order."""
        heard, self.heard = self.heard.decode(), b""
        return re.sub("<claim/>|<events/>", "", heard)

    def close(self):
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()
        os.unlink(self.path)
