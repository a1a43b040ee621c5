"""Faults of the world around the daemon: it goes on, or ends in order, and loses no record of its statistics.

In mount and network namespaces of the script's own, for which it takes root or unprivileged user namespaces.
"""

import os
import random
import signal
import socket
import subprocess
import time
from pathlib import Path

from harness import NOBODY, PATIENCE, Case, Log, main, mount, start, take_namespaces, until

LOG = "/tmp/VKT-progressbar.log"
VICTIM = Path("/tmp/victim")
BEFORE = "/var/instrument"  # comes before /tmp and /var/tmp, where it can be written to
# Records that no run of this script comes near to.
RECORDS = [f"{1700000000 + k:012}:{1000 + k:08}:00000001:" + "".join(f"{90000 + 10 * n:08}." for n in range(100))
           for k in range(20)]


def prepare():
    """Mounts, files in /tmp and a network that are the script's own."""
    take_namespaces("--mount", "--net")
    program = Path(os.environ["PROGRESSD"]).read_bytes()
    for folder in ("/tmp", "/var/tmp"):
        mount("-t", "tmpfs", "tmpfs", folder)
    if os.path.isdir(BEFORE):
        mount("-t", "tmpfs", "-o", "ro", "tmpfs", BEFORE)
    # It may have been built in a folder that is hidden now.
    os.environ["PROGRESSD"] = "/tmp/progressd"
    Path("/tmp/progressd").write_bytes(program)
    os.chmod("/tmp/progressd", 0o755)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)


class Faults(Case):
    count = 0

    def running(self, **options):
        """A daemon with records; without a base port it ends with its last command channel, which is kept."""
        Faults.count += 1
        identifier = f"fault{Faults.count}"
        self.path = Path(f"/var/tmp/currentTimestamps_{identifier}.txt")
        self.path.write_text("\n".join(["fileversion=2", *RECORDS]) + "\n")
        daemon = self.daemon(identifier=identifier, **options)
        return daemon, daemon.commands()

    def finish_a_run(self, daemon, channel):
        """A run of more than a second, which the daemon records and saves."""
        events = daemon.events()
        channel.progress("create:0;Copying", "update:0;50")
        events.until("isShown")
        time.sleep(1.2)
        channel.progress("remove:0")
        events.until("isHidden")
        events.served()
        events.close()

    def assert_whole(self, further=0):
        lines = self.path.read_text().split("\n")
        self.assertEqual(lines[:21], ["fileversion=2", *RECORDS])
        self.assertEqual((len(lines) - 22, lines[-1]), (further, ""))

    def end_in_order(self, daemon, channel):
        channel.send("<exit/>")
        self.assertEqual(daemon.status(), 0)
        self.assertFalse(os.path.isfile(daemon.lock))
        self.assert_whole(further=1)

    def in_the_way(self, path, what):
        """Puts something into a file's place; a link leads to what must not be changed."""
        VICTIM.write_text("dear")
        if what == "pipe":
            os.mkfifo(path)
        elif what == "folder":
            os.mkdir(path)
        elif what == "hard link":
            os.link(VICTIM, path)
        elif what == "link":
            os.symlink(VICTIM, path)
        else:
            Path(path).write_text("1\n2\n")
        if what == "another user's":
            if os.environ["OWN_NAMESPACES"] != "root":
                self.skipTest("needs root, to give a file to another user")
            os.chown(path, NOBODY, NOBODY)
        self.addCleanup(lambda: os.path.lexists(path) and (os.rmdir if what == "folder" else os.remove)(path))

    def test_folder_vanishes(self):
        daemon, channel = self.running()
        subprocess.run(["umount", "/var/tmp"], check=True)
        mount("-t", "tmpfs", "tmpfs", "/var/tmp")
        self.finish_a_run(daemon, channel)
        self.end_in_order(daemon, channel)

    def test_log_cannot_be_written(self):
        """As none that is full or read only; and nothing that is no file of this user's is opened."""
        for what in ("full", "read only", "pipe", "link", "hard link", "folder", "another user's"):
            with self.alone(what):
                if os.path.lexists(LOG):
                    os.remove(LOG)
                if what in ("full", "read only"):
                    open(LOG, "w").close()
                    mount("--bind", "/dev/full" if what == "full" else LOG, LOG)
                    self.addCleanup(subprocess.run, ["umount", LOG], check=True)
                    if what == "read only":
                        mount("-o", "remount,bind,ro", LOG)
                else:
                    self.in_the_way(LOG, what)
                before = os.lstat(LOG)
                daemon, channel = self.running()
                self.finish_a_run(daemon, channel)
                self.end_in_order(daemon, channel)
                self.assertIn(LOG, daemon.stderr())
                self.assertEqual(os.lstat(LOG)[:7], before[:7])
                if what.endswith("link"):
                    self.assertEqual(VICTIM.read_text(), "dear")

    def test_lock_file_is_something_else(self):
        for what, status in (("folder", None), ("hard link", None), ("another user's", None), ("pipe", 1), ("link", 1)):
            with self.alone(what):
                identifier = f"lock{what.replace(' ', '')}"
                lock = f"/tmp/HalvornRunning_{identifier}.lock"
                self.in_the_way(lock, what)
                log = Log()
                daemon = self.daemon("5000", identifier=identifier, wait=False)
                if status:
                    self.assertEqual(daemon.status(), status)
                    self.assertIn(lock, daemon.stderr())
                else:
                    until(lambda: socket.socket().connect_ex(("127.0.0.1", 5000)) == 0, "the command server")
                    daemon.event_port = 5001
                    daemon.events()
                    if what == "folder":
                        self.assertTrue(os.path.isdir(lock))
                    else:
                        self.assertEqual((daemon.ports(), os.stat(lock).st_uid), ((5000, 5001), os.getuid()))
                    self.assertEqual("another user" in log.text(), what == "another user's")
                self.assertEqual(VICTIM.read_text(), "dear")

    def test_says_once_that_the_last_channel_closes(self):
        """In its own log, where no other daemon writes."""
        for others, count in ((4, 0), (0, 1)):
            daemon, channel = self.running()
            crowd, log = [daemon.commands() for _ in range(others)], Log()
            for gone in crowd[1:2]:
                gone.close()
            channel.send("<exit/>")
            self.assertEqual(daemon.status(), 0)
            self.assertEqual(log.text().count("doing exit by last closed connection"), count)

    def test_descriptors_run_out(self):
        daemon, channel = self.running()
        used = daemon.descriptors()

        def limit(count):
            subprocess.run(["prlimit", f"--pid={daemon.pid}", f"--nofile={count}:"], check=True)

        # Some are left, but not enough for all clients; the daemon keeps what it needs itself.
        limit(used + 12)
        crowd = [daemon.commands() for _ in range(9)]
        crowd[0].progress("create:0;Copying", "update:0;50")
        self.screen.window()
        time.sleep(1.2)
        crowd[0].progress("remove:0")
        until(lambda: self.path.read_text().count("\n") > 21, "the run in the file")
        self.assert_whole(further=1)
        for other in crowd:
            other.close()
        until(lambda: daemon.descriptors() <= used + 3, "the end of their descriptors")
        # None is left.
        limit(daemon.descriptors())
        crowd = [daemon.commands() for _ in range(5)]
        spent = daemon.cpu_seconds()
        time.sleep(1)
        self.assertLess(daemon.cpu_seconds() - spent, 0.5, "it spins")
        limit(1024)
        crowd.clear()
        daemon.events()
        self.end_in_order(daemon, channel)

    def test_another_machine_is_refused(self):
        """Clients on this machine's own addresses are served."""
        there = start(["unshare", "--net", "sleep", "1000"])
        self.addCleanup(there.kill)
        inside = ["nsenter", f"--net=/proc/{there.pid}/ns/net"]
        until(lambda: os.readlink(f"/proc/{there.pid}/ns/net") != os.readlink("/proc/self/ns/net"), "the other machine")
        for command in (f"ip link add wire0 type veth peer name wire0 netns {there.pid}", "ip addr add 10.77.0.1/24 dev wire0",
                        "ip link set wire0 up"):
            subprocess.run(command.split(), check=True)
        for command in ("ip addr add 10.77.0.2/24 dev wire0", "ip link set wire0 up"):
            subprocess.run([*inside, *command.split()], check=True)
        daemon, channel = self.running()
        events, log = daemon.events(), Log()
        for address in ("127.0.0.1", "127.0.0.2", "10.77.0.1"):
            with socket.create_connection((address, daemon.command_port)) as client:
                client.sendall(b"<progress>activate</progress>")
                events.until("isActivated")
        refused = f"exec 3<>/dev/tcp/10.77.0.1/{daemon.command_port} && read -r -t {PATIENCE} -u 3 x; (($? <= 128))"
        subprocess.run([*inside, "bash", "-c", refused], check=True)
        log.has("refusing connection from another machine")

    def test_killed_while_saving(self):
        """At random moments of the final save, which the first, undisturbed one measures; the file is always whole."""
        chance, interrupted, kills, took = random.Random(1), 0, 60, 0
        course = "".join(f"{second * 1000 + second % 1000:08d}." for second in range(2000))
        path = Path("/var/tmp/currentTimestamps_killed.txt")
        whole = "fileversion=2\n" + "".join(f"{1447671234:012d}:{60 + n:08d}:00000001:{course}\n" for n in range(400))
        path.write_text(whole)
        for kill in range(kills):
            daemon = self.daemon(identifier="killed")
            daemon.commands().send("<exit/>")
            began = time.monotonic()
            if kill:
                time.sleep(chance.uniform(0, took))
                daemon.process.kill()
            interrupted += daemon.status() == -signal.SIGKILL
            took = took or time.monotonic() - began
            self.assertTrue(path.read_text() == whole, f"kill {kill}")
            if os.path.exists(daemon.lock):
                os.remove(daemon.lock)
        self.assertTrue(interrupted, "no save was under way")


if __name__ == "__main__":
    prepare()
    main()
