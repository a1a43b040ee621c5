"""`progressctl pipe` with real writers: what it makes of their lines, and how it ends."""

import os
import re
import signal
import socket
import subprocess
import time
import urllib.parse

from client import ClientCase, Result
from harness import PATIENCE, Channel, main, until

# A writer that has not ended when pipe has, and is ended by the script.
WAITING = "exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe {} <&3; s=$?; kill $w 2>/dev/null; exit $s"


class Lines(ClientCase):
    """What the daemon is told."""

    def check_told(self, fake, options, lines, expected):
        """The last percent and text that were told, and whether a bar moved to and fro; None where that depends on how
        fast the lines come."""
        result = self.ctl(f"pipe --no-cancel {options} -- printf '{lines}'")
        self.assertEqual(result.status, 0, result.errors)
        percent, text, pulses = 0, None, False
        for message in fake.messages().split("<progress>")[1:]:
            verb, _, rest = message.replace("</progress>", "").partition(":")
            value = rest.partition(";")[2]
            percent = int(value) if verb == "update" else percent
            text = value if verb in ("addText", "updateText") else text
            pulses = pulses or verb == "pulse"
        self.assertEqual((percent, text, pulses if expected[2] is not None else None), expected)
        return result.errors

    def test_are_read(self):
        fake = self.fake()
        none = (0, None, False)
        for lines, told, complaint in (
                ("1\\n42", (42, None, False), ""),
                ("7.5 %%\\r\\n", (7, None, False), ""),
                ("5\\n 20\\n #x\\n+30\\n", (5, None, False), "20"),
                ("5\\n12/24\\n", (12, None, False), ""),
                ("25 (10/40)\\n", (25, None, False), ""),
                ("1e1\\n", (11, None, False), ""),
                ("0x20\\n", (20, None, False), ""),
                ("1 of 4.5/7\\n", (14, None, False), ""),
                ("5\\n6\\0\\0", (6, None, False), ""),
                ("                  12.3%%\\r", (12, None, False), ""),
                ("5\\n64 bytes\\n", (64, None, False), ""),
                ("    1,048,576  45%%    1.00MB/s    0:00:01\\r", (45, None, False), ""),
                ("  1.05M 100%%  9.9MB/s\\r", (100, None, False), ""),
                ("1 of 2, 80%%\\n", (1, None, False), ""),
                ("#  7.5%%\\n", (7, None, False), ""),
                ("dlstatus:1:20.9:Retrieving x\\npmstatus:libc6:amd64:40.5:Unpacking: y\\n", (40, "Unpacking: y", False), ""),
                ("10\\r20\\r30", (30, None, False), ""),
                ("30,5\\n", (30, None, False), ""),
                ("5\\n101\\n102\\n", (100, None, False), "101"),
                ("50\\n-1\\n", (50, None, False), "-1"),
                ("1e300\\n", (100, None, False), "1e300"),
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
                ("#</progress>\\1x\\n", (0, "</\u200bprogress>\x01x", False), ""),
                ("pulsate:true\\n40\\n", (0, None, True), ""),
                ("pulsate:true\\n40\\npulsate:false\\n", (40, None, None), ""),
                ("pulsate:true\\n100\\n", (100, None, None), "")):
            with self.subTest(lines):
                self.check_line(self.check_told(fake, "--slot 0", lines, told), complaint)
        self.check_told(fake, "--slot 0 --no-markup", "#<b>x</b>\\n", (0, "<b>x</b>", False))
        self.check_told(fake, "--slot 0 --text 'a\\nb' --percentage 7", "", (7, "a\nb", False))
        self.check_told(fake, "--slot 0 --pulsate", "60\\n", (0, None, True))
        self.check_told(fake, "--slot 0 --gauge old 8 70 5", "", (5, "old", False))
        self.check_told(fake, "--slot 0 --gauge old 8 70", "30\\nXXX\\n40\\nx\\n2 y\\nXXX\\n", (40, "x\n2 y", False))

    def test_are_told_in_claimed_slots(self):
        fake = self.fake()
        self.assertEqual(self.ctl("pipe --caption 'a;b' --extra-button Pause -- printf '100\\n#x\\n'").status, 0)
        self.assertEqual(
            fake.messages(), "".join(f"<progress>{each}</progress>" for each in (
                "create:1;a;b", "join:0;1", "join:1;1", "join:2;1", "addButt:2;Pause", "addButt:1;Cancel", "activate", "update:1;100", "addText:0;x", "join:0;1",
                "delText:0", "delButt:0", "delButt:1", "delButt:2", "remove:1")))
        self.assertEqual(self.ctl("pipe --title T --slot 9 -- printf '#x\\n'").status, 0)
        messages = fake.messages()
        for told in ("create:9;<", "addText:8;T", "T\nx<"):
            self.assertIn(told, messages)
        # What has failed at 100 is not to pass for done, nor to be full, and the end of the run is not that of the window.
        for options, percent, status, then in (
                ("", 100, 3, "$"), ("--keep-open --timeout 0.5", 30, 5, "<progress>finish:(?!.*;100)")):
            self.assertEqual(self.ctl(f"pipe {options} -- sh -c 'echo {percent}; exit 3'").status, status)
            self.assertRegex(fake.messages(), r"update:(\d);-1</progress><progress>update:\1;(0|30|99)</progress>" + then)

    def test_are_told_of_several_bars(self):
        fake = self.fake()
        self.assertEqual(self.ctl("pipe --bar A --bar=B:NORM -- printf '50\\n2:70\\n2:#x\\n3:9\\n'").status, 0)
        messages = fake.messages()
        for told in ("create:1;A<", "create:2;B<", "update:2;70<", "updateText:2;B: x<"):
            self.assertIn(told, messages)

    def test_tell_the_amount(self):
        fake = self.fake()
        for options, lines, told in (
                ("", "# file 3 of 80, 1/2\\n", "80"), ("", "12/40\\n# 1 of 7\\n", "40"), ("", "copied 0/9\\n", "9"),
                ("--amount 12", "1/3\\n", "12"), ("", "1/2/2024\\n9/8\\n# v1/2.5 a1/2\\n1/0\\n", None)):
            with self.subTest(lines):
                self.ctl(f"pipe {options} -- printf '{lines}'")
                self.assertEqual(re.findall(r"amount:(\d+)<", fake.messages()), [told] if told else [])

    def test_are_told_as_they_were_meant(self):
        """Labels, captions, and what is given twice or is empty."""
        fake = self.fake()
        for options, *told in (
                ("--cancel-label 'R&D _quit __x'", "addButt:1;R&&D &quit _x<"),
                ("--cancel-label= --extra-button=", "addButt:1;Cancel<", "activate"),
                ("--title x --title $'a\nb</progress>' --text x --text y --pulsate --pulsate",
                 "addText:0;a b</\u200bprogress>\ny<", "create:1;<"),
                ("--percentage 150 --extra-button '</progress>'", "addButt:2;</\u200bprogress><", "update:1;100<")):
            with self.subTest(options):
                result = self.ctl(f"pipe --slot 0 --auto-close {options} </dev/null")
                self.assertEqual((result.status, result.errors), (0, ""))
                messages = fake.messages()
                self.assertEqual([each for each in told if each not in messages], [], messages)

    def test_are_told_no_more_than_25_times_a_second(self):
        fake = self.fake()
        began = time.monotonic()
        script = "(yes 7 | head -n 1000000; for i in $(seq 99); do echo $i; sleep 0.01; done) | progressctl pipe --auto-close"
        self.assertEqual(self.run_script(script).status, 0)
        updates = fake.messages().count("update:")
        self.assertGreater(updates, 5)
        self.assertLessEqual(updates, (time.monotonic() - began) * 25 + 2)

    def test_may_be_endless(self):
        fake = self.fake()
        self.assertIn("too long", self.run_script("head -c 9000000 /dev/zero | tr '\\0' x | progressctl pipe --auto-close").errors)
        result = self.run_script("(printf '#'; head -c 100000 /dev/zero | tr '\\0' x; echo; echo 50) | progressctl pipe --auto-close")
        self.assertIn("x" * 1023 + "</progress>", fake.messages())
        self.check_line(result.errors, "too long")

    def test_stand_above_the_bar(self):
        """In a window of its own, also one that comes later."""
        def rows(picture, colour):
            return [y for y in range(picture.height) if colour in picture.colours((0, y, picture.width, 1))]

        text, bar = "ff00ff", "1b66c9"
        script = f"echo 50; sleep 0.5; echo '# <span bgcolor=\"#{text}\">x</span>'; exec sleep 99"
        running = self.begin(f"exec progressctl pipe --theme light --no-cancel < <({script})")
        until(lambda: rows(self.screen.picture(), text), "the text")
        picture = self.screen.settled()
        running.terminate()
        running.wait(PATIENCE)
        self.assertLess(max(rows(picture, text)), min(rows(picture, bar)))


class Ends(ClientCase):
    def test_have_the_status(self):
        for script, status, message in (
                ("seq 0 30 | progressctl pipe --auto-close", 0, ""),
                ("seq 0 30 | progressctl pipe --auto-close --expect-complete", 6, "ended at 30 percent"),
                ("seq 0 30 | progressctl pipe --gauge Text 8 70 0", 0, ""),
                ("progressctl pipe --expect-complete -- seq 0 100", 0, ""),
                ("progressctl pipe -- sh -c 'echo 30; exit 7'", 7, ""),
                ("progressctl pipe -- sh -c 'kill -9 $$'", 137, ""),
                ("progressctl pipe -- sh -c 'kill -PIPE $PPID; sleep 0.2; kill -PIPE $$'", 141, ""),
                ("progressctl pipe -- /nix/command", 127, "/nix/command"),
                ("trap '' TERM; progressctl pipe -- sh -c 'kill -TERM $PPID; sleep 0.2; exit 3'", 3, ""),
                ("progressctl pipe -- printf '%s' --text", 0, "neither a number"),
                ("progressctl pipe -- sh -c 'sleep 3 & echo 100'", 0, ""),
                ("progressctl pipe -- sh -c 'exec >&-; sleep 0.2; exit 5'", 5, ""),
                (WAITING.format("--auto-close").replace("echo 30", "printf '100\\n50\\n'"), 0, ""),
                ("(echo 90; sleep 0.1; echo 20) | progressctl pipe --auto-close --expect-complete", 6, "20"),
                ("progressctl pipe --auto-close -- sh -c 'echo 100; sleep 0.2; exit 3'", 3, ""),
                (WAITING.format("--timeout 0.2"), 5, ""),
                ("progressctl pipe --timeout 0.2 </dev/null", 5, ""),
                ("progressctl pipe --keep-open --timeout 1 -- true", 5, ""),
                ("progressctl pipe --auto-close --progress --height=9 --width 99999 --modal --attach 1 --class=x --default-cancel "
                 "--center --enable-log --icon-name no-such-icon --theme dark </dev/null", 0, ""),
                ("progressctl pipe --auto-close --nix --text Please touch x stop </dev/null; test ! -e x", 0,
                 "ignored: --nix touch x stop"),
                ("progressctl pipe --auto-close --title 'a;b \"</title>' --learn ../../x </dev/null", 0, ""),
                ("progressctl pipe --auto-close <&-", 0, ""),
                ("progressctl pipe </", 7, "directory"),
                ("progressctl pipe --percentage x </dev/null", 2, "--percentage"),
                ("progressctl pipe --timeout nan </dev/null", 2, "--timeout"),
                ("progressctl pipe --amount -1 </dev/null", 2, "--amount"),
                ("progressctl -i '' pipe </dev/null", 2, "empty"),
                ("progressctl pipe --theme /nix -- true", 7, "/nix"),
                ("DISPLAY= progressctl pipe --no-terminal </dev/zero", 3, "display"),
                ("DISPLAY= progressctl pipe --no-terminal -- sh -c 'exit 9'", 9, "without"),
                ("PROGRESSD=/nix progressctl pipe --no-terminal </dev/zero", 3, "/nix"),
                ("PROGRESSD=false progressctl pipe -- sh -c 'exit 9'", 9, "without"),
                ("chmod 755 $XDG_RUNTIME_DIR/progressd; progressctl pipe -- sh -c 'exit 9'; s=$?;"
                 "chmod 700 $XDG_RUNTIME_DIR/progressd; exit $s", 9, "without"),
                ("export XDG_RUNTIME_DIR=$XDG_RUNTIME_DIR/$(printf 'x%.0s' {1..99}); "
                 "mkdir -p $XDG_RUNTIME_DIR; progressctl pipe -- sh -c 'exit 9'", 9, "too long")):
            with self.subTest(script):
                self.check(self.run_script(script), status, message)
        until(lambda: not os.listdir(self.folder), "the end of the daemons")

    def test_are_the_users(self):
        """Keys, the extra button and the window manager's way to close."""
        self.environment["OK"] = "W" * 40  # has a line of its own
        waiting = WAITING.replace("exit $s", "echo $s").replace("pipe", "pipe --title $TITLE --ok-label $OK")
        ended = waiting.replace("exec sleep 99", ":")
        for name, script, key, printed in (
                ("Cancel", waiting.format(""), "Return", "1\n"),
                ("Escape", waiting.format(""), "Escape", "1\n"),
                ("closing", waiting.format("--cancel-status 9"), "alt+F4", "9\n"),
                ("Escape without Cancel", waiting.format("--no-cancel"), "Escape", "1\n"),
                ("OK", ended.format(""), "Return", "0\n"),
                ("OK at 100", waiting.format("").replace("echo 30", "echo 100; echo 50"), "Return", "0\n"),
                ("Escape at the end", ended.format("--no-cancel --pulsate"), "Escape", "1\n"),
                ("OK of a command", "progressctl pipe --keep-open --title $TITLE --ok-label $OK -- sh -c 'exit 3'; echo $?", "Return", "3\n"),
                ("an extra button", waiting.format("--no-cancel --extra-button 'Nö; no'"), "Return", "Nö; no\n1\n"),
                ("a button with a status", waiting.format("--button=gtk-ok:0 --button 'No!x:7'"), "Tab Return", "7\n"),
                ("a command", "progressctl pipe --title $TITLE --auto-kill --cancel-status 42 -- "
                 "sh -c 'echo 30; sleep 99'; echo $?", "Return", "42\n")):
            with self.subTest(name):
                running = self.begin(script)
                if name.startswith("OK"):
                    until(lambda: self.screen.window(self.name).height > 120, "the button")
                self.press(*key.split())
                result = Result(running)
                self.assertEqual((result.output, result.errors), (printed, ""))
                self.screen.gone(self.name)

    def test_are_the_scripts(self):
        running = self.begin("(echo 30; exec sleep 99 2>&-) | progressctl pipe --title $TITLE --auto-kill; echo went on")
        self.press("Escape")
        result = Result(running)
        self.assertEqual((result.status, result.output, result.errors), (-signal.SIGHUP, "", ""))

    def test_wait_for_ok(self):
        """A user who takes time is not learned, and what is learned is not forgotten."""
        job = "(echo 50; sleep 2.4; echo 100) | progressctl pipe --title $TITLE"
        for key, status, begin in (("Return", 0, lambda: None), ("Escape", 1, lambda: None), ("Return", 0, self.start_shared)):
            with self.subTest(key):
                begin()
                running = self.begin(job)
                until(lambda: self.learned(self.name), "the end of the run")
                self.assertRaises(subprocess.TimeoutExpired, running.wait, 1.5)
                self.press(key)
                self.assertEqual(Result(running).status, status)
                self.screen.gone(self.name)
                self.assertRegex(self.ctl("records").output, r"^.*\n.* \d +1 +\d+ .*\n$")
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

    def test_are_cancelled_one_by_one(self):
        """In a window that they share, Escape means the one that has the keyboard."""
        self.start_shared()
        job = "progressctl pipe --title {} < <(echo 30; exec sleep 99); echo $?"
        pipes = []
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(self.path)
            listener = Channel(connection)
            listener.send("<events/>")
            for name in "abc":
                pipes.append(self.begin(job.format(name)))
                listener.until("isActivated")
        self.screen.settled()  # that an activation was handled is told before the window is in front
        self.press("Tab", "Escape")
        self.assertEqual(pipes[1].stdout.readline(), b"1\n")
        self.assertEqual([pipes[0].poll(), pipes[2].poll()], [None, None])
        self.press("alt+F4")
        self.assertEqual([pipes[0].stdout.readline(), pipes[2].stdout.readline()], [b"1\n", b"1\n"])

    def test_leave_nothing_behind(self):
        """Pipes on one daemon have slots of their own, and a killed one's are free again."""
        self.start_shared()
        script = "exec progressctl pipe -- sh -c 'echo ready >&2; exec cat'"
        pipes = [self.begin(script, stdin=subprocess.PIPE) for _ in range(5)]
        self.assertEqual({each.stderr.readline() for each in pipes}, {b"ready\n"})
        own = self.begin("exec progressctl pipe --title $TITLE-own < <(exec sleep 99)")
        self.screen.window(self.name + "-own")
        pipes.pop(2).kill()
        self.assertEqual(self.ctl("pipe --auto-close </dev/null").status, 0)
        for each in [*pipes, own]:
            each.terminate()
            self.assertEqual(each.wait(PATIENCE), -signal.SIGTERM)
        self.screen.gone(self.name)

    def test_outlive_their_daemon(self):
        for script, status in ((WAITING.format(""), 4), ("progressctl pipe -- sh -c 'echo 5; cat; echo 10; exit 3'", 3)):
            with self.subTest(script):
                self.start_shared()
                running = self.begin(script, stdin=subprocess.PIPE)
                self.screen.window(self.name)
                self.assertEqual(self.ctl("stop").status, 0)
                self.check(Result(running), status, "daemon")

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
                    self.assertRegex(self.ctl(f"-i '{name}' records").output.splitlines()[1], r" \d +1 +\d+ +-$")
                    os.unlink(self.learned(name))
        self.start_shared()
        self.assertEqual(self.run_script("progressctl pipe -- sh -c 'echo 100; sleep 1.2; exit 3'").status, 3)
        self.assertIsNone(self.learned(self.name))


class Terminal(ClientCase):
    """Without a display."""

    # A command starts when there is a window, or the line in its place.
    JOB = "progressctl pipe --title $TITLE --percentage 5 --text 'a 1 of 3' -- sh -c 'sleep 0.3; echo 50; echo 50; sleep 1.2; echo 100'"

    def setUp(self):
        super().setUp()
        self.environment = {name: value for name, value in self.environment.items() if not name.startswith(("DISPLAY", "VTE", "TERM", "WT_"))}

    def test_has_plain_lines_elsewhere(self):
        for script, status, lines in ((self.JOB, 0, ["5% a 1 of 3", "50% a 1 of 3", "100% a 1 of 3"]),
                                      ("export DISPLAY=:9999; " + self.JOB, 0, ["5% a 1 of 3", "50% a 1 of 3", "100% a 1 of 3"]),
                                      ("WAYLAND_DISPLAY=none progressctl pipe -- sh -c 'exit 7'", 7, ["0% Progress"]),
                                      ("progressctl pipe -- sh -c 'echo 50; test -z \"$QT_QPA_PLATFORM\" && exit 7'", 7, None),
                                      ("progressctl pipe --timeout 0.3 < <(exec sleep 9)", 5, ["0% Progress"])):
            with self.subTest(script):
                result = self.run_script(script)
                self.assertEqual((result.status, result.output), (status, ""))
                if lines:
                    self.assertEqual([line.strip() for line in result.errors.splitlines()], lines)
        self.assertRegex(self.ctl("-i $TITLE records").output.splitlines()[1], r" \d +[12] +\d+ ")

    def test_has_one_line(self):
        for variables, says in (({}, False), ({"VTE_VERSION": "7800"}, False), ({"VTE_VERSION": "7900"}, True), ({"WT_SESSION": "x"}, True),
                                ({"TERM_FEATURES": "T3PrSc7"}, False), ({"TERM_FEATURES": "T3PSc7"}, True), ({"TERM_PROGRAM": "ghostty"}, True)):
            with self.subTest(variables):
                self.environment.update(variables)
                shown = self.in_terminal(self.begin, self.JOB)
                for name in variables:
                    del self.environment[name]
                self.assertRegex(shown, r"^\r\[#\.{19}\] 5% ([^\r]* )?a 1 of 3\x1b\[K(.|\n)*\r\[#{20}\] 100% ([^\r]* )?a 1 of 3\x1b\[K(.|\n)*\n$")
                self.assertEqual(("\x1b]9;4;1;50\x1b\\" in shown, shown.endswith("\x1b]9;4;0;0\x1b\\\r\n")), (says, says), shown)

    def test_has_no_more_than_the_line_has_room_for(self):
        shown = self.in_terminal(self.begin, "progressctl pipe --text $(printf '複%.0s' {1..60}) -- true")
        self.assertRegex(shown, r"0% 複{26}\x1b")

    def test_is_cancelled_by_the_keyboard(self):
        running = self.begin("exec progressctl pipe --cancel-status 9 < <(echo 5; exec sleep 9)")
        self.assertIn(b"5%", running.stderr.readline())
        running.send_signal(signal.SIGINT)
        self.assertEqual(running.wait(PATIENCE), 9)


if __name__ == "__main__":
    main()
