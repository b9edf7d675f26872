"""city.ky.gz: a hundred thousand nodes."""

import math

from .kalmyr import (background, camera, cone, cube, cylinder, material, move, no_headlight, place, separator,
                     sphere, sun)
from .noise import Dice, value_noise
from .scene import Node, Raw, Writer, HEADERS

BLOCKS = 46           # along each side
PITCH = 30            # from block to block
LOTS = 3              # along each side of a block
RIVER = (.42, .55)    # a share of the width, at the near and the far end
PARK = (18, 18, 25, 23)


def window_rows(wall, panes, lit, seed):
    """An SFImage of 8 by 8 pixels, two by two windows."""
    dice = Dice(seed)
    shade = lambda c: Raw("0x" + "".join(f"{max(0, min(255, round(255 * v))):02x}" for v in c))
    light = [[dice.next() < lit for _ in range(2)] for _ in range(2)]
    pixels = []
    for y in range(8):
        for x in range(8):
            if x % 4 in (1, 2) and y % 4 in (1, 2):
                pixels.append(shade((.98, .86, .55) if light[x // 4][y // 4] else panes))
            else:
                pixels.append(shade(wall))
    return Raw("8 8 3 " + " ".join(pixels))


def facades():
    """Picture and repeat for tall and for low houses, in several colours."""
    walls = [((.78, .74, .68), (.30, .40, .50)), ((.66, .36, .26), (.20, .22, .26)),
             ((.62, .66, .70), (.22, .34, .46)), ((.86, .80, .66), (.34, .32, .32)),
             ((.36, .44, .52), (.55, .70, .80)), ((.82, .82, .84), (.24, .30, .36))]
    found = {}
    for kind, (wall, panes) in enumerate(walls):
        picture = Node("Texture2", f"Windows{kind}", image=window_rows(wall, panes, .12, kind + 5))
        for floors in (2, 5, 10, 18):
            scale = Node("Texture2Transform", scaleFactor=(3, floors))
            found[kind, floors] = Node("Group", f"Facade{kind}x{floors}", [picture, scale])
    return found


class City:
    def __init__(self):
        self.dice = Dice(11)
        self.facades = facades()
        self.plain = Node("Texture2", "NoPicture", image=Raw("0 0 0"))
        self.roofs = [material(c, name=f"Roof{i}") for i, c in
                      enumerate(((.42, .40, .38), (.56, .30, .22), (.34, .38, .36)))]
        self.white = material((1, 1, 1), name="Plain")
        self.tree = Node("Separator", "Tree", [
            separator(material((.30, .22, .14)), move(0, 1, 0), cylinder(.3, 2)),
            material((.20, .40, .16)), move(0, 3.6, 0), sphere(2.)])
        self.fir = Node("Separator", "Fir", [material((.12, .32, .16)), move(0, 3, 0), cone(1.6, 6)])
        self.pavement = Node("Group", "Pavement", [material((.60, .59, .57)), cube(PITCH - 7, .4, PITCH - 7)])
        self.lawn = Node("Group", "Lawn", [material((.34, .50, .22)), cube(PITCH - 5, .4, PITCH - 5)])

    def height(self, x, z):
        r = math.hypot(x, z) / (BLOCKS * PITCH / 2)
        centre = math.exp(-(r * 2.6) ** 2)
        second = .6 * math.exp(-(math.hypot(x - 240, z + 190) / 90) ** 2)
        tall = 9 + 26 * value_noise(x / 60, z / 60, 3) + 110 * max(centre, second) * self.dice.between(.25, 1)
        return max(6, round(tall))

    def house(self, x, z, height):
        dice = self.dice
        width, depth = round(dice.between(5.2, 6.8), 1), round(dice.between(5.2, 6.8), 1)
        floors = 2 if height < 12 else 5 if height < 26 else 10 if height < 60 else 18
        kind = dice.pick((1, 3, 0, 3, 1)) if height < 26 else dice.pick((0, 2, 4, 5, 2, 4))
        kids = [move(x, height / 2, z), self.facades[kind, floors], cube(width, height, depth)]
        if height > 50:  # a narrower top
            kids += [move(0, round(height * .62, 1), 0),
                     cube(round(width * .6, 1), round(height * .24, 1), round(depth * .6, 1))]
        else:
            kids += [self.roofs[int(3 * dice.next())], self.plain, move(0, height / 2 + .3, 0),
                     cube(width - 1, .6, depth - 1)]
            if dice.next() < .55:
                kids += [move(round(dice.between(-1.5, 1.5), 1), .9, round(dice.between(-1.5, 1.5), 1)),
                         cylinder(.8, 1.4) if dice.next() < .5 else cube(1.6, 1.3, 1.6)]
        return separator(*kids)

    def houses(self, x, z):
        kids = []
        for i in range(LOTS):
            for j in range(LOTS):
                dx, dz = (i - 1) * 7.4, (j - 1) * 7.4
                if i == j == 1 and self.dice.next() < .5:
                    kids.append(separator(move(dx, .2, dz), self.tree))
                else:
                    kids.append(self.house(dx, dz, self.height(x + dx, z + dz)))
        return [self.pavement, self.white, *kids]

    def park(self):
        trees = []
        for _ in range(14):
            k = round(self.dice.between(.6, 1.2), 2)
            at = (round(self.dice.between(-11, 11), 1), .2, round(self.dice.between(-11, 11), 1))
            trees.append(separator(place(at, scale=(k, k, k)), self.tree if self.dice.next() < .7 else self.fir))
        return [self.lawn, *trees]

    def blocks(self):
        found = []
        for j in range(BLOCKS):
            for i in range(BLOCKS):
                x, z = (i - BLOCKS / 2 + .5) * PITCH, (j - BLOCKS / 2 + .5) * PITCH
                if abs((i + .5) / BLOCKS - self.river_at((j + .5) / BLOCKS)) < .03:
                    continue
                a, b, c, d = PARK
                green = a <= i < c and b <= j < d or self.dice.next() < .035
                kids = self.park() if green else self.houses(x, z)
                found.append(Node("Separator", f"Block_{i}_{j}", [move(x, 0, z), *kids]))
        return found

    @staticmethod
    def river_at(t):
        return RIVER[0] + (RIVER[1] - RIVER[0]) * t + .07 * math.sin(t * 7) - .16

    def ground(self):
        size = BLOCKS * PITCH
        left, right = [], []
        for j in range(61):
            t = j / 60
            x, z = (self.river_at(t) - .5) * size, (t - .5) * size
            left.append((round(x - 19, 1), -.02, round(z, 1)))
            right.append((round(x + 19, 1), -.02, round(z, 1)))
        water = separator(material((.16, .34, .46), .8, .8), Node("Coordinate3", point=[p for pair in zip(left, right) for p in pair]),
                          Node("QuadMesh", verticesPerRow=2, verticesPerColumn=61), name="River")
        streets = separator(material((.24, .24, .26)), move(0, -1.05, 0), cube(size + 30, 2, size + 30), name="Streets")
        return [streets, water]


def build():
    """The text, its pictures (none); the caller packs it."""
    city = City()
    scene = separator(no_headlight(), background((.50, .68, .90), (.90, .90, .86)),
                      camera((-400., 290., 800.), (-.56, -.81, -.17, .62), 850., .62),
                      sun((.62, -.60, -.50), .95, (1, .95, .86)), sun((-.7, -.25, -.6), .35, (.7, .8, 1)),
                      Node("Group", "Blocks", city.blocks()), *city.ground(), name="City")
    writer = Writer(False)
    writer.line(0, HEADERS[False])
    writer.line(0, "# Written by generate.py.")
    writer.node(scene, 0)
    return "\n".join(line.lstrip() for line in writer.lines) + "\n", {}
