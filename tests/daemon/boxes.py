"""Boxes as a user answers them, with and without a window manager."""

import functools
import re
import signal
import time

from harness import OK, OPENBOX, SLOWNESS, Case, Screen, box, main, on_all_screens, resident_kib, until

ASSERTION = "Zerbak Quillet Assertion"
SAVE, YES, YES_TO_ALL, NO, ABORT, CANCEL, CLOSE = 0x800, 0x4000, 0x8000, 0x10000, 0x40000, 0x400000, 0x200000
DEFAULT, ESCAPE = 0x100, 0x200
# Cancel is the eighth of them.
TEN = (YES, NO, SAVE, 0x1000, 0x2000, 0x80000, 0x100000, 0x2000000, CANCEL, 0x1000000)

# The fields of a box titled Copy, the key that answers it, and the answer.
ANSWERS = {
    "other button": (f"2[#]Copy[#]Overwrite?[#]{YES}[#]{NO | DEFAULT}", "alt+y", YES),
    "the last default counts": (f"4[#]Copy[#]x[#]{YES | DEFAULT}[#]{NO | DEFAULT}", "Return", NO),
    "escape flag is cleared": (f"1[#]Copy[#]x[#]{OK | ESCAPE}", "Return", OK),
    "Escape is Cancel": (f"1[#]Copy[#]x[#]{OK}[#]{CANCEL}", "Escape", CANCEL),
    "closing is Escape": (f"1[#]Copy[#]x[#]{YES}[#]{NO | DEFAULT}", "alt+F4", NO),
    "no text": ("0[#]Copy", "Return", 0),
    "no number": ("x[#]Copy[#]x[#]Yes[#]", "Return", 0),
    "empty fields keep their place": (f"[#]Copy[#][#][#]{OK | DEFAULT}", "Return", OK),
    "numbers of no button": (f"99[#]Copy[#]x[#]7[#]-1[#]2147483647[#]{OK | DEFAULT}", "Return", OK),
    "two buttons at once are none": (f"1[#]Copy[#]x[#]{OK | SAVE}[#]{YES}", "Return", YES),
    "a bit beyond the last button": (f"1[#]Copy[#]x[#]{0x10000000}[#]{YES}", "Return", YES),
    "only what is no button": (f"1[#]Copy[#]x[#]{YES | NO}", "Return", 0),
    "a button twice": (f"1[#]Copy[#]x[#]{OK}[#]{OK | DEFAULT}", "Return", OK),
    "buttons after the tenth": ("0[#]Copy[#]x" + "[#]0" * 9 + f"[#]{OK | DEFAULT}[#]{CANCEL | DEFAULT}", "Return", OK),
}
FIRST_AND_SECOND = box("First") + box("Second", CLOSE)
# Makes the dialog magenta, so that a picture of the screen tells where it is seen.
MAGENTA = ("windowStyle=#00f|#fff|#00f|#fff|#f0f|#f0f", "windowControls=#f0f|#f0f|#f0f|#f0f", "busyIndicator=0|0|40|40|empty")


def magenta(picture, area):
    """How many of the area's pixels are of that colour, or nearly."""
    return sum(count for colour, count in picture.colours(area).items() if re.match("[ef].00[ef].", colour))


class Boxes(Case):
    managers = OPENBOX

    def test_answers(self):
        daemon, events, commands = self.session()
        for name, (fields, key, code) in ANSWERS.items():
            with self.subTest(name):
                commands.send(f"<msgbox>{fields}</msgbox>")
                self.assertEqual(self.answered(commands, key), code)
        for key, code in (("Escape", ABORT), ("alt+F4", ABORT), ("alt+a", YES_TO_ALL)):
            with self.subTest("assertion", key=key):
                commands.send("<assert>if (a < b) x = <b>c</b>;</assert>")
                self.assertEqual(self.answered(commands, key, ASSERTION), code)
        self.assertEqual(commands.pending(), b"")

    def test_save_the_assertion_on_the_clipboard(self):
        daemon, events, commands = self.session()
        text = 'if (a < b)\n\t<i>return</i> "\xe4";'
        commands.send(f"<assert>{text}</assert>")
        window = self.screen.focused(ASSERTION)
        # The third of five buttons in a row is in the middle.
        self.screen.click(window.x + window.width // 2, window.bottom - 24)
        self.assertEqual(commands.answer(), YES)
        self.assertEqual(self.screen.run("xclip", "-selection", "clipboard", "-o"), text)

    def test_are_answered_to_whom_asked_in_any_order(self):
        daemon, events, older = self.session()
        newer, third = daemon.commands(), daemon.commands()
        # The older one is wider, so that its button is not covered.
        button = self.ask(older, "Older", OK, text="wide " * 16)
        self.ask(newer, "Newer", CLOSE)
        self.ask(third, "Third")
        third.reset()
        self.screen.click(button.right - 50, button.bottom - 24)
        self.assertEqual(older.answer(), OK)
        # Takes the slot, and possibly the place in memory, of the one that has gone.
        later = daemon.commands()
        self.screen.press("Return", "Third")
        self.assertEqual(self.answered(newer, title="Newer"), CLOSE)
        self.assertEqual([channel.pending() for channel in (older, newer, later)], [b""] * 3)

    def test_hold_back_what_is_behind_them(self):
        daemon, events, asker = self.session()
        asker.send(FIRST_AND_SECOND + "<progress>addText:0;x</progress>")
        for title, code in (("First", OK), ("Second", CLOSE)):
            self.screen.focused(title)
            self.assertEqual(events.served(), [])
            self.assertEqual(self.answered(asker, title=title), code)
        events.until("isShown")
        # Unless more arrives, even of another client.
        other = daemon.commands()
        asker.send(FIRST_AND_SECOND)
        self.screen.focused("First")
        other.progress("delText:0")
        events.until("isHidden")
        for title, code in (("Second", CLOSE), ("First", OK)):
            self.assertEqual(self.answered(asker, title=title), code)
        self.assertEqual(other.pending(), b"")

    def test_do_not_keep_the_daemon(self):
        for ending in ("exit", "hang-up"):
            daemon, events, asker = self.session()
            for message, title in (("<assert>x</assert>", ASSERTION), (box("Cancel", OK, CANCEL), "Cancel"),
                                   (box("No escape", YES, NO), "No escape")):
                asker.send(message)
                self.screen.window(title)
            if ending == "exit":
                asker.send("<exit/>")
                self.assertEqual(asker.rest(), bytes(12))
            else:
                asker.close()
            events.until("shutDown")
            self.assertEqual(daemon.status(), 0)

    def test_have_bounds(self):
        """32 boxes, whatever their text, fit the screen and the memory; those behind them are refused."""
        daemon, events, asker = self.session()
        before, most, more = resident_kib(daemon.pid), 32, 5000
        asker.send(box("Copy", OK, text="line\n" * 5000) * most + box("Copy") * more)
        # Makes the daemon go on with what waits behind the first box.
        asker.progress("activate")
        events.until("isActivated")
        self.assertEqual(asker.read(4 * more), bytes(4 * more))
        windows = until(lambda: len(found := self.screen.windows("Copy")) >= most and found)
        self.assertEqual((len(windows), asker.pending()), (most, b""))
        for window in windows:
            self.assertTrue(window.y >= 0 and window.bottom <= 600, window.area)
        self.assertLess(resident_kib(daemon.pid) - before, 100_000 * SLOWNESS)

    def test_cut_nothing_off(self):
        daemon, events, commands = self.session("windowTheme=dark")
        window = self.ask(commands, "Copy", OK, text="w" * 300)
        self.assertLess(window.width, 600)
        until(lambda: self.screen.picture().colours(window.area)["23272e"] > 10_000, "the theme's colour")
        self.assertEqual(self.answered(commands), OK)
        window = self.ask(commands, "Copy", *TEN)
        self.screen.click(window.right - 50, window.bottom - 24 - 30)  # the last in the upper of two lines
        self.assertEqual(commands.answer(), CANCEL)
        self.screen.gone("Copy")
        area = self.ask(commands, "Copy", OK, text="\n".join(map(str, range(500)))).area

        def letters():
            """How many light pixels there are."""
            colours = self.screen.settled().colours(area)
            return sum(count for colour, count in colours.items() if min(bytes.fromhex(colour)) > 0x80)

        first = until(lambda: (count := letters()) > 300 and count, "the text")
        for there, back in (("Next", "Prior"), ("End", "Home")):
            self.screen.key(there)
            until(lambda: letters() != first, f"another page after {there}")
            self.screen.key(back)
            until(lambda: letters() == first, f"the first page again after {back}")
        large = Screen(*OPENBOX, size="1280x800")
        asker = self.daemon(screen=large).commands()
        asker.send(box("Copy", *TEN))
        self.assertGreater(large.focused("Copy").width, 850)

    def test_leave_a_fitted_dialog_to_be_seen(self):
        daemon, events, commands = self.session("windowLayout=fitted", "windowTheme=light")
        commands.progress("create:0;x")
        dialog = self.screen.window()
        heavy = []
        for text in ("mmmm\nmmmm", "mmmm"):
            window = self.ask(commands, "Copy", OK, text=text)
            self.assertGreaterEqual(window.y, dialog.bottom)
            heavy.append(self.screen.settled().colours(window.area)["000000"])
            self.answered(commands)
        self.assertGreater(heavy[0], 2.5 * heavy[1])  # a bold line and one that is not


class BoxesAndDialog(Case):
    """In both modes, with and without a window manager."""

    @on_all_screens
    def test_keep_input_from_the_dialog(self, mode):
        daemon, events, commands = self.session(*MAGENTA, mode)
        commands.progress("addButt:0;Stop", "addButt:1;Go")
        dialog = self.screen.focused()
        stop = dialog.x + 84, dialog.bottom - 48
        self.screen.click(*stop)
        events.until("clicked:0")
        # A key that is down when the box takes the keyboard repeats and goes up there, where it is no answer.
        self.repeat_quickly()
        self.screen.xdotool("keydown Return")
        self.ask(commands, "Copy", OK | DEFAULT)
        self.screen.xdotool("sleep 0.3 keyup Return")
        for place in (stop, stop, (20, 20)):  # the last is in the busy window
            self.screen.click(*place)
        self.screen.drag(dialog.x + 30, dialog.y + 10, 30, 20)
        self.assertEqual(self.screen.window().area, dialog.area)
        # The key that answers the box is released when the dialog already has the focus again.
        self.screen.settled()
        self.screen.focused("Copy")
        self.screen.xdotool("keydown Return")
        self.assertEqual(commands.answer(), OK)
        self.screen.gone("Copy")
        self.assertEqual(events.served(), [])
        self.screen.focused()
        self.screen.xdotool("keyup Return")
        self.assertEqual(events.served(), [])
        self.screen.focused()
        self.screen.click(*stop)
        self.assertEqual(events.until("clicked:0"), ["clicked:0"])

    @on_all_screens
    def test_give_the_keyboard_back(self, mode):
        daemon, events, commands = self.session(mode)
        commands.progress("addButt:0;Stop")
        events.until("isShown")
        self.screen.focused()
        self.ask(commands, "First")
        commands.send(box("Second"))
        for title in ("Second", "First"):
            self.screen.focused(title)
            if title == "First":
                for manager in self.screen.managers:  # sees late that the last box has gone
                    manager.send_signal(signal.SIGSTOP)
                    self.addCleanup(manager.send_signal, signal.SIGCONT)
            self.screen.key("Return")
            self.assertEqual(commands.answer(), OK)
        time.sleep(1)
        for manager in self.screen.managers:
            manager.send_signal(signal.SIGCONT)
        # It stays there, whatever the manager does.
        until(lambda: all(self.screen.focus() == self.screen.window().id for _ in range(20)), "the keyboard")
        self.screen.key("Return")
        self.assertEqual(events.until("clicked:0"), ["clicked:0"])

    @on_all_screens
    def test_leave_the_keyboard_to_a_newcomer(self, mode):
        """What another program opens just after a box was answered is nobody's to take the keyboard from."""
        _, events, commands = self.session(mode, "windowTitle=mine")
        _, _, others = self.session(mode)
        commands.progress("addButt:0;Stop")
        self.screen.focused("mine")
        commands.send(box("First"))
        self.screen.press("Return", "First")
        self.assertEqual(commands.answer(), OK)
        other = self.ask(others, "Other")
        time.sleep(1)
        self.assertEqual(self.screen.focus(), other.id)

    # It is the manager who hands the keyboard on between windows that it manages, and to whom it likes.
    @functools.partial(on_all_screens, but=(OPENBOX, "windowModal=off"))
    def test_do_not_take_the_keyboard_from_others(self, mode):
        """A dialog that had not the keyboard when the first box opened does not get it when the last one closes."""
        daemon, events, commands = self.session(mode, "windowTitle=mine", "paintOffset=-100|0",
                                                "windowControls=#000|#000|#000|#f0f")
        commands.progress("addButt:0;Stop")
        self.screen.focused("mine")
        other, heard, _ = self.session("windowModal=off", "paintOffset=100|0")
        heard.progress("addButt:0;Stop")
        self.screen.focused()
        mine = self.screen.window("mine")
        until(lambda: magenta(self.screen.picture(), mine.area) == 0, "the button without the focus")
        commands.send(box("Copy"))
        self.answered(commands)
        if self.managers:
            self.screen.focused()
        time.sleep(0.2)  # in which it could take it
        self.assertNotEqual(self.screen.focus(), mine.id)

    @on_all_screens
    def test_lie_in_front(self, mode):
        daemon, events, commands = self.session(*MAGENTA, mode)
        commands.progress("create:0;x")
        dialog = self.screen.focused()
        window = self.ask(commands, "Copy", YES, NO, text="Overwrite?")

        def is_seen():
            picture = self.screen.picture()
            return magenta(picture, window.area) == 0 and magenta(picture, dialog.area) > 10_000

        for attempt in ("activate", "create:1;y", "remove:1", "busyOn", "addButt:0;x", "messageStart", "messageStop"):
            events.served(attempt)
            until(is_seen if attempt != "messageStart" else lambda: True, f"the box after {attempt}")
            self.assertEqual(self.screen.focus(), window.id, f"the keyboard after {attempt}")
        self.screen.click(dialog.x + 30, dialog.y + 10)
        events.configure(f"paintOffset=1|1;busyIndicator={window.x}|{window.y}|80|80|empty")
        events.served("busyOn")
        until(is_seen, "the box after a click")
        until(lambda: self.screen.order("Copy", "progressd") == ["Copy", "progressd"], "the box over the busy window")
        # And behind no box, the dialog is in front again.
        self.screen.click(window.right - 50, window.bottom - 24)
        self.assertEqual(commands.answer(), NO)
        until(lambda: magenta(self.screen.picture(), window.area), "the dialog in front")

    @on_all_screens
    def test_leave_the_dialog_over_foreign_windows(self, mode):
        # No box that a manager has a say in comes above a foreign window that bypasses him.
        foreign, heard, _ = self.session("windowModal=off" if self.managers else mode, "windowTitle=foreign")
        heard.progress("create:0;x")
        self.screen.focused("foreign")
        daemon, events, commands = self.session(mode)
        commands.progress("create:0;x")
        self.screen.focused()
        self.ask(commands)
        until(lambda: self.screen.order("Copy", "unknown", "foreign") == ["Copy", "unknown", "foreign"],
              "the dialog between the box and the foreign window")


if __name__ == "__main__":
    main()
