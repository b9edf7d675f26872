"""The pictures of the workshop: wood, the painted railway board, letters, the tool wall.

A surface is painted as one of few colours per pixel, times light in few steps, so that 256
palette entries hold it.
"""

import math

from .noise import fractal, hash01, value_noise
from .png import palette_png
from .train import HALF, RADIUS


def shaded_png(plane, tones, tone_at, light, steps):
    """`tone_at(column, row)` is an index into `tones`; rows count with v, upwards."""
    width, height = plane.width, plane.height
    palette = []
    for tone in tones:
        for step in range(steps):
            k = .28 + .72 * step / (steps - 1)
            palette.append(tuple(min(255, round(c * k)) for c in tone))
    rows = []
    for row in range(height - 1, -1, -1):
        line = bytearray(width)
        for x in range(width):
            step = max(0.0, (light[row * width + x] - .28) / .72) * (steps - 1)
            # Ordered dithering hides the steps without noise that would not compress.
            low = int(step)
            low += step - low > (.25 if (x + row) % 2 else .75)
            line[x] = tone_at(x, row) * steps + min(low, steps - 1)
        rows.append(bytes(line))
    return palette_png(width, height, palette, rows)


def mixed(a, b, count):
    return [tuple(p + (q - p) * i / (count - 1) for p, q in zip(a, b)) for i in range(count)]


def bench_png(plane, light):
    """Five planks along u."""
    tones = mixed((122, 80, 46), (186, 134, 84), 7)
    planks, grain_rows = 5, 64
    grain = [[fractal(i * .21, plank * 31.7, 3, 40) for i in range(grain_rows)] for plank in range(planks)]
    columns = [[value_noise(x * 4.0 / plane.width, plank * 9.1, 50) for x in range(plane.width)]
               for plank in range(planks)]
    gap = plane.height / planks

    def tone(x, row):
        plank, within = int(row / gap), row % gap
        if within < 1.2:
            return 0
        wave = within / gap * 26 + 22 * columns[plank][x]
        i = int(wave) % grain_rows
        t = grain[plank][i] + (grain[plank][(i + 1) % grain_rows] - grain[plank][i]) * (wave % 1)
        t = (t - .5) * 1.5 + .5 + .22 * (hash01(plank, 3, 9) - .5)
        return max(1, min(6, round(t * 6)))

    return shaded_png(plane, tones, tone, light, 32)


def track_distance(x, z):
    """From the middle line of the track."""
    dx = max(abs(x) - HALF, 0)
    return abs(math.hypot(dx, z) - RADIUS)


def pond_depth(x, z):
    """Above 0 in the pond."""
    wobble = .16 * math.sin(3 * x + 1) + .12 * math.sin(4.1 * z - .7 * x)
    return 1 - math.hypot((x - 2.5) / 2.75, (z - .15) / 1.55) + wobble * .35


def board_png(plane, light):
    """Grass, ballast under the track, the pond; the board's middle is the middle of the track."""
    grass = mixed((70, 112, 48), (112, 150, 66), 4)
    ballast = mixed((112, 104, 96), (160, 152, 140), 3)
    tones = grass + ballast + [(222, 200, 148), (62, 138, 168), (40, 110, 150)]
    sx, sz = plane.u_size / plane.width, plane.v_size / plane.height
    edge = [[.16 * (value_noise(x * sx * 3, r * sz * 3, 70) - .5) for x in range(plane.width)]
            for r in range(plane.height)]

    def tone(column, row):
        x, z = column * sx - plane.u_size / 2, plane.v_size / 2 - row * sz
        rough = edge[row][column]
        if track_distance(x, z) < .86 + rough:
            return 4 + int(3 * hash01(column, row, 71))
        depth = pond_depth(x, z)
        if depth > .16:
            return 9
        if depth > .02:
            return 8
        if depth + rough * .3 > -.06:
            return 7
        t = value_noise(x * 1.1, z * 1.1, 72) + .35 * (hash01(column // 2, row // 2, 73) - .5)
        return max(0, min(3, int(t * 4)))

    return shaded_png(plane, tones, tone, light, 25)


def pegboard_png(plane, light):
    tones = [(196, 176, 138), (70, 60, 46)]
    pitch = plane.width / plane.u_size * .4

    def tone(x, row):
        dx, dy = x % pitch - pitch / 2, row % pitch - pitch / 2
        return int(dx * dx + dy * dy < (pitch * .13) ** 2)

    return shaded_png(plane, tones, tone, light, 60)


# Letters as strokes in a square from 0 to 1: polylines.
def _arc(cx, cy, rx, ry, start, end, steps=14):
    return [(cx + rx * math.cos(math.radians(start + (end - start) * i / steps)),
             cy + ry * math.sin(math.radians(start + (end - start) * i / steps))) for i in range(steps + 1)]


STROKES = {
    "M": [[(.22, .22), (.22, .78), (.5, .42), (.78, .78), (.78, .22)]],
    "I": [[(.5, .22), (.5, .78)], [(.36, .22), (.64, .22)], [(.36, .78), (.64, .78)]],
    "R": [[(.3, .22), (.3, .78), (.52, .78)] + _arc(.53, .64, .17, .14, 90, -90) + [(.3, .5)],
          [(.5, .5), (.72, .22)]],
    "A": [[(.22, .22), (.5, .8), (.78, .22)], [(.33, .42), (.67, .42)]],
    "B": [[(.3, .22), (.3, .78), (.52, .78)] + _arc(.52, .65, .16, .13, 90, -90) + [(.3, .52)],
          [(.52, .52)] + _arc(.54, .37, .18, .15, 90, -90) + [(.3, .22)]],
    "O": [_arc(.5, .5, .25, .28, 0, 360, 28)],
}
LETTERS = "MIRABO"
LETTER_COLOURS = [(184, 32, 28), (24, 78, 160), (28, 122, 58), (214, 120, 16), (112, 42, 130), (16, 122, 138)]
FACE = (236, 216, 176)


def _distance(p, a, b):
    dx, dy = b[0] - a[0], b[1] - a[1]
    size = dx * dx + dy * dy
    t = max(0, min(1, ((p[0] - a[0]) * dx + (p[1] - a[1]) * dy) / size)) if size else 0
    return math.hypot(p[0] - a[0] - t * dx, p[1] - a[1] - t * dy)


def letters_png(side=128):
    """One square a letter, from left to right, each with a frame in its colour."""
    levels = 8
    palette = [tuple(round(f + (c - f) * i / (levels - 1)) for f, c in zip(FACE, colour))
               for colour in LETTER_COLOURS for i in range(levels)]
    rows = []
    pixel = 1 / side
    for row in range(side):
        line = bytearray()
        y = 1 - (row + .5) * pixel
        for n, letter in enumerate(LETTERS):
            for x in [(i + .5) * pixel for i in range(side)]:
                stroke = min(_distance((x, y), a, b) for run in STROKES[letter] for a, b in zip(run, run[1:]))
                border = min(x, 1 - x, y, 1 - y)
                ink = max(.5 + (.066 - stroke) / pixel, .5 + (.085 - border) / pixel)
                line.append(n * levels + round(max(0, min(1, ink)) * (levels - 1)))
        rows.append(bytes(line))
    return palette_png(side * len(LETTERS), side, palette, rows)
