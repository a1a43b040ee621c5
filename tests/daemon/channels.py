"""Many clients, few clients, and text that arrives in odd pieces."""

import os
import signal

from harness import Case, main, progress


class Channels(Case):
    def test_refuse_the_eleventh(self):
        daemon = self.daemon()
        events, channels = daemon.events(), [daemon.commands() for _ in range(10)]
        self.assertEqual(daemon.commands().rest(), b"")
        # The last of the ten is served, and so is one that takes the place of another.
        channels[-1].progress("create:0;x")
        events.until("isShown")
        channels[4].close()
        late = daemon.commands()
        late.progress("remove:0")
        events.until("isHidden")
        # Slot 0 is filled first.
        also = [daemon.events() for _ in range(8)]
        also.append(daemon.connect(daemon.event_port))
        events.close()
        first = daemon.events()
        late.progress("activate")
        for channel in (first, *also):
            channel.until("isActivated")

    def test_let_the_quick_ones_pass(self):
        """More than there is room for at a time, one after the other: nothing of theirs is lost, and nobody is the last
        while the next is there."""
        daemon, events, client = self.session()
        os.kill(daemon.pid, signal.SIGSTOP)
        for _ in range(30):
            later = daemon.commands()
            client.progress("activate")
            client.socket.close()
            client = later
        os.kill(daemon.pid, signal.SIGCONT)
        for _ in range(30):
            events.until("isActivated")
        events.served()

    def test_reach_every_channel_of_the_walk(self):
        daemon, first, commands = self.session()
        second, also = daemon.events(), daemon.commands()
        commands.progress("create:0;x")
        self.assertEqual([channel.until("totalProgress=0|-1")[-2:] for channel in (first, second)],
                         [["isShown", "totalProgress=0|-1"]] * 2)
        # Slot 0 is empty: the walk ends there, until a new channel fills it.
        first.close()
        also.progress("update:0;50")
        also.close()
        first = daemon.events()
        self.assertEqual(second.until("isActivated"), ["isActivated"])
        # No other slot is filled again.
        second.close()
        deaf = daemon.connect(daemon.event_port)
        deaf.progress("activate")
        self.assertEqual(first.until("isActivated"), ["isActivated"])
        self.assertEqual(deaf.close(), b"")

    def test_share_the_buffer_of_their_port(self):
        """A message of one can end what another began."""
        daemon, events, commands = self.session()
        events.send("<progress>create:0;")
        commands.progress("create:1;x")
        events.until("isShown")
        events.send("x</progress>")
        # Two bars, neither one nor three.
        commands.progress("update:1;50")
        events.until("totalProgress=25|-1")
        commands.progress("remove:0", "remove:1")
        events.until("isHidden")
        for half in ("<progress>update:0;5</progres", "<configuration>paintOffset", "<", "</progress"):
            gone = daemon.commands()
            gone.send(progress("activate") + half.encode())
            events.until("isActivated")
            gone.close()
            commands.progress("nothing")
            commands.progress("addButt:1;y")
            events.until("isShown")
            commands.progress("delButt:1")
            events.until("isHidden")


if __name__ == "__main__":
    main()
