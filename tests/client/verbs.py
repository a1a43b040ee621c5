"""The verbs of progressctl, apart from `pipe`: what they send, and what they make of what comes back."""

import os
import re
import signal
import subprocess
import time
from pathlib import Path

from client import ClientCase, Result
from harness import NOBODY, PATIENCE, main, scratch, until


class Verbs(ClientCase):
    def test_refuse(self):
        for arguments, status, message in (
                ("", 2, "a verb is missing"),
                ("nix", 2, "nix"),
                ("nix --help", 2, 'no verb "nix"'),
                ("bar 0 x --nix", 2, "--nix"),
                ("bar 0", 2, "TEXT"),
                ("bar 10 x", 2, "SLOT"),
                ("update 0 5x", 2, "PERCENT"),
                ("update 0 101", 2, "PERCENT"),
                ("start 70000", 2, "--ports"),
                ("--limit nan activate", 2, "--limit"),
                ("amount 1.5", 2, "no amount"),
                ("ask x --timeout inf", 2, "--timeout"),
                ("-i '' stop", 2, "empty"),
                ("-i a/b activate", 2, "identifier"),
                (f"-i {'x' * 200} activate", 2, "too long"),
                ("ask x --icon nix", 2, "nix"),
                ("ask x nix", 2, 'no button "nix"; there are ok,'),
                ("configure Window=1", 2, 'no setting "Window"'),
                ("configure", 2, "nothing to configure"),
                ("configure windowTheme=pink", 2, "pink"),
                ("configure --file /nix", 7, "/nix"),
                ("start --theme /nix", 7, "/nix"),
                ("update 0 5", 3, f"/{self.name}.sock"),
                ("stop", 3, "no daemon"),
                ("records", 7, "currentTimestamps_"),
                ("--help >/dev/full", 7, "cannot be written")):
            with self.subTest(arguments):
                result = self.check(self.ctl(arguments), status, message)
                self.assertTrue(result.errors.startswith("progressctl: "), result.errors)

    def test_send(self):
        fake = self.fake()
        for arguments, message in (
                ("bar 3 Copying", "<progress>create:3;Copying</progress>"),
                ("bar 3 'a; b; Ж🙂 <exit/>'", "<progress>create:3;a; b; Ж🙂 <exit/></progress>"),
                ("bar 3 '</progress>'", "<progress>create:3;</\u200bprogress></progress>"),
                ("bar 3 -- -x", "<progress>create:3;-x</progress>"),
                ("bar 3 ''", "<progress>create:3;</progress>"),
                ("update 3 -1", "<progress>update:3;-1</progress>"),
                ("update 3 50.5", "<progress>update:3;50</progress>"),
                ("update 3 50%", "<progress>update:3;50</progress>"),
                ("pulse 3", "<progress>pulse:3</progress>"),
                ("remove 3", "<progress>remove:3</progress>"),
                ("text 1 update", "<progress>addText:1;update</progress>"),
                ("update-text 1 x", "<progress>updateText:1;x</progress>"),
                ("button 9 Stop", "<progress>addButt:9;Stop</progress>"),
                ("activate", "<progress>activate</progress>"),
                ("amount 9007199254740992", "<progress>amount:9007199254740992</progress>"),
                ("resume", "<progress>messageStop</progress>"),
                ("busy on", "<configuration>busyPlace=centre;</configuration><progress>busyOn</progress>"),
                ("configure windowTitle=a=b windowModal=on 'windowStyle=#fff|Dark Blue|'",
                 "<configuration>windowTitle=a=b;windowModal=on;windowStyle=#fff|Dark Blue|;</configuration>"),
                ("configure --file dark", "<configuration>windowTheme=dark;</configuration>"),
                ("send '<x>;y'", "<x>;y"),
                # With whoever answers nothing, the message is all that comes of it.
                ("ask --timeout 0.2 --title Copy --icon Warning --default NO-To_all Sure? YES notoall",
                 "<msgbox>2[#]Copy[#]Sure?[#]16384[#]131328</msgbox>"),
                ("ask --timeout 0.2 Sure?", "<msgbox>4[#]Question[#]Sure?[#]16384[#]65536</msgbox>"),
                ("assert --timeout 0.2 a;b".replace(";", "\\;"), "<assert>a;b</assert>")):
            with self.subTest(arguments):
                result = self.ctl(arguments)
                self.assertEqual(result.status, 5 if "--timeout" in arguments else 0, result.errors)
                self.assertEqual(fake.messages(), message)

    def test_start_one_daemon_and_stop_it(self):
        for ports in ("", " --ports 0"):
            with self.subTest(ports):
                callers = [self.begin("progressctl start" + ports) for _ in range(4)]
                results = [Result(each) for each in callers]
                self.assertEqual({result.status for result in results}, {0}, [each.errors for each in results])
                self.assertEqual(sum("already runs" in result.errors for result in results), 3)
                # All are told about the one that serves.
                self.assertEqual(len({result.output for result in results}), 1)
                self.assertEqual(self.ctl("start --ports 9").status, 3)
                self.assertEqual(self.ctl("update 0 5").status, 0)
                callers = [self.begin("progressctl stop") for _ in range(8)]
                self.assertLessEqual({Result(each).status for each in callers}, {0, 3})
                self.assertFalse(os.path.exists(self.path))

    def test_leave_no_daemon_that_comes_up_late(self):
        folder = scratch()
        program = Path(folder, "program")
        program.write_text(f"#!/bin/sh\nmkdir {folder}/first || sleep 0.5\nexec {os.environ['PROGRESSD']} \"$@\"\n")
        program.chmod(0o700)
        self.environment["PROGRESSD"] = str(program)
        callers = [self.begin("progressctl start") for _ in range(2)]
        self.assertEqual([Result(each).status for each in callers], [0, 0])
        self.assertEqual(self.ctl("stop").status, 0)
        time.sleep(1)
        self.assertFalse(os.path.exists(self.path))

    def test_start_for_as_long_as_it_is_used(self):
        self.assertEqual(self.ctl("start --idle 1").status, 0)
        until(lambda: not os.path.exists(self.path), "the end of a daemon that nobody uses")

    def test_start_on_no_port_that_is_taken(self):
        first = self.ctl("start --ports 0")
        self.addCleanup(self.ctl, "stop")
        ports = Path(f"/tmp/HalvornRunning_{self.name}.lock").read_text().split()
        self.assertEqual(first.output.split(), ports)
        self.check(self.ctl(f"-i {self.name}x start --ports {ports[0]}"), 3, "is taken")
        self.assertFalse(os.path.exists(self.path.replace(".sock", "x.sock")))

    def test_ask(self):
        self.start_shared()
        for arguments, title, key, printed, status in (
                ("ask Sure? yes no --default yes --title Копия", "Копия", "Return", "yes", 0),
                ("ask Sure? save discard cancel", "Question", "Escape", "cancel", 1),
                ("assert nix", "Zerbak Quillet Assertion", "Escape", "abort", 1)):
            with self.subTest(arguments):
                asking = self.begin("progressctl " + arguments)
                self.screen.press(key, title)
                result = Result(asking)
                self.assertEqual((result.output, result.status), (printed + "\n", status), result.errors)
                self.screen.gone(title)

    def test_print_events_as_they_come(self):
        self.start_shared()
        heard = Path(scratch(), "heard")
        listening = self.begin("exec progressctl events", stdout=heard.open("w"))
        for arguments, event in (("activate", "isActivated"), ("bar 0 x", "isShown"), ("update 0 50", "totalProgress=50|-1")):
            # The first try may come before it listens.
            until(lambda: self.ctl(arguments) and event + "\n" in heard.read_text(), event)
        self.assertEqual(self.ctl("stop").status, 0)
        self.assertEqual((listening.wait(PATIENCE), listening.stderr.read()), (0, b""))
        self.assertTrue(heard.read_text().endswith("shutDown\n"), heard.read_text())

    def test_end_events_with_their_reader(self):
        self.start_shared()
        self.assertEqual(self.run_script("progressctl events | :; echo ${PIPESTATUS[0]}").output, "0\n")

    def test_believe_no_stranger(self):
        """Folders and sockets that are not this user's own."""
        aside = os.path.join(scratch(), "aside")
        fake = self.fake()
        for name, message, plant, undo in (
                ("an open folder", self.folder + " is", lambda: os.chmod(self.folder, 0o755), lambda: os.chmod(self.folder, 0o700)),
                ("a link", "alone", lambda: (os.rename(self.folder, aside), os.symlink(aside, self.folder)),
                 lambda: (os.unlink(self.folder), os.rename(aside, self.folder))),
                ("a file", "no socket", lambda: (os.rename(self.path, aside), Path(self.path).touch()),
                 lambda: os.rename(aside, self.path)),
                ("another's socket", "no socket", lambda: os.chown(self.path, NOBODY, -1), lambda: os.chown(self.path, 0, -1)),
                ("another's folder", "alone", lambda: os.chown(self.folder, NOBODY, -1), lambda: os.chown(self.folder, 0, -1))):
            with self.subTest(name):
                if "another's" in name and os.geteuid() != 0:
                    self.skipTest("needs the right to give files away (root)")
                plant()
                result = self.ctl("activate")
                undo()
                self.check(result, 3, message)
        self.assertEqual(fake.messages(), "")

    def test_believe_no_pretender(self):
        for answer, arguments, status, message in (
                (b"<answer>1;", "ask x", 4, "hung up"),
                (b"<event>isShown</event><answer>2;0</answer>", "ask x", 4, "hung up"),
                (b"x" * 100000 + b"<event>" + b"x" * 100000, "events", 4, "no progress daemon"),
                (None, "stop", 3, "no daemon")):
            with self.alone(answer and answer[-20:]):
                self.fake(answer=answer, claims=False)
                self.check(self.ctl(arguments), status, message)

    def test_keep_to_the_limit(self):
        """On who listens and never answers, and on a daemon that is stopped."""
        with self.alone():
            self.fake(silent=True)
            for arguments in ("update 0 5", "events", "ask x", "stop", "pipe"):
                self.check(self.ctl("--limit 0.3 " + arguments), 5, "in time")
        slow = "export PROGRESSD=$XDG_RUNTIME_DIR/slow; echo 'exec sleep 99' >$PROGRESSD; chmod +x $PROGRESSD; "
        for arguments in ("start", "pipe --no-terminal"):
            self.check_line(self.run_script(slow + "progressctl --limit 0.3 " + arguments).errors, "in time")
        self.start_shared()
        listening = self.begin("exec progressctl --limit 1 events")
        # Nothing but silence for more than the limit is no failure.
        self.assertRaises(subprocess.TimeoutExpired, listening.wait, 1.5)
        daemon = self.daemon_process()
        os.kill(daemon, signal.SIGSTOP)
        self.addCleanup(lambda: os.path.exists(f"/proc/{daemon}") and os.kill(daemon, signal.SIGCONT))
        self.assertEqual(Result(listening).status, 5)
        self.assertEqual(self.ctl("stop").status, 0)

    def test_show_records(self):
        file = os.path.join(scratch(), "runs")
        for text, ends in (("fileversion=2\n000000086400:00000095:00000003:00000000.00001007.:80\n", [" 95 3 2 80"]),
                           ("00000095:00000003:00000000.00001007.\r\n0:0:0\nx\n12:1:5.\n", ["- 95 3 2 -", "- 12 1 1 -"])):
            Path(file).write_text(text)
            result = self.check(self.ctl(f"records --file {file}"), 0)
            head, *rows = [" ".join(line.split()) for line in result.output.splitlines()]
            self.assertEqual(head, "run last seen seconds times snapshots amount")
            self.assertTrue(len(rows) == len(ends) and all(map(str.endswith, rows, ends)), rows)

    def test_are_completed(self):
        """The lists that the shells have, and the manual, know every verb and option that the program has."""
        source = Path(__file__).resolve().parents[2]
        completions = [f"progressctl/completions/{name}" for name in ("_progressctl", "progressctl.bash", "progressctl.fish")]
        words = set(re.findall(r"^  ([a-z][a-z-]*) ", self.ctl("--help").output.partition("Subcommands:")[2], re.M))
        self.assertIn("records", words)
        for verb in sorted(words):
            words |= set(re.findall(r"^  (?:-h,)?(--[a-z-]+)", self.ctl(f"{verb} --help").output, re.M))
        buttons = set(re.findall(r"[a-z-]+", self.ctl("ask --help").output.rpartition("Buttons: ")[2].partition(".")[0]))
        for place in ["docs/man/progressctl.1", *completions]:
            text = set(re.findall(r"[A-Za-z-]+[A-Za-z]", Path(source, place).read_text().replace("\\-", "-")))
            if not place.endswith(".bash"):
                text |= {"--" + each.lstrip("-") for each in text}
            # The shells get the buttons, and the settings, when they are built.
            self.assertEqual((words | buttons if place.endswith(".1") else words) - text, set(), place)


if __name__ == "__main__":
    main()
