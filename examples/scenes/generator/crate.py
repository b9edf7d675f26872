"""The picture on the crate of lights.ky, which itself is written by hand."""

from .noise import fractal, hash01
from .png import palette_png

SIDE = 128
FRAME = 16


def tone(x, y):
    """From 0 dark to 15 light: a frame of planks, a brace, planks behind."""
    near = min(x, y, SIDE - 1 - x, SIDE - 1 - y)
    grain = fractal(x * .03, y * .35, 3, 61)
    if near < FRAME:
        upright = min(x, SIDE - 1 - x) < min(y, SIDE - 1 - y)
        grain = fractal(y * .03, x * .35, 3, 62) if upright else grain
        edge = near in (0, FRAME - 1) or abs(min(x, SIDE - 1 - x) - min(y, SIDE - 1 - y)) < 1
        return 3 if edge else 9 + round(5 * grain)
    if abs(x - y) < 9:
        return 3 if abs(x - y) > 7 else 8 + round(5 * fractal((x + y) * .03, (x - y) * .3, 3, 63))
    if y % 24 < 2:
        return 1
    return 4 + round(6 * grain + hash01(y // 24, 0, 64))


def build():
    palette = [(40 + 13 * i, 26 + 9 * i, 14 + 5 * i) for i in range(16)]
    rows = [bytes(max(0, min(15, tone(x, y))) for x in range(SIDE)) for y in range(SIDE)]
    return "", {"lights_crate.png": palette_png(SIDE, SIDE, palette, rows)}
