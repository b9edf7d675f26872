"""deep.ky: a shell whose chambers nest, and a sunflower whose seeds stand side by side."""

import math

from .kalmyr import (background, body, camera, cylinder, material, move, no_headlight, place, separator,
                     sphere, sun)
from .mesh import TAU, Mesh, lathe, turn_z
from .scene import Node, scene_text

CHAMBERS = 150
SEEDS = 2000
PETALS = 34


def shell():
    """Each chamber is turned, moved and grown from the one that holds it."""
    profile = [(0, -.5), (.5, -.46), (.8, -.26), (.9, 0), (.8, .26), (.5, .46), (0, .5)]
    chamber = Node("Separator", "Chamber", body(Mesh().add(lathe(profile, 20), turn=turn_z), 1.2))
    stripes = [material(c, .5, .7, name=n) for n, c in
               (("Cream", (.92, .82, .66)), ("Umber", (.60, .30, .14)), ("Sand", (.88, .70, .48)))]
    growth = 1.016
    inner = None
    for i in reversed(range(CHAMBERS)):
        kids = [stripes[1 if i % 9 in (0, 1) else 2 if i % 9 in (2, 8) else 0], chamber]
        if inner:
            kids += [inner]
        step = [] if i == 0 else [place((.36, 0, 0), (0, 0, 1, .135), (growth,) * 3)]
        # Groups: boxes around turned boxes, one at each separator, would grow without limit.
        inner = Node("Group", f"Chamber{i + 1}" if i else None, step + kids)
    return separator(place((-6.2, 0, 0), (0, 0, 1, 2.0), (.17,) * 3), inner, name="Shell")


def sunflower():
    seed = sphere(.085, "Seed")
    shades = [material(c, .2, .3, name=n) for n, c in
              (("Young", (.46, .40, .10)), ("Ripe", (.24, .13, .05)), ("Dust", (.72, .48, .08)))]
    seeds = []
    for i in range(SEEDS):
        r, a = .062 * math.sqrt(i + .5), i * 2.399963
        shade = shades[0 if r < .9 else 1 if r < 2.25 else 2]
        height = .55 - .05 * r * r + .12 * math.cos(r * 2)
        seeds.append(separator(shade, move(r * math.cos(a), r * math.sin(a), height), seed))
    petal = Node("Separator", "Petal", [place((0, 3.75, .1), (1, 0, 0, -.12), (.42, 1.45, .1)),
                                        sphere(1.)])
    petals = []
    for i in range(PETALS):
        a, row = TAU * i / PETALS, i % 2
        petals.append(separator(place((0, 0, -.12 * row), (0, 0, 1, a), (1, 1 + .1 * row, 1)), petal))
    leaf = Node("Separator", "Leaf", [place((1.5, 0, 0), (0, 0, 1, .3), (1.6, .6, .08)), sphere(1.)])
    stalk = separator(material((.20, .46, .14), .2, .3), separator(move(0, -5.2, -.5), cylinder(.22, 9.)),
                      separator(move(.1, -6.6, -.4), leaf),
                      separator(place((-.1, -5.4, -.4), (0, 1, 0, math.pi)), leaf), name="Stalk")
    return separator(move(6.0, 1.6, 0),
                     separator(material((.98, .74, .08), .15, .2), *petals, name="Petals"),
                     separator(material((.20, .12, .05)), place(None, None, (2.85, 2.85, .35)), sphere(1.)),
                     Node("Separator", "Seeds", seeds), stalk, name="Sunflower")


def build():
    scene = separator(no_headlight(), background((.80, .90, .96), (.46, .62, .60)),
                      camera((0, -.9, 27), (0, 1, 0, 0.), 27., .62), sun((-.4, -.5, -.8), .85), sun((.9, .1, -.4), .3),
                      sunflower(), shell(), name="Garden")
    return scene_text([scene], False, [
        f"Written by generate.py. The shell nests {CHAMBERS} deep, the seeds are {SEEDS} children of one node."]), {}
