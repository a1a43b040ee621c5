"""Command line, ports, lock file, and the ways in which the daemon ends or does not."""

import fcntl
import os
import random
import re
import signal
import socket
import subprocess
from pathlib import Path

from harness import PATIENCE, Case, Log, Screen, box, environment_of, main, scratch, start, until

TOO_LONG = "progressd: the identifier is too long\n"


def free_base_port():
    """A port that is free, as is the one after it, and that the system hands out to nobody."""
    while True:
        base = random.randrange(10000, 32000)
        with socket.socket() as first, socket.socket() as second:
            try:
                first.bind(("", base))
                second.bind(("", base + 1))
                return base
            except OSError:
                continue


class StartAndEnd(Case):
    def assert_in_order(self, daemon, status=0):
        self.assertEqual(daemon.status(), status)
        self.assertFalse(os.path.lexists(daemon.lock))
        self.assertEqual(daemon.statistics(), "fileversion=2\n")

    def test_answer_without_a_display(self):
        # The statistics path holds 1023 characters, the lock file's 4095.
        for arguments, status, output, errors in (([], 2, "", "usage: progressd"), (["--help"], 0, "usage: progressd", ""),
                                                  (["--version"], 0, "progressd ", ""), (["x" * 1000], 2, "", TOO_LONG),
                                                  (["x" * 100_000], 2, "", TOO_LONG)):
            with self.subTest(arguments[:1]):
                result = subprocess.run([os.environ["PROGRESSD"], *arguments], env=environment_of(), text=True,
                                        capture_output=True, timeout=PATIENCE)
                self.assertEqual(result.returncode, status)
                for text, expected in ((result.stdout, output), (result.stderr, errors)):
                    self.assertTrue(text.startswith(expected) and bool(text) == bool(expected), text)

    def test_exit(self):
        for on_event_channel in (False, True):
            with self.alone(on_event_channel=on_event_channel):
                daemon, events, commands = self.session()
                log = Log()
                # In the same write as the exit, and behind it: everything else comes first.
                (events if on_event_channel else commands).send("<progress>create:0;x</progress><exit/>")
                self.assertEqual(events.until("shutDown"), ["isShown", "totalProgress=0|-1", "shutDown"])
                self.assertEqual((events.rest(), commands.rest()), (b"", b""))
                self.assert_in_order(daemon)
                for record in ("---- got exit command by client!", "---- saving statistic data with entry count"):
                    self.assertIn(f": {record} result=0000\n", log.text())

    def test_end_with_the_last_client(self):
        daemon = self.daemon()
        first, second, events, other_events = daemon.commands(), daemon.commands(), daemon.events(), daemon.events()
        log = Log()
        first.close()
        # Event channels neither end the daemon nor keep it. (Slot 0 is filled again, so the walk goes on.)
        events.close()
        events = daemon.events()
        other_events.served()
        second.reset()
        events.until("shutDown")
        self.assert_in_order(daemon)
        self.assertIn(": ---- doing exit by last closed connection! result=0000\n", log.text())

    def test_stay_with_a_base_port(self):
        # Of a number the low 16 bits count; 0 and 1 stand for any ports.
        for base in (free_base_port(), free_base_port() + 65536, 0, 1):
            with self.alone(base):
                daemon, events, commands = self.session(arguments=[str(base)])
                if base > 1:
                    self.assertEqual((daemon.command_port, daemon.event_port), (base % 65536, base % 65536 + 1))
                else:
                    self.assertTrue(daemon.command_port > 2 and daemon.event_port > 2)
                log = Log()
                commands.send("<exit/>")
                log.has("---- got exit command by client!")
                commands.close()
                events.send("<exit/>")
                events.served()
                daemon.commands().progress("create:0;x")
                events.until("isShown")

    def test_start_a_second_time(self):
        """With the ports of the first one the second gets none, and says so on standard error."""
        base = free_base_port()
        first, events, _ = self.session(arguments=[str(base)])
        second = self.daemon(str(base), identifier=first.identifier, wait=False)
        until(lambda: first.ports() == (0, 0), "the ports of the second")
        self.assertIn(first.identifier, until(second.stderr, "the message"))
        events.served()

    def test_replace_a_left_over_lock_file(self):
        identifier = f"left{os.getpid()}"
        Path(f"/tmp/HalvornRunning_{identifier}.lock").write_text("11111\n22222\nand more of an older text\n")
        daemon = self.daemon(identifier=identifier, wait=False)
        ports = until(daemon.ports)
        self.assertNotEqual(ports, (11111, 22222))
        # Killed, it leaves the file to its successor.
        daemon.process.kill()
        self.assertEqual(daemon.status(), -signal.SIGKILL)
        successor = self.daemon(identifier=identifier, wait=False)
        until(lambda: successor.ports() != ports and successor.ports(), "the successor")
        successor.command_port, successor.event_port = successor.ports()
        successor.commands().send("<exit/>")
        self.assert_in_order(successor)

    def test_die_at_signals(self):
        """With ports no signal is handled, and nothing is left in order."""
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.alone(number):
                daemon, events, commands = self.session(arguments=["0"])
                daemon.process.send_signal(number)
                self.assertEqual((daemon.status(), events.rest(), commands.rest()), (-number, b"", b""))
                self.assertTrue(os.path.exists(daemon.lock))

    def test_leave_the_files_in_order_without_an_x_server(self):
        screen, log = Screen(), Log()
        daemon = self.daemon(screen=screen)
        events = daemon.events()
        screen.end()
        self.assert_in_order(daemon, 1)
        daemon.stderr()
        self.assertNotIn("\n: ", "\n" + log.text(), "records without their time")

    def test_end_with_the_session(self):
        """A session manager, xsm, is asked to in its menu, although a box is open that only its buttons answer."""
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
        commands.send(box("Copy", 1024, 2048))
        screen.focused("Copy")
        # The menu of the last button, and its last entry.
        screen.xdotool("search --sync --onlyvisible --name ^xsm: mousemove --window %1 140 50 mousedown 1")
        menu = until(lambda: re.search(r"^     0x\w+ \(has no name\): \(\)  (\d+)x(\d+)\+(\d+)\+(\d+)",
                                       screen.run("xwininfo", "-root", "-tree"), re.M), "the menu")
        width, height, x, y = map(int, menu.groups())
        screen.xdotool(f"mousemove {x + width // 2} {y + height // 4}")
        screen.xdotool(f"mousemove {x + width // 2} {y + height * 3 // 4} mouseup 1")
        events.until("shutDown")
        self.assert_in_order(daemon)
        self.assertEqual(commands.answer(), 0)

    def test_survive_standard_error(self):
        """The toolkit prints what a client can provoke; a pipe that is closed or full is no reason to end or wait."""
        for full in (False, True):
            with self.alone(full=full):
                reader, writer = os.pipe()
                if full:
                    os.write(writer, bytes(fcntl.fcntl(writer, fcntl.F_GETPIPE_SZ)))
                daemon = self.daemon(stderr=writer)
                os.close(writer)
                if not full:
                    os.close(reader)
                commands = daemon.commands()
                for _ in range(100):
                    commands.configure("windowFonts=|")
                daemon.events()
                commands.send("<exit/>")
                self.assert_in_order(daemon)


if __name__ == "__main__":
    main()
