#!/usr/bin/env python3
"""The rules of the statistics, asked of the probe beside this file.

usage: statistics.py PROBE rules|files|strangers

`files` needs a /var of its own; `strangers` needs root besides, to be several users.
"""

import contextlib
import os
import pathlib
import random
import shutil
import subprocess
import sys
import time

from harness import NOBODY, SKIPPED, mount, take_namespaces

HERE = pathlib.Path(__file__).resolve().parent
FOLDER, TEMPORARY = pathlib.Path("/var/instrument"), pathlib.Path("/var/tmp")
FIRST, FALLBACK = (folder / "currentTimestamps_id.txt" for folder in (FOLDER, TEMPORARY))
LOG, TARGET = FOLDER / "VKT-progressbar.log", TEMPORARY / "target"
USER, STRANGER = 1000, NOBODY
RECORD, SAVED = "record 95 1 7 1", b"fileversion=2\n000000000001:00000095:00000001:00000007.\n"
failures = []


class Probe:
    def __init__(self, user=None):
        environment = dict(os.environ)
        if user:  # who may not reach the folder of the sanitizers' reports
            for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
                environment[name] = environment.get(name, "") + ":log_path=stderr"
        self.process = subprocess.Popen([sys.argv[1]], stdin=subprocess.PIPE, stdout=subprocess.PIPE, user=user,
                                        group=user, env=environment, encoding="utf-8", errors="surrogateescape")

    def tell(self, *steps):
        self.process.stdin.write(";".join(steps) + "\n")
        self.process.stdin.flush()

    def answers(self):
        return self.process.stdout.readline().split(";")[:-1]

    def ask(self, *steps):
        """The answers to the steps of a case."""
        self.tell(*steps)
        return self.answers()


def check(name, got, expected):
    if got != expected:
        failures.append(name)
        print(f"{name}: {str(got)[-300:]}\n  instead of {str(expected)[-300:]}")


def lines(name):
    return [line for line in (HERE / name).read_text().splitlines() if line and line[0] != "#"]


def check_cases(probe):
    for case in lines("cases.txt"):
        steps = [step.partition("=") for step in case.split(";")]
        answers = probe.ask(*(step for step, _, _ in steps))
        check(case, [answer if sign else "" for (_, sign, _), answer in zip(steps, answers)],
              [expected.strip() for _, _, expected in steps])


def check_going_on(probe):
    """The comparison goes on from where it was; it is made anew beside, while runs grow and records change."""
    rng = random.Random(63)
    records, steps, anew = ["-"] * 5, ["record 100 1 -"] * 5, []

    def some(longest):
        return ".".join(str(rng.randrange(100000) * rng.choice([1] * 50 + [-1])) for _ in range(rng.randint(1, longest)))

    for step in range(300):
        if step % 50 == 0:
            pool = []
            steps.append("start")
        if step % 20 == 0:
            changed = rng.randrange(5)
            records[changed] = some(600)
            steps.append(f"change {changed} {records[changed]}")
        pool.append(some(30))
        steps += [f"pool {pool[-1]}", "nearest", "fits"]
        table = (f"record 100 1 {record}" for record in records)
        anew.append(probe.ask(*table, f"pool {'.'.join(pool)}", "nearest", "fits")[-1])
    check("going on", [fits for step, fits in zip(steps, probe.ask(*steps)) if step == "fits"], anew)


def check_full_table(probe):
    """Another run takes the place of the oldest of the least found. The newest 64 count, and 4094 snapshots."""
    odd = {300: (1, 9000), 700: (1, 8000), 900: (1, 8000)}
    table = [f"record 50 {odd.get(k, (2, k))[0]} 0.{k % 1000} {odd.get(k, (2, k))[1]}" for k in range(1024)]
    for run, place, record in (("0.3", 3, "55:3:0.3"), ("0.1000000", 700, "60:1:0.1000000")):
        records = probe.ask(*table, f"pool {run}", "run 60", "records")[-1].split()
        check(f"full table, {run}", (len(records), records[place]), (1024, record))
    check("full pool", probe.ask(f"pool {'1.' * 5000}", "run 60", "records")[-1].count("."), 4093)
    for old in (1, 2):
        records = [f"record 1000 1 - {old}"] * 65 + ["record 20 1 - 2"] * 64
        check("newest 64", probe.ask(*records, "remaining 0 0")[-1], "20.000")


def loaded():
    """Contents of a file, as Python writes them, and the records that they give."""
    for line in lines("loaded.txt"):
        text, _, records = line.partition(" => ")
        yield text.encode().decode("unicode_escape"), records
    yield "".join(f"{k}:3:7.\n" for k in range(2001)), " ".join(f"{k}:3:7" for k in range(1, 1025))
    yield f"95:3:{'7.' * 32765}7\n96:3:7", f"95:3:{('7.' * 4094)[:-1]} 96:3:7"
    yield f"95:3:{'7.' * 32766}\n96:3:7.\n97:3:{'7.' * 99999}", "96:3:7"


def write(path, text, mode=0o644, owner=0, group=0):
    path.write_bytes(text)
    path.chmod(mode)
    os.chown(path, owner, group)


def clear():
    subprocess.run(["rm", "-rf", FIRST, FALLBACK, TARGET, LOG], check=True)


def check_loading(probe):
    for text, records in loaded():
        write(FIRST, text.encode("latin-1"))
        check(text[:80], probe.ask("load id", "records")[-1], records)
    write(FIRST, b"95:3:7.\n")
    probe.ask("load id", "save")
    check("time of loading", abs(int(FIRST.read_bytes()[14:26]) - time.time()) < 60, True)
    kept = (b"fileversion=2\n001447671234:00000095:00000040:00000000.00001007.-0000015.\n"
            b"002147483647:2147483647:00000007:12345678.100000000.-9999999.-10000000.-2147483648.99999999.:4096\n")
    write(FIRST, kept + b"1:96:0:7.\n1:97:-2:7.\n", 0o640)
    inode = FIRST.stat().st_ino
    check("saved", (probe.ask("load id", "save", "found")[-1], FIRST.read_bytes()), ("40 7 0 -2", kept))
    check("replaced", (oct(FIRST.stat().st_mode), FIRST.stat().st_ino != inode), ("0o100640", True))
    check("leftovers", set(FOLDER.iterdir()), {LOG, FIRST})


def check_places(probe):
    clear()
    check("new", probe.ask("load id", RECORD, "save", "file", "save id", "file")[3::2], [str(FALLBACK), str(FIRST)])
    check("both", (FIRST.read_bytes(), FALLBACK.read_bytes()), (SAVED, SAVED))
    write(FALLBACK, SAVED.replace(b"95", b"96"))
    check("first", probe.ask("load id", "records", "save", "file")[1::2], ["95:1:7", str(FIRST)])
    FIRST.unlink()
    FIRST.mkdir()
    check("blocked", probe.ask("load id", "records", "save id", "file")[1::2], ["96:1:7", str(FALLBACK)])
    clear()
    os.mkfifo(FIRST)
    os.mkfifo(FALLBACK)
    check("pipes", probe.ask("load id", RECORD, "save", "save id", "records")[-1], "95:1:7")
    for name, records in (("x" * 986, ""), ("\udcff", "95:1:7"), ("\udcff", "95:1:7 95:1:7"), ("y" * 219, "95:1:7")):
        probe.ask(f"load {name}", RECORD, "save", f"save {name}")
        check(name[:2], probe.ask(f"load {name}", "records")[-1], records)
    clear()
    FALLBACK.symlink_to("target")
    probe.ask("load id", RECORD, "save")
    check("link", (FALLBACK.is_symlink(), TARGET.read_bytes()), (True, SAVED))
    clear()
    os.umask(0)
    Probe().ask("load id", RECORD, "save")
    check("mask", oct(FALLBACK.stat().st_mode), "0o100644")


def check_full_disk(probe):
    """The old file stays whole, whether or not the new one fits a buffer on its way."""
    clear()
    mount("-t", "tmpfs", "-o", "size=256k", "none", TEMPORARY)
    for count in (10, 300, 1900, 3900):
        FALLBACK.unlink(missing_ok=True)
        probe.ask("load id", f"record 95 1 {'7.' * count} 1", "save")
        old = FALLBACK.read_bytes()
        with open(TEMPORARY / "filler", "wb", buffering=0) as filler, contextlib.suppress(OSError):
            while True:
                filler.write(bytes(4096))
        probe.ask("load id", "pool 0.1001", "run 60")
        check(f"full disk, {len(old)}", (FALLBACK.read_bytes() == old, len(list(TEMPORARY.iterdir()))), (True, 2))
        (TEMPORARY / "filler").unlink()
        probe.ask("load id", "pool 0.1001", "run 60")
        check("disk with room", FALLBACK.read_bytes().count(b"\n"), 3)
    subprocess.run(["umount", TEMPORARY], check=True)


def check_own_files(probe):
    """Those of the user: who may read them, their names, what is kept of the machine's, and who learns beside."""
    clear()
    own = pathlib.Path("/var/state/progressd")
    run = ("start", "pool 0.1050", "run 60")
    write(FALLBACK, SAVED)
    check("taken over", probe.ask("own id", "records", "save id", "records")[1::2], ["95:1:7"] * 2)
    check("nothing learned", own.exists(), False)
    probe.ask("own id", *run)
    check("learned", (probe.ask("own id", "records", "file")[1:], FALLBACK.read_bytes()),
          (["95:1:7 60:1:0.1050", str(own / "id.txt")], SAVED))
    check("modes", [oct(path.stat().st_mode & 0o777) for path in (own, own / "id.txt", own / "lock")], ["0o700", "0o600", "0o600"])
    own.chmod(0o755)
    for name in ("a/b", "a%2Fb", "..", "/", "\udcfe", "n" * 300, "n" * 301):
        probe.ask(f"own {name}", *run)
        check(f"name {name}", probe.ask(f"own {name}", "records")[-1], "60:1:0.1050")
    check("shut", (oct(own.stat().st_mode), len(list(own.glob("*.txt"))), pathlib.Path("/var/state/b.txt").exists()),
          ("0o40700", 8, False))

    for k in range(300):
        write(own / f"old{k}.txt", SAVED)
        os.utime(own / f"old{k}.txt", (k, k))
    check("still used", probe.ask("own old0", "records")[-1], "95:1:7")
    probe.ask("own new", *run)
    check("256 names", {path.name for path in own.glob("*.txt")} >= {"new.txt", "id.txt", "old0.txt", "old299.txt"}, True)
    check("oldest gone", (len(list(own.glob("*.txt"))), (own / "old1.txt").exists()), (256, False))

    both = Probe(), Probe()
    for first, one in enumerate(both):
        one.tell("own shared", "wait 300", *(step for k in range(10) for step in ("start", f"pool 0.{40 * k + 500 * first}", "run 60")))
    for one in both:
        one.answers()
    found = [int(record.split(":")[1]) for record in probe.ask("own shared", "records")[-1].split()]
    check("two learn", sum(found), 20)


def check_log(probe):
    clear()
    probe.ask("load first", "pool 0", "run 5")
    probe.ask("load id", "record 95 2 3.1000.2000.3000", "record 120 1 4.1004.2004.3024", "pool 0.1000.2000",
              "tick 2 0 77", "pool 3145", "tick 3 0 77", "run 47", "save id")
    check("log", [line.split(": ", 1)[1] for line in LOG.read_text().splitlines() if line], lines("log.txt"))


def check_strangers(_):
    """What a user reads and saves: mode, owner and group of the first file, whether it is read, whether it is saved."""
    for mode, owner, group, is_read, is_saved in (
            (0o644, USER, USER, True, True), (0o644, 0, 0, True, False), (0o644, STRANGER, USER, False, False),
            (0o664, USER, USER, True, True), (0o664, USER, STRANGER, False, False), (0o664, 0, USER, False, False),
            (0o666, USER, USER, False, False)):
        clear()
        write(FIRST, SAVED, mode, owner, group)
        write(FALLBACK, SAVED.replace(b"95", b"96"), 0o600, USER, USER)
        records = Probe(USER).ask("load id", "records", "change 0 8", "save", "save id")[1]
        check(f"{mode:o} {owner} {group}", (records, [b"8.\n" in path.read_bytes() for path in (FIRST, FALLBACK)],
                                           b"passing over" in LOG.read_bytes()),
              ("95:1:7" if is_read else "96:1:7", [is_saved, not is_saved], not is_read))
    for owner in (USER, 0, STRANGER):
        clear()
        write(TARGET, SAVED, 0o600, USER, USER)
        FALLBACK.symlink_to("target")
        os.chown(FALLBACK, owner, owner, follow_symlinks=False)
        records = Probe(USER).ask("load id", "records", "record 97 1 8", "save")[1]
        check(f"link of {owner}", (records != "", b"97" in TARGET.read_bytes(), b"passing over" not in LOG.read_bytes()),
              (owner != STRANGER,) * 3)
    for mode, is_written in ((0o600, True), (0o400, False)):
        clear()
        write(FIRST, SAVED + b"x" * 99, mode, USER, USER)
        FOLDER.chmod(0o555)
        Probe(USER).ask("load id", "save id")
        FOLDER.chmod(0o1777)
        check(f"no new files, {mode:o}", FIRST.read_bytes() == SAVED, is_written)


def enter_own_var():
    take_namespaces("--mount")
    mount("-t", "tmpfs", "none", "/var")
    for folder in (FOLDER, TEMPORARY):
        folder.mkdir()
        folder.chmod(0o1777)
    os.environ["XDG_STATE_HOME"] = "/var/state"
    # Others may not enter the folder that it was built in.
    sys.argv[1] = shutil.copy(sys.argv[1], "/var")


def main():
    part = sys.argv[2]
    if part != "rules":
        enter_own_var()
    if part == "strangers" and os.environ["OWN_NAMESPACES"] != "root":
        print("skipped: only root can be several users")
        sys.exit(SKIPPED)
    probe = Probe()
    for one in {"rules": (check_cases, check_going_on, check_full_table),
                "files": (check_loading, check_places, check_full_disk, check_own_files, check_log), "strangers": (check_strangers,)}[part]:
        one(probe)
    sys.exit(f"{len(failures)} failed" if failures else 0)


main()
