"""Whatever a client sends, and by whatever way in, the others are served. (A daemon that crashes fails the test by itself.)"""

import os
import random
import subprocess

from harness import Case, Daemon, main, progress

WIDE = "W" * 100_000
VALUES = ["0", "1", "9", "10", "-1", "-2147483648", "2147483647", "4294967296", "50", "x", " 3", "", "%p%n%s", "<progress>",
          "\xff\xfe", "#1", "Arial,8", "Arial,99999", "/dev/null", ";" * 2000]
COMMANDS, SETTINGS = [], []
# All words of the protocol, as the program PRINT_WORDS has them: kind, word, and what belongs to it.
for kind, word, *more in map(str.split, subprocess.check_output([os.environ["PRINT_WORDS"]], text=True).splitlines()):
    if kind == "command":
        COMMANDS.append(word)
    elif kind == "setting":
        SETTINGS.append(word)
        VALUES += more[1:]


def messages(chance, tag, keywords, separator):
    """Messages with values that nobody expects."""
    return "".join(f"<{tag}>{chance.choice(keywords)}"
                   f"{separator.join(chance.choices(VALUES, k=chance.randrange(1, 7)))}</{tag}>" for _ in range(200))


def texts(chance):
    return {
        "random bytes": chance.randbytes(500_000),
        "random commands": messages(chance, "progress", COMMANDS, ";"),
        "megabytes without a tag": b"<" * 17_000_000,
        "large captions": progress(f"create:0;{WIDE}", f"addText:1;{WIDE}", f"addButt:2;{WIDE}",
                                   "updateText:1;" + "\n" * 100_000),
        "many updates": progress("update:0;1") * 50_000,
        "large message box": f"<msgbox>1[#]{WIDE}[#]{WIDE}{'[#]1024' * 1000}</msgbox>",
        "large assertion": "<assert>" + "if (a < b)\n" * 10_000 + "</assert>",
        "random configuration": messages(chance, "configuration", SETTINGS, "|"),
        "extreme places": "<configuration>busyIndicator=0|0|2147483647|2147483647|empty;"
                          "screenGeometry=2147483647,2147483647;paintOffset=2147483647|2147483647</configuration>",
        "random commands with them": messages(chance, "progress", COMMANDS, ";"),
        "claims and listeners": b"<claim/><events/>" * 20_000,
    }


class BadInput(Case):
    def test_is_survived(self):
        """One after the other to the same daemon, each by a client that goes then."""
        for mode in ("on", "off"):
            for way in (Daemon.commands, Daemon.local):
                with self.alone(windowModal=mode, way=way.__name__):
                    daemon, events, other = self.session(f"windowModal={mode}")
                    for name, text in texts(random.Random(20240229)).items():
                        with self.subTest(name):
                            client = way(daemon)
                            client.send(text)
                            client.close()
                            events.served()
                    other.send("<exit/>")
                    events.until("shutDown")

    def test_large_messages_arrive_whole(self):
        daemon, events, commands = self.session()
        commands.progress("create:0;" + "x" * 15_000_000)
        events.until("isShown")
        for byte in progress("remove:0"):
            commands.send(bytes([byte]))
        events.until("isHidden")


if __name__ == "__main__":
    main()
