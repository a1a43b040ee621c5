"""`progressctl pipe` with real writers: what it makes of their lines, and how it ends."""

import os
import signal
import subprocess
import time
import urllib.parse

from client import ClientCase, FakeDaemon, Result
from harness import PATIENCE, main, until

# A writer that has not ended when pipe has, and is ended by the script.
WAITING = "exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe {} <&3; s=$?; kill $w 2>/dev/null; exit $s"


class Lines(ClientCase):
    """What the daemon is told."""

    def check_told(self, fake, options, lines, expected):
        """The last percent and text that were told, and whether a bar moved to and fro."""
        result = self.run_script(f"printf '{lines}' | progressctl pipe --no-cancel {options}")
        self.assertEqual(result.status, 0, result.errors)
        percent, text, pulses = 0, None, False
        for message in fake.messages().split("<progress>")[1:]:
            verb, _, rest = message.replace("</progress>", "").partition(":")
            value = rest.partition(";")[2]
            percent = int(value) if verb == "update" else percent
            text = value if verb in ("addText", "updateText") else text
            pulses = pulses or verb == "pulse"
        self.assertEqual((percent, text, pulses), expected)
        return result.errors

    def test_are_read(self):
        fake = FakeDaemon(self.path)
        self.addCleanup(fake.close)
        none = (0, None, False)
        for lines, told, complaint in (
                ("1\\n42", (42, None, False), ""),
                ("99.9\\n", (99, None, False), ""),
                (" 7.5 %%\\r\\n", (7, None, False), ""),
                ("+5\\n", (5, None, False), ""),
                ("5\\n12/24\\n", (12, None, False), ""),
                ("5\\n64 bytes\\n", (64, None, False), ""),
                ("10\\r20\\r30", (30, None, False), ""),
                ("30,5\\n", (30, None, False), ""),
                ("5\\n101\\n102\\n", (100, None, False), "101"),
                ("50\\n-1\\n", (0, None, False), "-1"),
                ("1e300\\n", (1, None, False), ""),
                ("9999999999999\\n", (100, None, False), "99"),
                ("5\\nnan\\ninf\\n", (5, None, False), "nan"),
                ("5\\n%%\\nfast\\nslow\\n", (5, None, False), "%"),
                ("\\n \\n\\r\\n", none, ""),
                ("1\\n#a\\n2\\n#  a; file Ж🙂 \\n", (2, "a; file Ж🙂", False), ""),
                ("#a\\n#\\n", (0, None, False), ""),
                ("#x\\\\ny\\n", (0, "x\ny", False), ""),
                ("#<b>x</b> &lt;y&gt; <span color=\"red\">z</span> &#1046;\\n", (0, "x <y> z Ж", False), ""),
                ("#<i>open & <file>\\n", (0, "<i>open & <file>", False), ""),
                ("#AT&T <u>x</u> a<b\\n", (0, "AT&T x a<b", False), ""),
                ("#</progress>\\0x\\n", (0, "</\u200bprogress>x", False), ""),
                ("pulsate:true\\n40\\n", (0, None, True), ""),
                ("pulsate:true\\n40\\npulsate:false\\n", (40, None, None), ""),
                ("pulsate:true\\n100\\n", (100, None, None), "")):
            with self.subTest(lines):
                if told[2] is None:
                    # Whether it moved in between depends on how fast the lines come.
                    errors = self.run_script(f"printf '{lines}' | progressctl pipe --no-cancel").errors
                    self.assertIn(f"update:0;{told[0]}<" if told[0] < 100 else "update:", fake.messages())
                else:
                    errors = self.check_told(fake, "--slot 0", lines, told)
                self.check_line(errors, complaint)
        self.check_told(fake, "--slot 0 --no-markup", "#<b>x</b>\\n", (0, "<b>x</b>", False))
        self.check_told(fake, "--slot 0 --text 'a\\nb' --percentage 7", "", (7, "a\nb", False))
        self.check_told(fake, "--slot 0 --pulsate", "60\\n", (0, None, True))

    def test_are_told_in_claimed_slots(self):
        fake = FakeDaemon(self.path)
        self.addCleanup(fake.close)
        result = self.run_script("printf '100\\n#x\\n' | progressctl pipe --caption 'a;b' --extra-button Pause")
        self.assertEqual(result.status, 0)
        self.assertEqual(
            fake.messages(), "".join(f"<progress>{each}</progress>" for each in (
                "create:0;a;b", "addButt:1;Pause", "addButt:0;Cancel", "activate", "update:0;100", "addText:1;x",
                "delText:1", "delButt:0", "delButt:1", "remove:0")))

    def test_are_told_as_they_were_meant(self):
        """Labels, captions, and what is given twice or is empty."""
        fake = FakeDaemon(self.path)
        self.addCleanup(fake.close)
        for options, *told in (
                ("--cancel-label 'R&D _quit __x'", "addButt:0;R&&D &quit _x<"),
                ("--cancel-label= --extra-button=", "addButt:0;Cancel<", "activate"),
                ("--title x --title $'a\nb</progress>' --text x --text y --pulsate --pulsate",
                 "create:0;a b</\u200bprogress><", "addText:1;y<"),
                ("--percentage 150 --extra-button '</progress>'", "addButt:1;</\u200bprogress><", "update:0;100<")):
            with self.subTest(options):
                result = self.ctl(f"pipe --slot 0 {options} </dev/null")
                self.assertEqual((result.status, result.errors), (0, ""))
                messages = fake.messages()
                self.assertEqual([each for each in told if each not in messages], [], messages)

    def test_are_told_no_more_than_25_times_a_second(self):
        fake = FakeDaemon(self.path)
        self.addCleanup(fake.close)
        began = time.monotonic()
        script = "(yes 7 | head -n 1000000; for i in $(seq 99); do echo $i; sleep 0.01; done) | progressctl pipe"
        self.assertEqual(self.run_script(script).status, 0)
        updates = fake.messages().count("update:")
        self.assertGreater(updates, 5)
        self.assertLessEqual(updates, (time.monotonic() - began) * 25 + 2)

    def test_may_be_endless(self):
        fake = FakeDaemon(self.path)
        self.addCleanup(fake.close)
        self.assertIn("too long", self.run_script("head -c 9000000 /dev/zero | progressctl pipe").errors)
        result = self.run_script("(printf '#'; head -c 100000 /dev/zero | tr '\\0' x; echo; echo 50) | progressctl pipe")
        self.assertIn("x" * 1023 + "</progress>", fake.messages())
        self.check_line(result.errors, "too long")


class Ends(ClientCase):
    def test_have_the_status(self):
        for script, status, message in (
                ("seq 0 30 | progressctl pipe", 0, ""),
                ("seq 0 30 | progressctl pipe --text= --title= --cancel-label=", 0, ""),
                ("seq 0 30 | progressctl pipe --expect-complete", 6, "ended at 30 percent"),
                ("progressctl pipe --expect-complete -- seq 0 100", 0, ""),
                ("progressctl pipe -- sh -c 'echo 30; exit 7'", 7, ""),
                ("progressctl pipe -- sh -c 'kill -9 $$'", 137, ""),
                ("progressctl pipe -- /nix/command", 127, "/nix/command"),
                ("trap '' TERM; progressctl pipe -- sh -c 'kill -TERM $PPID; sleep 0.2; exit 3'", 3, ""),
                ("progressctl pipe -- printf '%s' --text", 0, "neither a number"),
                ("progressctl pipe -- sh -c 'sleep 3 & echo 100'", 0, ""),
                ("progressctl pipe -- sh -c 'exec >&-; sleep 0.2; exit 5'", 5, ""),
                (WAITING.format("--auto-close").replace("echo 30", "echo 100"), 0, ""),
                ("(echo 100; sleep 0.1; echo 20) | progressctl pipe --expect-complete", 6, "20"),
                ("progressctl pipe --auto-close -- sh -c 'echo 100; sleep 0.2; exit 3'", 3, ""),
                (WAITING.format("--timeout 0.2"), 5, ""),
                ("progressctl pipe --height=9 --width 300 --modal --layout grid --theme dark </dev/null", 0, "--height is"),
                ("progressctl pipe --display :9 </dev/null", 0, "--display is"),
                ("progressctl pipe --icon-name no-such-icon </dev/null", 0, "no icon"),
                ("progressctl pipe --text Please touch x stop </dev/null; test ! -e x", 0, "ignored: touch x stop"),
                ("progressctl pipe --title 'a;b \"</title>' --learn ../../x </dev/null", 0, ""),
                ("progressctl pipe <&-", 0, ""),
                ("progressctl pipe </", 7, "directory"),
                ("progressctl pipe --percentage x </dev/null", 2, "--percentage"),
                ("progressctl pipe --timeout nan </dev/null", 2, "--timeout"),
                ("progressctl pipe --nix </dev/null", 2, "--nix"),
                ("progressctl -i '' pipe </dev/null", 2, "empty"),
                ("progressctl pipe --theme /nix -- true", 7, "/nix"),
                ("DISPLAY= progressctl pipe </dev/zero", 3, "display"),
                ("DISPLAY= progressctl pipe -- sh -c 'exit 9'", 9, "without"),
                ("PROGRESSD=/nix progressctl pipe </dev/zero", 3, "/nix"),
                ("PROGRESSD=false progressctl pipe -- sh -c 'exit 9'", 9, "without"),
                ("chmod 755 $XDG_RUNTIME_DIR/progressd; progressctl pipe -- sh -c 'exit 9'; s=$?;"
                 "chmod 700 $XDG_RUNTIME_DIR/progressd; exit $s", 9, "without")):
            with self.subTest(script):
                result = self.run_script(script)
                self.assertEqual(result.status, status, result.errors)
                self.check_line(result.errors, message)
        self.assertEqual(os.listdir(self.folder), [])

    def press(self, *keys):
        self.screen.focused(self.name)
        self.screen.key(*keys)

    def test_are_the_users(self):
        """Keys, the extra button and the window manager's way to close."""
        waiting = WAITING.replace("exit $s", "echo $s").replace("pipe", "pipe --title $TITLE")
        for name, script, key, printed in (
                ("Cancel", waiting.format(""), "Return", "1\n"),
                ("Escape", waiting.format(""), "Escape", "1\n"),
                ("closing", waiting.format("--cancel-status 9"), "alt+F4", "9\n"),
                ("an extra button", waiting.format("--no-cancel --extra-button 'Nö; no'"), "Return", "Nö; no\n1\n"),
                ("a writer that is ended", "(echo 30; sleep 99) | progressctl pipe --title $TITLE --auto-kill; "
                 "echo ${PIPESTATUS[@]}", "Return", "143 1\n"),
                ("a command", "progressctl pipe --title $TITLE --auto-kill --cancel-status 42 -- "
                 "sh -c 'echo 30; sleep 99'; echo $?", "Return", "42\n"),
                ("closing without Cancel", "progressctl pipe --title $TITLE --no-cancel -- sh -c 'sleep 2; exit 4'; echo $?",
                 "alt+F4", "4\n")):
            with self.subTest(name):
                running = self.begin(script)
                self.press(key)
                result = Result(running)
                self.assertEqual((result.output, result.errors), (printed, ""))
                self.screen.gone(self.name)

    def test_wait_for_ok(self):
        """A user who takes time is not learned, and what is learned is not forgotten."""
        job = "(echo 50; sleep 1.2; echo 100) | progressctl pipe --title $TITLE --wait"
        for key, begin in (("Return", lambda: None), ("Escape", lambda: None), ("alt+F4", self.start_shared)):
            with self.subTest(key):
                begin()
                running = self.begin(job)
                until(lambda: self.learned(self.name), "the end of the run")
                self.assertRaises(subprocess.TimeoutExpired, running.wait, 1.5)
                self.press(key)
                self.assertEqual(Result(running).status, 0)
                self.screen.gone(self.name)
                self.assertRegex(self.ctl("records").output, r"^.*\n.* [12] +1 +\d+\n$")
                os.unlink(self.learned(self.name))

    def test_come_into_a_window_that_was_closed(self):
        self.start_shared()
        self.ctl("bar 9 x")
        self.press("Escape")
        self.screen.gone(self.name)
        running = self.begin("exec progressctl pipe < <(exec sleep 99)")
        self.screen.window(self.name)
        running.terminate()
        running.wait(PATIENCE)

    def test_leave_nothing_behind(self):
        """Pipes on one daemon have slots of their own, and a killed one's are free again."""
        self.start_shared()
        script = "exec progressctl pipe -- sh -c 'echo ready >&2; exec cat'"
        pipes = [self.begin(script, stdin=subprocess.PIPE) for _ in range(10)]
        self.assertEqual({each.stderr.readline() for each in pipes}, {b"ready\n"})
        self.assertEqual(self.ctl("pipe </dev/null").status, 3)
        full = self.ctl("pipe -- sh -c 'exit 9'")
        self.assertEqual(full.status, 9)
        self.check_line(full.errors, "no slot left")
        pipes.pop(2).kill()
        until(lambda: self.ctl("pipe </dev/null").status == 0, "a free slot")
        for each in pipes:
            each.terminate()
            self.assertEqual(each.wait(PATIENCE), -signal.SIGTERM)
        self.screen.gone(self.name)

    def test_outlive_their_daemon(self):
        for script, status in ((WAITING.format(""), 4), ("progressctl pipe -- sh -c 'echo 5; sleep 1; echo 10; exit 3'", 3)):
            with self.subTest(script):
                self.start_shared()
                running = self.begin(script)
                self.screen.window(self.name)
                self.assertEqual(self.ctl("stop").status, 0)
                result = Result(running)
                self.assertEqual(result.status, status)
                self.check_line(result.errors, "daemon")

    def test_take_their_own_daemon_along(self):
        running = self.begin("exec progressctl pipe --title $TITLE < <(exec sleep 99)")
        self.screen.window(self.name)
        running.kill()
        self.screen.gone(self.name)
        until(lambda: not os.listdir(self.folder), "the end of the daemon")

    def learned(self, name):
        """The file of the runs learned under a name, or none."""
        private = f"{self.screen.environment['XDG_STATE_HOME']}/progressd/{urllib.parse.quote(name)}.txt"
        return next(filter(os.path.exists, (private, f"/var/tmp/currentTimestamps_{name}.txt")), None)

    def test_are_learned_by_name(self):
        job = "-- sh -c 'echo 40; sleep 1.3; echo 80; sleep 0.2; exit {}'"
        for options, name, status in (
                (f"--learn '../{self.name}/a'", f"_._{self.name}_a", 0),
                (f"--title '{self.name} b'", f"{self.name} b", 0),
                (f"--title '{self.name} c' --learn ''", f"{self.name} c", None)):
            with self.subTest(options):
                self.assertEqual(self.run_script(f"progressctl pipe {options} {job.format(status or 0)}").status, 0)
                self.assertEqual(bool(self.learned(name)), status is not None)
                if status is not None:
                    self.assertIn(" 1 ", self.ctl(f"-i '{name}' records").output.splitlines()[1][-20:])
                    os.unlink(self.learned(name))


if __name__ == "__main__":
    main()
