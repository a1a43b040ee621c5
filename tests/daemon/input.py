"""Real keys, clicks and drags on the dialog."""

import os
import signal

from harness import OPENBOX, Case, main, on_all_screens, until

BUSY = "busyIndicator=10|500|40|50|empty"
# Buttons shown, keys, and the slots that the keys activate. In between, the focus moves along one line: the slots
# in order, then the Hide button.
KEYS = {
    "forward": ("012", "Tab Return Right KP_Enter", "1 2"),
    "forward with other keys": ("012", "Down Return Down Return", "1 2"),
    "to the first": ("358", "Right Home Return Tab Tab Prior Return", "3 3"),
    "to the last": ("358", "End Return Home Next Return", "8 8"),
    "from Hide over gaps": ("049", "Tab Left Return End Tab Tab Up Return", "9 9"),
    "backward stops at slot 0": ("012", "End Up Up Left Left Return End keydown shift key Tab keyup shift key Return", "0 1"),
    "a gap stops backward": ("02", "End Left Return", "2"),
    "a gap ends forward": ("02", "Home Tab keydown shift key Tab keyup shift key Return", "2"),
    "Hide ends forward": ("01", "Tab Tab Tab Tab Left Return", "1"),
    "other keys": ("012", "space x Escape alt+s 1 Shift_L", ""),
}


class Input(Case):
    managers = OPENBOX

    def test_keys(self):
        daemon, events, _ = self.session(BUSY)
        events.progress("create:0;x")
        for name, (shown, keys, slots) in KEYS.items():
            with self.subTest(name):
                events.progress(*(f"addButt:{slot};Go" for slot in shown))
                self.screen.focused()
                events.served()
                self.screen.key(*keys.split())
                expected = [f"clicked:{slot}" for slot in slots.split()]
                self.assertEqual([events.event() for _ in expected], expected)
                self.assertEqual(events.served(), [])
                self.screen.focused()
                events.progress(*(f"delButt:{slot}" for slot in shown))

    def test_quick_and_held_keys(self):
        """Every release counts, however soon its key goes down again; a key that repeats acts once, when it goes up."""
        daemon, events, _ = self.session()
        events.progress("addButt:0;Stop", "addButt:1;Go")
        self.screen.focused()
        events.served()
        self.screen.key(*["Return"] * 10)
        self.assertEqual([events.event() for _ in range(10)], ["clicked:0"] * 10)
        # A key has the name that it has when it goes up: this one is Tab by then.
        self.screen.xdotool("key --delay 0 keydown Shift_L keydown Tab keyup Shift_L keyup Tab key Return")
        events.until("clicked:1")
        self.repeat_quickly()
        self.screen.xdotool("keydown Return sleep 0.3")
        self.assertEqual(events.served(), [])
        self.screen.xdotool("keyup Return")
        events.until("clicked:1")
        self.assertEqual(events.served(), [])
        # One that went down elsewhere repeats on the dialog, and goes up there, but is not meant for it.
        other, others, asker = self.session()
        self.ask(asker, "Other")
        self.screen.xdotool("keydown Return")
        asker.answer()
        self.screen.gone("Other")
        events.progress("messageStart", "messageStop")
        self.screen.focused()
        events.served()
        # The dialog that was hidden has its focus on the first button.
        self.screen.xdotool("sleep 0.3 keyup Return key --delay 0 Tab Return")
        self.assertEqual(events.event(), "clicked:1")

    def test_slots_that_stand_together(self):
        """Escape on a button of theirs is a click on their leader's."""
        daemon, events, _ = self.session("windowLayout=fitted")
        events.progress(*(f"addButt:{slot};Go" for slot in (0, 1, 3)), "join:0;0", "join:1;0", "join:3;3", "activate")
        events.until("isActivated")
        self.screen.focused()
        self.screen.key(*"Home Escape Tab Escape Tab Escape".split())
        self.assertEqual([events.event() for _ in range(3)], ["clicked:0", "clicked:0", "clicked:3"])

    def test_a_press_on_a_dialog_just_hidden(self):
        """The press is under way when the client removes the content; the window must not be remembered."""
        daemon, events, _ = self.session("windowModal=off")
        for rounds in range(10):
            events.progress("create:0;x")
            dialog = self.screen.window()
            self.screen.xdotool(f"mousemove {dialog.x + 100} {dialog.y + 100}")
            os.kill(daemon.pid, signal.SIGSTOP)
            events.progress("remove:0")
            self.screen.xdotool("mousedown 1 sleep 0.03")
            os.kill(daemon.pid, signal.SIGCONT)
            self.screen.xdotool("mouseup 1")
            self.screen.gone()
            events.progress("create:0;x")
            self.screen.window()
            events.served("remove:0")
            self.screen.gone()

    @on_all_screens
    def test_clicks(self, mode):
        daemon, events, _ = self.session(mode)
        events.served("create:0;x", "addButt:0;Stop", "addButt:1;Pause", "addButt:2;Skip", "addButt:2;Skip it")
        dialog = self.screen.focused()
        self.assertEqual(dialog.x, 152)
        # Two buttons in the first row, the third below the first.
        x, y = dialog.x + 84, dialog.bottom - 48
        for place in ((x, y), (x + 168, y), (x, y + (dialog.height - 16) // 12), (x, y - 100)):
            self.screen.click(*place)
        self.screen.xdotool(f"mousemove {x} {y} click --repeat 2 --delay 10 1")
        expected = [f"clicked:{slot}" for slot in (0, 1, 2, 0, 0)]
        self.assertEqual([events.event() for _ in expected], expected)
        events.progress("delButt:0", "activate")
        events.until("isActivated")
        self.screen.focused()
        self.screen.click(x, y)  # is button 1 now
        self.screen.key("Home", "Return")
        self.assertEqual([events.event(), events.event()], ["clicked:1"] * 2)

    @on_all_screens
    def test_hide_and_come_back(self, mode):
        daemon, events, _ = self.session(mode, BUSY)
        busy = 30, 520
        self.screen.click(*busy)  # is not there yet
        events.progress("create:0;x", "addButt:0;Stop")
        dialog = self.screen.focused()
        self.screen.click(*busy)
        self.screen.gone()
        self.screen.click(*busy)
        self.screen.focused()
        # Behind the buttons, Tab leads to the Hide button.
        self.screen.key("Tab", "Return")
        self.screen.gone()
        events.progress("messageStop")
        self.screen.focused()
        # At the right end of the row above the buttons.
        self.screen.click(dialog.right - 40, dialog.bottom - 80)
        self.screen.gone()
        events.progress("delButt:0", "remove:0")
        events.until("isHidden")
        events.served()
        self.screen.click(*busy)  # is gone, and nothing is active
        self.assertEqual(events.served(), [])
        self.assertEqual(self.screen.windows("(?:unknown|progressd)"), [])

    @on_all_screens
    def test_take_the_keyboard_from_another_window(self, mode):
        other, _, asker = self.session()
        box = self.ask(asker, "Other")
        daemon, events, _ = self.session(mode)
        events.progress("addButt:0;Stop")
        self.screen.press("Return")
        events.until("clicked:0")
        # It is hidden, the other has the keyboard again, and it comes back to the front.
        events.progress("messageStart")
        self.screen.gone()
        # The toolkit takes a click for none on what has lost the keyboard less than 0.4 s ago.
        until(lambda: self.screen.click(box.x + box.width // 2, box.y + 20) or self.screen.focus() == box.id, "the other's turn")
        events.progress("messageStop")
        self.screen.press("Return")
        events.until("clicked:0")
        self.assertEqual(asker.pending(), b"")

    @on_all_screens
    def test_drag(self, mode):
        daemon, events, commands = self.session(mode)
        events.progress("addButt:0;Stop")
        dialog = self.screen.focused()
        moved = (dialog.x + 50, dialog.y + 20, dialog.width, dialog.height)
        self.screen.drag(dialog.x + 10, dialog.y + 10, 50, 20)
        until(lambda: self.screen.window().area == moved, "the dialog at its new place")
        # A button is no grip.
        self.screen.drag(dialog.x + 110, dialog.bottom - 28, 20, 0)
        events.until("clicked:0")

        def begin_at(x, y, *size):
            self.addCleanup(self.screen.xdotool, "mouseup 1")
            self.screen.xdotool(f"mousemove {x + 30} {y + 20} mousedown 1 mousemove_relative 5 0")
            until(lambda: self.screen.window().area == (x + 5, y, *size), "the begin of the drag")
            return x + 5, y, *size

        # Hidden in the middle of a drag, it does not stick to the pointer.
        moved = begin_at(*moved)
        events.progress("messageStart")
        self.screen.gone()
        self.screen.xdotool("mouseup 1")
        events.progress("messageStop")
        place = moved if mode == "windowModal=on" else dialog.area  # where a copy is put
        until(lambda: self.screen.window().area == place, "the dialog again")
        self.screen.xdotool("mousemove_relative 30 30")
        events.served()
        until(lambda: self.screen.window().area == place, "the dialog where it was")
        # A box ends the drag.
        moved = begin_at(*place)
        self.ask(commands)
        self.screen.xdotool("mousemove_relative 30 30 mouseup 1")
        self.answered(commands)
        self.assertEqual(self.screen.window().area, moved)


if __name__ == "__main__":
    main()
