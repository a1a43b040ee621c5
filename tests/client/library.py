"""The client library: what progressctl does not use of it, daemons that do not do their part, and words."""

import os
import re
import socket
import subprocess
import sys
from pathlib import Path

from client import ClientCase
from harness import PATIENCE, main, until

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../../python"))
from progressclient import words as python_words  # noqa: E402

LOCALE = ('progressd: Detected locale "C" with character encoding "ANSI_X3.4-1968", which is not UTF-8.\n'
          'Qt depends on a UTF-8 locale, and has switched to "C.UTF-8" instead.\n')


class Library(ClientCase):
    def probe(self, deed, **options):
        return self.begin(f"exec $LIBRARY_PROBE {self.name} {deed}", **options)

    def check_probe(self, deed):
        self.assertEqual(self.probe(deed).communicate(timeout=PATIENCE), (b"done\n", b""))

    def test_as_its_users_have_it(self):
        self.start_shared()
        probe = self.probe("useAll")
        self.assertEqual(probe.stdout.readline(), b"asked\n")
        for title, key, said in (("second", "Escape", b"second is answered\n"), ("first", "Return", b"done\n")):
            self.screen.focused(title)
            self.screen.key(key)
            self.assertEqual(probe.stdout.readline(), said)
        self.assertEqual(probe.communicate(), (b"", b""))

    def test_data_is_no_error(self):
        fake = self.fake()
        self.check_probe("carry")
        self.assertEqual(re.findall(r"<(\w+)>(.*?)</\1>", fake.messages()), [
            ("progress", "create:0;a</\u200bprogress>;b"),
            ("progress", "update:0;100"), ("progress", "update:0;0"), ("progress", "update:0;-1"),
            ("progress", "amount:0"), ("progress", f"amount:{2 ** 53}"),
            ("configuration", "windowTitle=a\u037e</\u200bconfiguration>;"),
            ("progress", "addText:1;" + 65536 * "x"),
            ("msgbox", "4[#][\u200b#]</\u200bmsgbox>[#][#]16384[#]65536")])

    def test_daemons_that_do_not_get_on(self):
        fake = self.fake(silent=True)
        probe = self.probe("wait", stdin=subprocess.PIPE)
        self.assertEqual(probe.stdout.readline(), b"asked\n")
        fake.serve_aside()
        until(lambda: b"<claim/>" in fake.heard, "the claims")
        self.assertEqual(probe.communicate(b"\n"), (b"done\n", b""))

    def test_full_queue(self):
        self.fake(silent=True).socket.listen(0)
        with socket.socket(socket.AF_UNIX) as ahead:
            ahead.connect(self.path)
            self.check_probe("queue")

    def test_daemons_that_break_off(self):
        for deed, daemon in (("breakOff", {"silent": True}), ("separate", {}), ("goOn", {"answer": b""})):
            with self.alone(deed):
                self.fake(**daemon)
                self.check_probe(deed)

    def test_reasons(self):
        program = os.path.join(self.screen.environment["XDG_RUNTIME_DIR"], "daemon")
        for said, reason in (
                (LOCALE + "progressd: could not connect to display \n\n", "could not connect to display"),
                ("progressd: its reason\nprogressd: This application failed to start\n\nplugins:\n", "its reason"),
                ("one\nno prefix\n", "no prefix"), ("", "")):
            Path(program).write_text(f"#!/bin/sh\ncat >&2 <<'END'\n{said}END\n")
            os.chmod(program, 0o755)
            with self.subTest(said):
                result = self.run_script(f"PROGRESSD={program} exec progressctl start")
                self.assertRegex(result.errors, f"^progressctl: the daemon ended before it was ready.*{reason}\n$")

    def test_words(self):
        """What stands a second time, since it cannot include the words, is the same."""
        printed = subprocess.run([os.environ["PRINT_WORDS"]], check=True, stdout=subprocess.PIPE, text=True).stdout
        words = [line.split() for line in printed.splitlines()]
        buttons = {word[1]: int(word[2]) for word in words if word[0] == "button"}
        self.assertEqual(python_words.BUTTONS, buttons)
        self.assertEqual(list(python_words.ICONS), [word[1] for word in words if word[0] == "icon"])
        header = Path(__file__).resolve().parents[2] / "client/progressClient.h"
        named = dict(re.findall(r"^ {8}(\w+) = (0x[0-9a-f]+),$", header.read_text(), re.M))
        camel = {re.sub("-(.)", lambda part: part[1].upper(), name): number for name, number in buttons.items()}
        self.assertEqual({name: int(number, 16) for name, number in named.items()}, camel)


if __name__ == "__main__":
    main()
