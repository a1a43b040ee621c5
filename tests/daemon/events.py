"""What the commands tell the event channels."""

from harness import Case, main, progress, until

# What is sent, command by command, and what comes until the "activate" that follows is answered.
COMMANDS = {
    "a run": ("create:0;Copying update:0;35 update:0;35 remove:0",
              "isShown totalProgress=0|-1 totalProgress=35|-1 isHidden totalProgress=0|-1"),
    "average of two bars": ("create:0;a create:9;b update:9;99 remove:0",
                            "isShown totalProgress=0|-1 totalProgress=49|-1 totalProgress=99|-1"),
    "hidden bars do not count": ("create:0;a create:1;b update:1;50 remove:1 create:1;c",
                                 "isShown totalProgress=0|-1 totalProgress=25|-1 totalProgress=0|-1"),
    "shown once by whatever comes first": ("addButt:3;Stop addText:1;one delButt:3 delText:1",
                                           "isShown totalProgress=0|-1 isHidden"),
    "shown again": ("addButt:0;a delButt:0 addButt:1;b", "isShown isHidden isShown"),
    "a bar that pulses keeps its percent": ("create:0;a update:0;40 create:1;b pulse:0 update:1;80",
                                            "isShown totalProgress=0|-1 totalProgress=40|-1 totalProgress=20|-1 "
                                            "totalProgress=60|-1"),
    "cancelled bar": ("create:2;a update:2;-1", "isShown totalProgress=0|-1 totalProgress=100|-1"),
    "values out of range": ("create:0;a update:0;101 update:0;-2 update:0;2147483648 update:0;7",
                            "isShown totalProgress=0|-1 totalProgress=7|-1"),
    "what is no number is 0": ("create:x;a update:x;50 update:0;y remove:",
                               "isShown totalProgress=0|-1 totalProgress=50|-1 totalProgress=0|-1 isHidden"),
    "bar restarts": ("create:0;a update:0;60 create:0;b",
                     "isShown totalProgress=0|-1 totalProgress=60|-1 totalProgress=0|-1"),
    "wrong number of parts": ("create:0 create:0;a;b addText:1;a;b addButt:1 updateText:1", ""),
    "empty parts count": ("create:; remove:0; delText:0;1 update:0;5;", "isShown totalProgress=0|-1"),
    "not commands": ("Create:0;x creat activat create;0;x \tcreate:0;x", ""),
    "prefix decides": ("activate:now busyOnly messageStartle", "isActivated"),
    "slots that do not exist": ("create:-1;x create:10;x addText:10;x addButt:10;x addButt:-1;x remove:10 "
                                "updateText:11;x", ""),
    "text line over a bar": ("create:0;a addText:0;b updateText:0;c delText:0",
                             "isShown totalProgress=0|-1 isHidden"),
    "bar under a text line": ("addText:4;b create:4;a remove:4", "isShown totalProgress=0|-1 isHidden"),
    "removing what is not there": ("remove:3 delText:9 delButt:3", "totalProgress=0|-1"),
    "hiding is no end": ("create:0;a update:0;5 messageStart messageStop activate messageStart remove:0",
                         "isShown totalProgress=0|-1 totalProgress=5|-1 isActivated isHidden totalProgress=0|-1"),
}


class Events(Case):
    def test_commands(self):
        for name, (payloads, expected) in COMMANDS.items():
            for mode in ("on", "off"):
                with self.alone(name, windowModal=mode):
                    daemon, events, commands = self.session(f"windowModal={mode}")
                    for payload in payloads.split(" "):
                        commands.progress(payload)
                    commands.send(progress("activate") + b"<exit/>")
                    received = events.until("shutDown")
                    if mode == "off":
                        # A copy has not averaged its bars yet: the first average may come twice.
                        received = [event for event, before in zip(received, [""] + received)
                                    if event != before or not event.startswith("totalProgress=")]
                    self.assertEqual(received, f"{expected} isActivated shutDown".split())

    def test_leave_soon_in_a_long_batch(self):
        """By either way in, and however many messages stand in one read."""
        daemon, events, commands = self.session("windowModal=off")
        for is_local in (False, True):
            client, listener = (daemon.local(), daemon.local("<events/>")) if is_local else (commands, events)
            listener.served()

            def hears_some_early():
                client.progress(*["create:0;x", "remove:0"] * 1000, "activate")
                listener.more()
                is_early = b"isActivated" not in listener.received
                self.assertEqual(listener.until("isActivated").count("isShown"), 1000)
                return is_early

            until(hears_some_early, "an event before its batch is done")  # unless the test had no turn meanwhile


if __name__ == "__main__":
    main()
