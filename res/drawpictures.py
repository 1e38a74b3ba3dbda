#!/usr/bin/python3
"""Draws the recorder's pictures for the pen's 256 x 64 one-bit screen (white on black).

The generated files are committed beside this script, so a build never needs it; run it again
after changing a drawing:  /usr/bin/python3 res/drawpictures.py [OUTPUT_DIR]  (default: res/ itself).
Needs python3-pil.
"""

import math
import os
import sys

from PIL import Image, ImageDraw

BLACK = 0
WHITE = 1


def one_bit(width, height):
    image = Image.new("1", (width, height), BLACK)
    return image, ImageDraw.Draw(image)


def gear(draw, cx, cy, outer, inner, hole, teeth):
    """A cog wheel outline: teeth on a ring, a hole in the middle."""
    points = []
    steps = teeth * 4
    for i in range(steps):
        angle = 2 * math.pi * i / steps
        radius = outer if (i % 4) in (0, 1) else inner
        points.append((cx + radius * math.cos(angle), cy + radius * math.sin(angle)))
    draw.polygon(points, outline=WHITE)
    draw.ellipse((cx - hole, cy - hole, cx + hole, cy + hole), outline=WHITE)


def settings_background():
    """Drawn at (0, 10) behind the menu's three rows (x 40 on): all decoration stays in the
    strip left of the rows, so the captions and values read on plain black."""
    image, draw = one_bit(256, 54)
    # a cog in the left strip, centred on the middle row
    gear(draw, 18, 26, 11, 8, 3, 8)
    # a dotted rule between the strip and the rows
    for y in range(2, 52, 2):
        draw.point((35, y), fill=WHITE)
    # small end marks of the rule
    draw.line((33, 1, 37, 1), fill=WHITE)
    draw.line((33, 52, 37, 52), fill=WHITE)
    return image


def bulb_half_width(y):
    """Half the inner width of the glass at row y (centre column 16)."""
    if y <= 8 or y >= 24:
        return 7
    if y < 16:
        return 7 - (y - 8)
    return 7 - (24 - y)


def sandglass_frame(step, steps):
    """One frame of the busy sign: sand runs from the upper bulb into the lower one."""
    image, draw = one_bit(33, 33)
    # caps
    draw.rectangle((6, 2, 26, 3), fill=WHITE)
    draw.rectangle((6, 29, 26, 30), fill=WHITE)
    # glass: two bulbs meeting at the neck
    draw.line((8, 4, 8, 8), fill=WHITE)
    draw.line((24, 4, 24, 8), fill=WHITE)
    draw.line((8, 8, 15, 15), fill=WHITE)
    draw.line((24, 8, 17, 15), fill=WHITE)
    draw.line((15, 17, 8, 24), fill=WHITE)
    draw.line((17, 17, 24, 24), fill=WHITE)
    draw.line((8, 24, 8, 28), fill=WHITE)
    draw.line((24, 24, 24, 28), fill=WHITE)
    draw.line((15, 15, 15, 17), fill=WHITE)
    draw.line((17, 15, 17, 17), fill=WHITE)

    # upper sand: fills the bottom of the upper bulb and sinks frame by frame
    upper_rows = 9 - round(9 * step / (steps - 1))
    for y in range(15 - upper_rows, 15):
        half = bulb_half_width(y) - 1
        if half >= 0:
            draw.line((16 - half, y, 16 + half, y), fill=WHITE)
    # lower sand: a heap that grows from the bottom
    lower_rows = round(8 * step / (steps - 1))
    for i in range(lower_rows):
        y = 28 - i
        half = min(bulb_half_width(y) - 1, 2 + (lower_rows - i) * 2)
        if half >= 0:
            draw.line((16 - half, y, 16 + half, y), fill=WHITE)
    # the falling stream while sand is left above
    if upper_rows > 0:
        for y in range(16, 28 - lower_rows, 2):
            draw.point((16, y), fill=WHITE)
    return image


def sandglass_frames():
    steps = 8
    frames = [sandglass_frame(step, steps) for step in range(steps)]
    # the glass turns over: a last frame on its side before the cycle starts again
    frames.append(frames[-1].rotate(90))
    return [frame.convert("P") for frame in frames]


def play_sign():
    image, draw = one_bit(12, 12)
    draw.polygon([(3, 1), (3, 10), (9, 5)], fill=WHITE, outline=WHITE)
    return image


def pause_sign():
    image, draw = one_bit(12, 12)
    draw.rectangle((2, 1, 4, 10), fill=WHITE)
    draw.rectangle((7, 1, 9, 10), fill=WHITE)
    return image


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    os.makedirs(os.path.join(out, "pics"), exist_ok=True)
    settings_background().save(os.path.join(out, "pics", "settings2.png"), optimize=True)
    frames = sandglass_frames()
    frames[0].save(os.path.join(out, "sandglass.gif"), save_all=True,
                   append_images=frames[1:], duration=150, loop=0)
    play_sign().save(os.path.join(out, "play.bmp"))
    pause_sign().save(os.path.join(out, "pause.bmp"))


if __name__ == "__main__":
    main()
