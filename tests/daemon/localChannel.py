"""The local channel, byte by byte, and what it keeps others from."""

import contextlib
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from harness import NOBODY, ORDERLY, PATIENCE, SLOWNESS, Case, Log, box, main, progress, resident_kib, scratch, until

MIB = 1 << 20


class LocalChannel(Case):
    def private(self, *arguments, **options):
        """A private daemon, a listener, which does not count as a client, and a client."""
        daemon = self.daemon(*arguments, private=True, **options)
        listener = daemon.local("<events/>")
        client = daemon.local("<claim/>")
        client.item()
        return daemon, listener, client

    def heard(self, listener, client):
        """What the listener hears of what the client has sent."""
        client.progress("activate")
        return [event.replace("totalProgress=0|-1", "0") for event in listener.until("isActivated")[:-1]]

    def test_takes_messages_as_they_come(self):
        shown, hidden = "<progress>addText:0;a</progress>", "<progress>delText:0</progress>"
        daemon, listener, client = self.private()
        client.send(f"{shown}<configuration></configuration>{hidden}")
        self.assertEqual(self.heard(listener, client), ["isShown", "0", "isHidden"])
        # What stands behind the last semicolon that counts is text.
        client.send("<progress>addButt:0;a;b;c</progress><progress>update:0;1;2</progress>")
        self.assertEqual(self.heard(listener, client), ["isShown"])

    def test_numbers_the_answers_of_each_client(self):
        daemon, listener, client = self.private()
        client.send(box("one") + box("two") + "<progress>create:0;x</progress>")
        self.assertEqual(listener.event(), "isShown")
        other = daemon.local(box("three"))
        for title in ("three", "two", "one"):
            self.screen.press("Return", title)
            self.screen.gone(title)
        self.assertEqual([client.item(), client.item()], ["answer 2;1024", "answer 1;1024"])
        self.assertEqual(other.item(), "answer 1;1024")
        # The answers that are open when a client goes go nowhere: its boxes are taken away, and make room for others.
        other.send(box("four") * 40)
        until(lambda: len(self.screen.windows("four")) == 32)
        self.assertTrue(other.close().endswith(b"<answer>41;0</answer>"))
        self.screen.gone("four")
        client.send(box("five"))
        self.screen.press("Return", "five")
        self.assertEqual((self.heard(listener, client), client.item()), (["0"], "answer 3;1024"))

    def test_reserves_slots(self):
        daemon, listener, client = self.private()
        client.progress("addText:1;a", "addButt:2;b")
        other = daemon.local()
        self.assertEqual([other.ask("<claim/>") for _ in range(8)],
                         [f"claimed {slot}" for slot in (3, 4, 5, 6, 7, 8, 9, -1)])
        other.progress("create:3;x", "addButt:3;y", "create:4;z", "update:4;100")
        client.progress("create:9;not its own", "delText:1", "delButt:2")
        self.heard(listener, client)
        other.socket.close()
        # With the row of another in a claimed slot everything is gone.
        self.assertEqual(listener.until("isHidden")[-1], "isHidden")
        self.assertEqual([client.ask("<claim/>"), client.ask("<claim/>")], ["claimed 1", "claimed 2"])

    def test_ends_with_its_last_client(self):
        for name, arguments, last, status in (
                ("left alone", [], "", 0), ("asked to", [], "<exit/>", 0), ("with a base port", ["0"], "<exit/>", None),
                ("stopped", ["0"], "<stop/>", 0), ("one that stays", ["--stay"], "", None),
                ("one that stays is asked to", ["--stay"], "<exit/>", 0)):
            with self.alone(name):
                daemon = self.daemon(*arguments, private="--stay" in arguments)
                listener = daemon.local("<events/>")
                for _ in range(3):
                    daemon.local().close()
                client = daemon.local("<progress>activate</progress>")
                self.assertEqual(listener.event(), "isActivated")
                client.send(last + "<progress>activate</progress>")
                if status is None:
                    self.assertEqual(listener.event(), "isActivated")
                    client.close()
                    daemon.local("<progress>activate</progress>")
                    self.assertEqual(listener.event(), "isActivated")
                    continue
                client.close()
                self.assertEqual(listener.rest(), b"<event>shutDown</event>" if last
                                 else b"<event>isActivated</event><event>shutDown</event>")
                self.assertEqual(daemon.status(), status)
                self.assertFalse(os.path.exists(daemon.path))

    def test_ends_without_clients(self):
        daemon = self.daemon("--stay", "--idle", "1", private=True)
        client = daemon.local("<claim/>")
        time.sleep(1.5 * SLOWNESS)
        self.assertEqual(client.item(), "claimed 0")
        listener = daemon.local("<events/>")
        client.close()
        self.assertEqual((listener.rest(), daemon.status()), (b"<event>shutDown</event>", 0))

    def test_does_not_work_for_the_dead(self):
        """What a killed client has left keeps nobody, but the daemon that others use handles it."""
        for survivor, count in ((False, 30000), (True, 2500)):
            with self.alone(survivor):
                daemon, listener, client = self.private()
                heir = daemon.local("<claim/>") if survivor else None
                client.configure("windowModal=off")  # each message replaces the dialog then
                client.socket.settimeout(PATIENCE if survivor else 0.5)
                with contextlib.suppress(TimeoutError):
                    client.progress("create:0;x", *["activate"] * count, "remove:0")
                listener.event()
                worked = daemon.cpu_seconds() + sum(os.times()[2:4])
                client.socket.close()
                if survivor:
                    self.assertEqual(listener.until("isHidden").count("isActivated"), count)
                else:
                    self.assertEqual(daemon.status(), 0)
                    # Of its own time, or a busy machine would fail it: its life counts among the children's now.
                    self.assertLess(sum(os.times()[2:4]) - worked, 1.5 * SLOWNESS)

    def test_ends_while_one_that_hung_up_has_events_waiting(self):
        daemon, listener, client = self.private()
        half = daemon.local("<events/>")
        half.progress(*["activate"] * 20000)
        half.socket.shutdown(socket.SHUT_WR)
        for _ in range(20000):
            listener.until("isActivated")
        client.send("<exit/>")
        until(lambda: not os.path.exists(daemon.path), "the end")
        for _ in range(5):  # to ask again cuts nothing off
            daemon.process.terminate()
            time.sleep(0.02)
        self.assertEqual((half.rest().count(b"isActivated"), daemon.status()), (20000, 0))

    def test_knows_clients_that_overlap(self):
        daemon = self.daemon(private=True)
        client = daemon.local("<progress>activate</progress>")
        for _ in range(200):
            gone, client = client, daemon.local("<progress>activate</progress>")
            gone.socket.close()
        self.assertEqual(client.ask("<claim/>"), "claimed 0")

    def test_loses_nothing_of_a_client_that_hangs_up(self):
        daemon, listener, client = self.private()
        hasty = daemon.local("<events/>" + "<progress>activate</progress>" * 1000)
        # With events unread this is a reset.
        hasty.socket.close()
        self.assertEqual([listener.event() for _ in range(1000)], ["isActivated"] * 1000)
        # One that only ends its sending gets all its answers: more than the socket itself holds.
        hasty = daemon.local("<events/>" + "<progress>activate</progress><claim/>" * 1000)
        told = hasty.close()
        self.assertEqual((told.count(b"isActivated"), told.count(b"<claimed>")), (1000, 1000))

    def test_has_bounds(self):
        for name, text, survives in (("within", b"x" * (16 * MIB - 100), True), ("beyond", b"x" * (16 * MIB + 1), False)):
            with self.alone(name):
                common = Log()
                daemon, listener, client = self.private("--log", "own.log")
                greedy = daemon.local()
                greedy.send(progress("activate") + b"<progress>" + text)
                self.assertEqual(listener.event(), "isActivated")
                if survives:
                    greedy.send(b"</progress>" + progress("activate"))
                    self.assertEqual(listener.event(), "isActivated")
                else:
                    self.assertEqual(greedy.rest(), b"")
                    self.assertIn("too long", Path(daemon.folder, "own.log").read_text())
                    self.assertNotIn("too long", common.text())

    def test_takes_sixty_four(self):
        daemon, listener, client = self.private()
        clients = [daemon.local("<claim/>") for _ in range(62)]
        self.assertEqual(clients[-1].item(), "claimed -1")
        self.assertEqual(daemon.local().rest(), b"")
        clients[0].close()
        self.assertEqual(daemon.local().ask("<claim/>"), "claimed 1")

    def test_does_not_wait_for_one_who_never_reads(self):
        daemon, listener, client = self.private()
        deaf, silent = daemon.local("<events/>"), daemon.local("<events/>")
        before = resident_kib(daemon.pid)
        stop = threading.Thread(target=lambda: [listener.more() for _ in iter(lambda: b"isHidden" in listener.received, True)])
        batch = progress(*["activate"] * 20000)
        stop.start()
        for _ in range(50):
            client.send(batch)
            listener.received = b""
        client.progress("addButt:0;x", "delButt:0")
        stop.join()
        # Four MiB wait for each, in up to twice the room; the listener may be behind, too.
        self.assertLess(resident_kib(daemon.pid) - before, 32 * 1024 * SLOWNESS)
        # An answer that does not fit ends a channel; another one missed whole events, and hears on.
        channels = daemon.sockets()
        silent.send("<claim/>" * 4)
        until(lambda: daemon.sockets() < channels, "the end of the channel")
        silent.rest()
        while len(deaf.received) < 3 * MIB:
            self.assertTrue(deaf.more())
        deaf.progress("busyOff", "addText:0;x")
        while b"isShown" not in deaf.received[-100:]:
            self.assertTrue(deaf.more())
        heard = re.sub(rb"<event>[^<]*</event>", b"", deaf.received)
        self.assertEqual(heard, b"")

    def test_leaves_nothing_of_those_who_come_and_go(self):
        daemon, listener, client = self.private()
        before = daemon.sockets()
        for count, growth in ((3000, 1 << 20), (10000, 4096)):
            resident = resident_kib(daemon.pid)
            for number in range(count):
                daemon.local("<events/><claim/><progress>update:0;1").socket.close()
                if number % 20 == 0:
                    self.heard(listener, client)
            until(lambda: daemon.sockets() == before, lambda: f"{before} instead of {daemon.sockets()}")
            self.assertLess(resident_kib(daemon.pid) - resident, growth * SLOWNESS)

    def test_serves_no_other_user(self):
        if os.geteuid() != 0:
            self.skipTest("needs the right to become another user (root)")
        daemon, listener, client = self.private()
        path = daemon.path
        # The folder alone keeps others out; the kernel's word does so where somebody has opened it.
        probe = ("import os, socket, sys; os.setgid({0}); os.setuid({0}); s = socket.socket(socket.AF_UNIX);"
                 "s.connect(sys.argv[1]); s.sendall(b'<progress>activate</progress>'); print(s.recv(9))").format(NOBODY)
        for opened, expected in ((False, "PermissionError"), (True, "b''")):
            if opened:
                os.chmod(path, 0o666)
                for folder in list(Path(path).parents)[:2]:
                    os.chmod(folder, 0o755)
                    self.addCleanup(os.chmod, folder, 0o700)
            run = subprocess.run([sys.executable, "-c", probe, path], capture_output=True, text=True)
            self.assertRegex(run.stdout + run.stderr, expected + r"|ConnectionResetError|BrokenPipeError")
        self.assertEqual(self.heard(listener, client), [])

    def test_trusts_only_a_folder_of_its_own(self):
        runtime = Path(scratch(), "planted")
        folder = runtime / "progressd"
        environment = {**self.screen.environment, "XDG_RUNTIME_DIR": str(runtime)}
        for complaint, plant in (("no folder", lambda: folder.symlink_to(tempfile.mkdtemp(dir=scratch()))),
                                 ("open to others", lambda: (folder.mkdir(), folder.chmod(0o750))),
                                 ("somebody else", lambda: (folder.mkdir(0o700), os.chown(folder, NOBODY, NOBODY)))):
            with self.alone(complaint):
                if complaint == "somebody else" and os.geteuid() != 0:
                    self.skipTest("needs the right to give files away (root)")
                runtime.mkdir(0o700)
                self.addCleanup(shutil.rmtree, runtime)
                plant()
                log = Log()
                self.daemon(env=environment)
                log.has("no local socket")
                self.assertEqual(os.listdir(folder), [])
                private = self.daemon(private=True, wait=False, env=environment)
                self.assertEqual(private.status(), 2)
                self.assertIn(complaint, private.stderr())

    def test_has_a_place_without_a_runtime_folder(self):
        for runtime in ("", "relative", "/tmp/nix"):
            with self.alone(runtime):
                daemon = self.daemon(private=True, env={**self.screen.environment, "XDG_RUNTIME_DIR": runtime})
                path = f"/tmp/progressd-{os.getuid()}/{daemon.identifier}.sock"
                until(lambda: os.path.exists(path), path)
                self.assertFalse(os.path.exists("/tmp/nix"))

    def test_takes_its_place_once(self):
        first = self.daemon(private=True)
        first.local().close()
        second = [self.daemon(private=True, wait=False, identifier=first.identifier) for _ in range(4)]
        for daemon in second:
            self.assertEqual(daemon.status(), 1)
            self.assertIn("answers", daemon.stderr())
        # A file that a crash has left behind does not count.
        first.process.kill()
        first.status()
        again = self.daemon(private=True, identifier=first.identifier)
        again.local().close()
        racers = [self.daemon(private=True, wait=False, identifier=first.identifier + "-race") for _ in range(6)]
        until(lambda: sum(racer.process.poll() is None for racer in racers) == 1, "all but one to give up")
        for racer in racers:
            if racer.process.poll() is not None:
                self.assertEqual(racer.status(), 1)
                racer.stderr()
        # Ended by a signal, it says so, and removes nobody else's socket in its place.
        listener = again.local("<events/>")
        os.remove(again.path)
        other = socket.socket(socket.AF_UNIX)
        other.bind(again.path)
        again.process.terminate()
        self.assertEqual((listener.rest(), again.status()), (b"<event>shutDown</event>", ORDERLY))
        self.assertTrue(os.path.exists(again.path))
        os.remove(again.path)

    def test_says_whose_place_it_is_without_a_socket(self):
        daemon, listener, client = self.private()
        os.remove(daemon.path)
        second = self.daemon(private=True, wait=False, identifier=daemon.identifier)
        self.assertEqual(second.status(), 2)
        self.assertRegex(second.stderr(), rf"process {daemon.pid} .*{daemon.identifier}.sock.* gone")
        hindered = daemon.path.replace(".sock", "-hindered.lock")
        os.mkdir(hindered)
        third = self.daemon(private=True, wait=False, identifier=daemon.identifier + "-hindered")
        self.assertEqual(third.status(), 2)
        self.assertRegex(third.stderr(), "lock: Is a directory")
        os.rmdir(hindered)

    def test_sweeps_up_behind_the_dead(self):
        daemon, listener, client = self.private()
        dead = [self.daemon(private=True) for _ in range(3)]
        for each in dead:
            each.local()
            each.process.kill()
            each.status()
        # Neither one that serves is taken for dead, nor one that is just starting.
        starting = [self.daemon(private=True) for _ in range(5)]
        for each in starting:
            each.local()
        until(lambda: sorted(os.listdir(Path(daemon.path).parent)) == sorted(
            each.identifier + suffix for each in (daemon, *starting) for suffix in (".lock", ".sock")), "the sweeping")


if __name__ == "__main__":
    main()
