"""The busy window: its place, its size, its image and percent, and when it is there."""

from harness import Case, Log, main, until, write_picture

GREEN, RED = "00ff00", "ff0000"
# Settings in front of the window's creation, with an image of 100 by 50 pixels or without, and its area.
AREAS = {
    "size of the image": (True, "busyIndicator=0|0|-1|0|empty", (0, 0, 100, 50)),
    "larger than the image": (True, "busyIndicator=10|20|120|80|empty", (10, 20, 120, 80)),
    "smaller than the image": (True, "busyIndicator=10|20|60|40|empty", (10, 20, 60, 40)),
    "image of another name": (True, "busyIndicator=10|20|0|0|Busy.jpg", (10, 20, 32, 32)),
    "larger than the screen": (False, "busyIndicator=0|0|32767|32767|empty", None),
}
# Commands and whether the window is shown then.
VISIBILITY = {
    "activate busyOff": False,
    "busyOn": True,
    "busyOn busyOff": False,
    "create:0;x": True,
    "create:0;x remove:0": False,
    "busyOn create:0;x busyOff": True,
    "create:0;x messageStart busyOff": True,
    "busyOn create:0;x remove:0": True,
    "busyOn create:0;x busyOff remove:0": False,
}


class BusyWindow(Case):
    def area(self):
        return self.screen.window("progressd").area

    def test_area(self):
        for name, (has_image, entries, area) in AREAS.items():
            with self.alone(name):
                daemon = self.daemon()
                if has_image:
                    write_picture(f"{daemon.folder}/Busy.png", 100, 50, GREEN)
                events = daemon.events(entries)
                events.progress("busyOn")
                if area:
                    self.assertEqual(self.area(), area)
                else:
                    self.assertTrue(max(self.area()[2:]) < 10_000 and events.served() == [])

    def test_changes_at_once(self):
        daemon, log = self.daemon(), Log()
        events = daemon.events()
        events.progress("busyOn")  # nothing to see while there is no position
        events.configure("busyIndicator=10|-1|0|0|empty")
        events.served("busyOn")
        for record in ("++++ busy pixmap not found:", "Busy.png", "---- setting busy pixmap "):
            self.assertIn(f": {record} result=0000\n", log.text())
        # A hidden window gets its place when it is shown.
        events.configure("busyIndicator=10|20|0|0|empty")
        events.served()
        self.assertEqual(self.screen.windows("progressd"), [])
        events.progress("busyOn")
        self.assertEqual(self.area(), (10, 20, 32, 32))
        write_picture(f"{daemon.folder}/Other.png", 100, 50, GREEN)
        # As large as its file says, whatever its name.
        write_picture(f"{daemon.folder}/Dense@2x.png", 100, 50, GREEN)
        events.configure("busyIndicator=30|40|0|0|Dense@2x.png;paintOffset=3|4")
        until(lambda: self.screen.picture().pixel(33 + 95, 44 + 45) == GREEN, "all of the image")
        for entries, area in (("busyIndicator=30|40|0|0|Other.png;paintOffset=3|4", (33, 44, 100, 50)),
                              # The image is forgotten, not only hidden.
                              ("busyIndicator=30|40|0|0|no such file.png", (33, 44, 32, 32)),
                              # A visible one goes where it is sent, even off the screen.
                              ("busyIndicator=-20|40|0|0|empty", (-17, 44, 32, 32)),
                              ("paintOffset=9|5", (-11, 45, 32, 32))):
            events.configure(entries)
            until(lambda: self.area() == area, f"the place after {entries}")
        # Too few fields change no place.
        events.configure("busyIndicator=7|8", "paintOffset=9")
        events.served()
        self.assertEqual(self.area(), (-11, 45, 32, 32))

    def test_comes_and_goes(self):
        for commands, is_shown in VISIBILITY.items():
            with self.alone(commands):
                daemon, events, _ = self.session("busyIndicator=10|20|0|0|empty")
                events.served(*commands.split())
                until(lambda: bool(self.screen.windows("progressd")) == is_shown)

    def test_is_in_the_middle_of_the_screen(self):
        daemon, events, _ = self.session("windowTheme=dark", "busyPlace=centre")
        events.progress("busyOn")
        x, y, width, height = self.area()
        self.assertTrue(abs(2 * x + width - 800) <= 1 and abs(2 * y + height - 600) <= 1)
        self.assertTrue(width == height > 40)
        until(lambda: self.screen.picture().pixel(400, 300) == "23272e", "the theme's colour")
        events.progress("create:0;x")  # which would lie below it
        until(lambda: not self.screen.windows("progressd"), "the dialog by itself")
        events.progress("remove:0")
        self.area()
        events.progress("busyOff")
        until(lambda: not self.screen.windows("progressd"), "nothing")

    def test_shows_the_percent_from_below(self):
        daemon = self.daemon()
        write_picture(f"{daemon.folder}/Busy.png", 60, 230, GREEN)
        events = daemon.events("windowStyle=#0000ff|#ffffff|#ff0000|#ff0000|#000000|#000000;busyIndicator=10|10|0|0|empty")
        events.progress("create:0;x", "update:0;40")

        def reds():
            """Up the bar, near its left edge, where no text is: the bar is 200 high, 26 pixels off the bottom."""
            picture = self.screen.picture()
            column = [picture.pixel(20, y) == RED for y in range(10, 240)]
            return column[190] and sum(column)

        until(lambda: abs(reds() - 78) <= 1, "40 of 100")
        self.assertEqual(self.screen.picture().pixel(20, 230), GREEN)
        # Without a run there is no percent.
        events.progress("busyOn", "remove:0")
        until(lambda: self.screen.picture().pixel(20, 200) == GREEN)


if __name__ == "__main__":
    main()
