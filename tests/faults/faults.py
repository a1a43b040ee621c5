#!/usr/bin/env python3
"""usage: faults.py PROGRESSD FAULT

Lets one thing go wrong below a running daemon, and checks that it goes on (or ends in order), that no record of
its statistics is lost, and that all is well again once the fault is gone. Faults of the file system are made in
a mount namespace of the script's own; without the right to make one (exit status 77) they are skipped.
"""

import contextlib
import os
import shutil
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../python"))
from daemon import Daemon, progress, until  # noqa: E402
from screen import Screen  # noqa: E402

SKIPPED = 77
LOG = "/tmp/VKT-progressbar.log"
RECORDS = 20


def check(condition, what):
    if not condition:
        sys.exit(f"FAILED: {what}")


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def in_own_namespace():
    """Starts the script again where its mounts are its own."""
    if "OWN_NAMESPACE" in os.environ:
        return
    unshare = ["unshare", "--map-root-user", "--mount"]
    if subprocess.run([*unshare, "true"], capture_output=True).returncode:
        print("skipped: no mount namespaces here")
        sys.exit(SKIPPED)
    os.environ["OWN_NAMESPACE"] = "1"
    os.execvp(unshare[0], [*unshare, sys.executable, *sys.argv])


def record_lines(count=RECORDS):
    """Records that no run of this script comes near to."""
    return [f"{1700000000 + k:012}:{1000 + k:08}:00000001:" + "".join(f"{90000 + 10 * n:08}." for n in range(100))
            for k in range(count)]


class Statistics:
    """The statistics file of a daemon that is yet to be started, filled with records."""

    def __init__(self, identifier):
        self.path = f"/var/tmp/currentTimestamps_{identifier}.txt"
        self.write()

    def write(self):
        with open(self.path, "w") as file:
            file.write("\n".join(["fileversion=2", *record_lines()]) + "\n")

    def records(self):
        with open(self.path) as file:
            lines = file.read().split("\n")
        check(lines[0] == "fileversion=2" and lines[-1] == "", "the statistics file is not whole")
        return lines[1:-1]

    def check_whole(self, further=0):
        records = self.records()
        check(records[:RECORDS] == record_lines(), "a record was lost")
        check(len(records) == RECORDS + further, f"{len(records)} records instead of {RECORDS + further}")


def identifier(name):
    return f"fault-{name}-{os.getpid()}"


def finish_a_run(daemon):
    """A run of a second, which the daemon records and saves."""
    with daemon.commands() as channel:
        channel.sendall(progress("create:0;Copying", "update:0;50"))
        time.sleep(2.1)
        channel.sendall(progress("remove:0"))
        check(daemon.answers(), "the daemon does not answer after the run")


def end_in_order(daemon):
    with daemon.commands() as channel:
        channel.sendall(b"<exit/>")
        check(daemon.process.wait(30) == 0, f"the daemon ended with {daemon.process.returncode}")
    check(not os.path.isfile(daemon.lock), "the lock file stays")


@contextlib.contextmanager
def running(program, name, **options):
    own = identifier(name)
    statistics = Statistics(own)
    with Screen(), Daemon(program, base_port=None, identifier=own, **options) as daemon:
        daemon.wait_for_ports()
        # Without a base port the daemon ends with its last command channel.
        with daemon.commands():
            yield daemon, statistics


def disk_full(program):
    in_own_namespace()
    mount("-t", "tmpfs", "-o", "size=128k", "tmpfs", "/var/tmp")
    with running(program, "full") as (daemon, statistics):
        filler = "/var/tmp/filler"
        with contextlib.suppress(OSError), open(filler, "wb", buffering=0) as file:
            while True:
                file.write(b"x" * 4096)
        finish_a_run(daemon)
        statistics.check_whole()
        check(len(os.listdir("/var/tmp")) == 2, "a half-written file is left")
        os.remove(filler)
        end_in_order(daemon)
        statistics.check_whole(further=1)


def read_only_directory(program):
    in_own_namespace()
    mount("-t", "tmpfs", "tmpfs", "/var/tmp")
    with running(program, "readonly") as (daemon, statistics):
        mount("-o", "remount,bind,ro", "/var/tmp")
        finish_a_run(daemon)
        statistics.check_whole()
        mount("-o", "remount,bind,rw", "/var/tmp")
        end_in_order(daemon)
        statistics.check_whole(further=1)


def directory_vanishes(program):
    in_own_namespace()
    mount("-t", "tmpfs", "tmpfs", "/var")
    os.mkdir("/var/tmp")
    with running(program, "vanishes") as (daemon, statistics):
        shutil.rmtree("/var/tmp")
        finish_a_run(daemon)
        os.mkdir("/var/tmp")
        end_in_order(daemon)
        statistics.check_whole(further=1)


def log_not_writable(program):
    in_own_namespace()
    if not os.path.exists(LOG):
        open(LOG, "a").close()
    with tempfile.TemporaryDirectory() as directory:
        log = os.path.join(directory, "log")
        open(log, "w").close()
        # A device that is always full takes the opening, but no record.
        for target, options in ((log, ["-o", "remount,bind,ro"]), ("/dev/full", None)):
            mount("--bind", target, LOG)
            if options:
                mount(*options, LOG)
            with running(program, "log") as (daemon, statistics):
                finish_a_run(daemon)
                end_in_order(daemon)
                statistics.check_whole(further=1)
            subprocess.run(["umount", LOG], check=True)


def listening_ports(pid):
    """The command and the event port, which was bound later, of a daemon that could not publish them."""
    descriptors = {}
    for entry in os.listdir(f"/proc/{pid}/fd"):
        with contextlib.suppress(OSError):
            descriptors[os.readlink(f"/proc/{pid}/fd/{entry}")] = int(entry)
    with open("/proc/net/tcp") as table:
        rows = [line.split() for line in table.readlines()[1:]]
    found = [(descriptors[f"socket:[{row[9]}]"], int(row[1].split(":")[1], 16)) for row in rows
             if row[3] == "0A" and f"socket:[{row[9]}]" in descriptors]
    return [port for _, port in sorted(found)] if len(found) == 2 else None


def lock_is_directory(program):
    own = identifier("lock")
    statistics = Statistics(own)
    lock = f"/tmp/HalvornRunning_{own}.lock"
    os.mkdir(lock)
    try:
        with Screen(), Daemon(program, base_port=None, identifier=own) as daemon:
            ports = until(lambda: listening_ports(daemon.pid))
            check(ports, "the daemon does not listen")
            daemon.command_port, daemon.event_port = ports
            with daemon.commands():
                finish_a_run(daemon)
                end_in_order(daemon)
            check(os.path.isdir(lock), "the directory is gone")
            statistics.check_whole(further=1)
    finally:
        os.rmdir(lock)


def limit_descriptors(daemon, count):
    subprocess.run(["prlimit", f"--pid={daemon.pid}", f"--nofile={count}:"], check=True)


def no_descriptors(program):
    with running(program, "descriptors") as (daemon, statistics):
        used = daemon.descriptors()
        # Some are left, but not enough for all clients; the daemon keeps what it needs itself.
        limit_descriptors(daemon, used + 12)
        crowd = [daemon.commands() for _ in range(9)]
        crowd[0].sendall(progress("create:0;Copying", "update:0;50"))
        time.sleep(2.1)
        crowd[0].sendall(progress("remove:0"))
        check(until(lambda: len(statistics.records()) > RECORDS), "the run was not saved")
        statistics.check_whole(further=1)
        for channel in crowd:
            channel.close()
        check(until(lambda: daemon.descriptors() <= used + 3), "descriptors stay in use")

        # None is left.
        limit_descriptors(daemon, daemon.descriptors())
        crowd = [daemon.commands() for _ in range(5)]
        spent = daemon.cpu_seconds()
        time.sleep(2)
        spent = daemon.cpu_seconds() - spent
        print(f"{spent:.2f} s of processor time in 2 s without descriptors")
        check(spent < 1, "the daemon spins")
        limit_descriptors(daemon, 1024)
        for channel in crowd:
            channel.close()
        check(daemon.answers(), "the daemon stays deaf when there are descriptors again")
        end_in_order(daemon)
        statistics.check_whole(further=1)


FAULTS = {"diskFull": disk_full, "readOnlyDirectory": read_only_directory,
          "directoryVanishes": directory_vanishes, "logNotWritable": log_not_writable,
          "lockIsDirectory": lock_is_directory, "noDescriptors": no_descriptors}

FAULTS[sys.argv[2]](os.path.abspath(sys.argv[1]))
print("survived")
