"""Numbers that look random and are the same on every machine."""

import math


def hash01(x, y=0, seed=0):
    """A number from 0 to 1 for a place of a grid."""
    h = (x * 374761393 + y * 668265263 + seed * 974634777) & 0xFFFFFFFF
    h = ((h ^ (h >> 13)) * 1274126177) & 0xFFFFFFFF
    h = ((h ^ (h >> 16)) * 2246822519) & 0xFFFFFFFF
    return (h ^ (h >> 15)) / 4294967295.0


def smooth(t):
    return t * t * (3 - 2 * t)


def value_noise(x, y, seed=0):
    """Smooth noise from 0 to 1 whose features have the size 1."""
    x0, y0 = math.floor(x), math.floor(y)
    u, v = smooth(x - x0), smooth(y - y0)
    low = hash01(x0, y0, seed) * (1 - u) + hash01(x0 + 1, y0, seed) * u
    high = hash01(x0, y0 + 1, seed) * (1 - u) + hash01(x0 + 1, y0 + 1, seed) * u
    return low * (1 - v) + high * v


def fractal(x, y, octaves, seed=0):
    total, size, weight = 0.0, 0.0, 1.0
    for octave in range(octaves):
        total += weight * value_noise(x, y, seed + octave)
        size += weight
        x, y, weight = x * 2.03 + 17.7, y * 2.03 + 9.2, weight * 0.5
    return total / size


class Dice:
    """A sequence of pseudo-random numbers."""

    def __init__(self, seed):
        self.seed = seed
        self.count = 0

    def next(self):
        self.count += 1
        return hash01(self.count, 0, self.seed)

    def between(self, low, high):
        return low + (high - low) * self.next()

    def pick(self, items):
        return items[min(int(self.next() * len(items)), len(items) - 1)]
