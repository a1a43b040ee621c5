"""The looks in examples/ can be read: contrast as the Web Content Accessibility Guidelines define it, 1 to 21.

usage: exampleLooks.py FILE...
"""

import sys

READABLE, VISIBLE = 4.5, 3  # text, and what is no text
# The panel is seen over a black desktop with this opacity.
OPACITY = 242 / 255


def channels(colour, opacity=1.0):
    return [int(colour[at:at + 2], 16) / 255 * opacity for at in (1, 3, 5)]


def luminance(colour):
    linear = [value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4 for value in colour]
    return sum(part * value for part, value in zip((0.2126, 0.7152, 0.0722), linear))


def contrast(one, other):
    darker, lighter = sorted((luminance(one), luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def check(path):
    with open(path) as file:
        entries = dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line)
    style, controls = (entries[key].split("|") for key in ("windowStyle", "windowControls"))
    fill, on_fill, busy_fill, on_busy_fill, panel, _ = map(channels, style)
    _, _, button, focus = map(channels, controls)
    black = [0, 0, 0]
    pairs = {"text on a bar": (on_fill, fill, READABLE), "on the busy bar": (on_busy_fill, busy_fill, READABLE),
             "beside the fill": (black, panel, READABLE), "on the panel": (black, channels(style[4], OPACITY), READABLE),
             "on a button": (black, button, READABLE), "a bar's fill": (fill, panel, VISIBLE),
             "the focus": (focus, panel, VISIBLE)}
    for what, (one, other, least) in pairs.items():
        assert contrast(one, other) >= least, f"{path}: {what} has a contrast of {contrast(one, other):.1f} only"


assert len(sys.argv) > 1
for name in sys.argv[1:]:
    check(name)
