"""What each configuration entry changes of what is seen, and that it changes nothing else."""

from harness import Case, main, until, write_picture

# Another value than the defaults for everything, and colours that can be told apart.
BASELINE = ("windowFonts=Arial,9|Arial,9|Arial,15|Arial,9", "busyIndicator=600|10|60|230|empty", "paintOffset=15|16",
            "screenGeometry=800,600", "windowTitle=base", "windowPixmap=base",
            "windowStyle=#ff0000|#00ff00|#ff8000|#0080ff|#804000|#ff00ff",
            "windowControls=#ffff00|#00ffff|#808080|#0000ff", "windowModal=on")
OTHER = None  # whatever it is, it is not what it was
# Entries, and all facts that they change.
CHANGES = {
    ";;windowTitle=x;;": {"title": "x"},
    "windowTitle=A|B,C=D": {"title": "A|B,C=D"},
    "windowTitle=" + "x" * 4000: {"title": "x" * 4000},
    "windowTitle=" + "x" * 20_000: {},
    "WindowTitle=x;windowtitle=x;WINDOWMODAL=off; windowTitle=x;windowTitl=x;=;windowTitle": {},
    "windowModal=off": {"bypasses": False},
    "windowModal=off;windowModal=oN": {},
    "windowModal=on ": {"bypasses": False},
    "screenGeometry=792,768,5": {"x": 205, "width": 412, "middle": 400},
    "paintOffset=-5|+7": {"x": 187, "middle": 307, "busy": (595, 17)},
    "paintOffset=x|4.5": {"x": 192, "middle": 300, "busy": (600, 10)},
    "paintOffset=9": {"x": 201, "busy": (609, 26)},
    "busyIndicator=1|2|62|232|x.png|more": {"busy": (16, 18), "busySize": (62, 232), "busyText": OTHER},
    "busyIndicator=700|20": {"busy": (715, 36)},
    "windowFonts=Sans,19": {"buttonText": OTHER},
    "windowFonts=Arial,9|Arial,10": {"height": 400, "buttonText": OTHER},
    "windowFonts=Arial,9|Arial,9|Arial,11": {"barText": OTHER, "busyText": OTHER},
    "windowFonts=Arial,9|Arial,9|Arial,15|Arial,15": {"labelText": OTHER},
    # As old descriptions have it; what one does not give stays, and one that cannot be read changes nothing.
    "windowFonts=Arial,9,-1,5,75,0,0,0,0,0": {"buttonText": OTHER},
    "windowFonts=Arial,19;windowFonts=Arial": {"buttonText": OTHER},
    "windowFonts=|Arial,9,bold|,9|Arial,15": {"labelText": OTHER},
    "windowStyle=#102030|white|red|#00f|#0f0|#123456": {
        "fill": "102030", "barOn": "ffffff", "rest": "00ff00", "busyFill": "ff0000", "busyOn": "0000ff", "busyRest": "00ff00",
        "background": "00f200", "frame": "123456", "barText": OTHER, "labelText": OTHER},
    "windowStyle=#01|#00ff00|#ff8000|nocolour||#ff00ff": {
        "fill": "000000", "busyOn": "000000", "background": "000000", "rest": "000000", "busyRest": "000000",
        "barText": OTHER, "busyText": OTHER, "labelText": OTHER},
    "windowStyle=red|#00ff00|#ff8000|#0080ff|white": {"background": "f2f2f2", "labelText": OTHER},
    "windowControls=red|lime|blue|white|more": {"bodyTop": "ff0000", "bodyBottom": "00ff00", "body": "0000ff",
                                                "button": "0000ff", "focus": "ffffff"},
    "windowPixmap=green.ppm": {"background": "00f100", "frame": OTHER, "labelText": OTHER},
}


class Configuration(Case):
    def test_fitted_layout(self):
        """Where its parts are is the dialog's own test; this is what the settings change."""
        daemon = self.daemon()
        write_picture(f"{daemon.folder}/mark.ppm", 20, 20)
        # The image's name lacks its suffix.
        events = daemon.events("windowTheme=light", "windowLayout=fitted", "windowFonts=Arial,9|Arial,9|Arial,9|Arial,9",
                               "windowStyle=#ff0000|#ffffff|#ff0000|#ffffff|#ffffff|#0000ff", "windowWidth=450",
                               "windowText=#00ff00|#ff00ff", "windowIcon=mark")
        events.served("create:0;MMM", "update:0;100", "addButt:0;MMM")
        dialog = self.screen.window()
        self.assertEqual(dialog.width, 450)
        self.assertIn("Icon (20 x 20)", self.screen.run("xprop", "-id", str(dialog.id), "_NET_WM_ICON"))
        # 420 by 6 pixels, of which the corners are round.
        until(lambda: 2400 < self.screen.picture().colours(dialog.area)["ff0000"] <= 2520, "a full bar")
        colours = [bytes.fromhex(colour) for colour in self.screen.settled().colours(dialog.area)]
        for text, some, others in (("the caption in green", (1,), (0, 2)), ("the button's text in magenta", (0, 2), (1,))):
            self.assertTrue(any(min(rgb[i] for i in some) - max(rgb[i] for i in others) > 100 for rgb in colours), text)

    def text(self, picture, area):
        """How many pixels of an area are far from its ground's colour, and the farthest colour."""
        colours = picture.colours(area)
        ground = bytes.fromhex(max(colours, key=colours.get))

        def distance(colour):
            return sum(abs(one - other) for one, other in zip(ground, bytes.fromhex(colour)))

        return sum(count for colour, count in colours.items() if distance(colour) > 100), max(colours, key=distance)

    def facts(self, *entries):
        daemon = self.daemon()
        write_picture(f"{daemon.folder}/green.ppm", 1, 1, "00ff00")
        events = daemon.events(*entries)
        events.progress("create:0;MMM", "addText:1;MMM", "addButt:0;MMM", "addButt:1;MMM")
        until(lambda: len(self.screen.windows()) == 2, "both windows")
        dialog, busy = sorted(self.screen.windows(), key=lambda window: window.title == "progressd")
        until(lambda: self.screen.focus() == dialog.id, "the focus")
        for percent in (49, 50):  # in a later turn than the windows' first painting
            events.progress(f"update:0;{percent}")
            events.until(f"totalProgress={percent}|-1")
        picture = self.screen.settled()  # the painting may come later than the event
        cell = (dialog.height - 16) // 12
        row = dialog.y + cell // 2 + 3
        bar = (dialog.x + 11, row, dialog.width - 22, cell - 6)
        label = (bar[0], row + cell, bar[2], bar[3])
        button_width = (dialog.width - 16) // 2 - 6
        buttons = [(dialog.x + 8 + slot * (button_width + 6), dialog.bottom - 2 * cell + 3, button_width, cell - 6)
                   for slot in (0, 1)]
        busy_bar = (busy.x + 4, busy.y + 4, busy.width - 8, busy.height - 30)

        # The halves that are filled.
        bar_text, bar_colour = self.text(picture, (bar[0] + 4, bar[1] + 3, bar[2] // 2 - 8, bar[3] - 6))
        busy_text, busy_colour = self.text(picture, (busy_bar[0] + 4, busy_bar[1] + 104, busy_bar[2] - 8, busy_bar[3] - 108))

        def at(area, right, down):
            """The colour so far from an area's left or right and upper or lower edge."""
            return picture.pixel(area[0] + right + (area[2] if right < 0 else 0), area[1] + down + (area[3] if down < 0 else 0))

        return {
            "title": dialog.title, "x": dialog.x, "width": dialog.width, "height": dialog.height,
            "middle": dialog.y + dialog.height // 2, "busy": (busy.x, busy.y), "busySize": (busy.width, busy.height),
            "bypasses": "Override Redirect State: yes" in self.screen.facts(dialog),
            "frame": at(dialog.area, 1, dialog.height // 2), "background": at(dialog.area, 8, dialog.height // 2),
            "fill": at(bar, 8, 5), "rest": at(bar, -8, 5), "busyFill": at(busy_bar, 4, -8), "busyRest": at(busy_bar, 4, 8),
            "button": at(buttons[1], 1, cell // 2), "focus": at(buttons[0], 1, cell // 2),
            "body": at(buttons[0], 8, cell // 2 - 3), "bodyTop": at(buttons[0], 12, 5), "bodyBottom": at(buttons[0], 12, -6),
            "barText": bar_text, "barOn": bar_colour, "busyText": busy_text, "busyOn": busy_colour,
            "labelText": self.text(picture, label)[0],
            "buttonText": self.text(picture, (buttons[0][0] + 8, buttons[0][1] + cell // 3, button_width - 16, cell // 4))[0],
        }

    def test_changes(self):
        with self.alone():
            base = self.facts(*BASELINE)
        for entries, expected in CHANGES.items():
            with self.alone(entries[:80]):
                facts = self.facts(*BASELINE, entries)
                changed = {name: value for name, value in facts.items() if value != base[name]}
                if entries.startswith("windowControls"):
                    # Its edges depend on how the toolkit smooths them on the new ground.
                    changed.pop("buttonText", None)
                self.assertEqual({name: expected.get(name, 0) and value for name, value in changed.items()}, expected)


if __name__ == "__main__":
    main()
