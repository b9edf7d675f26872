"""shared.ky: a big wheel. Few nodes, each in many places."""

import math

from .kalmyr import (background, body, camera, cone, cube, cylinder, material, move, no_headlight, place,
                     separator, sphere, sun)
from .mesh import Mesh, TAU
from .scene import Node, Raw, scene_text

CABINS = 12
RADIUS = 10.0
HUB = 12.4


def ring(radius, tube, steps, sides):
    """A torus around z."""
    mesh = Mesh()
    for i in range(steps):
        a = TAU * i / steps
        for k in range(sides):
            b = TAU * k / sides
            r = radius + tube * math.cos(b)
            mesh.points.append((r * math.cos(a), r * math.sin(a), tube * math.sin(b)))
    at = lambda i, k: i % steps * sides + k % sides
    mesh.faces = [[at(i, k), at(i + 1, k), at(i + 1, k + 1), at(i, k + 1)]
                  for i in range(steps) for k in range(sides)]
    return mesh


def cabin():
    """Takes the colour of the place that it hangs in."""
    post = Node("Separator", "CabinPost", [cylinder(.05, 1.0)])
    posts = [separator(move(x, -.75, z), post) for x in (-.62, .62) for z in (-.5, .5)]
    return Node("Separator", "Cabin", [
        separator(move(0, -.1, 0), place(scale=(1, 1, .8)), cone(1.1, .6)),
        separator(move(0, -1.55, 0), cube(1.6, .75, 1.25)),
        Node("Group", "CabinPosts", posts),
        separator(material((.92, .90, .84)), move(0, -1.12, 0), cube(1.7, .1, 1.35))])


def side(spoke, lamp):
    rim = separator(*body(ring(RADIUS, .16, 72, 8), 1.0), name="Rim")
    inner = separator(place(scale=(.62, .62, .8)), rim)
    spokes = [separator(Node("RotationXYZ", axis=Raw("Z"), angle=TAU * i / CABINS), spoke)
              for i in range(CABINS)]
    lamps = [separator(Node("RotationXYZ", axis=Raw("Z"), angle=TAU * i / 48),
                       move(RADIUS, 0, .2), lamp) for i in range(48)]
    return Node("Separator", "Side", [
        material((.88, .89, .92), .5, .6), rim, inner, Node("Group", "Spokes", spokes),
        Node("Group", "Lamps", lamps)])


def wheel():
    spoke = Node("Separator", "Spoke", [move(0, RADIUS / 2, 0), cylinder(.09, RADIUS)])
    lamp = Node("Separator", "Lamp", [material((1., .8, .3), emissive=(.9, .66, .2)), sphere(.13)])
    one_side = side(spoke, lamp)
    paints = [material(c, .4, .6, name=f"{n}Paint") for n, c in
              (("Red", (.78, .12, .10)), ("Yellow", (.93, .70, .10)), ("Blue", (.10, .36, .70)),
               ("Green", (.10, .52, .30)))]
    hanging = cabin()
    cabins = []
    for i in range(CABINS):
        a = TAU * (i + .5) / CABINS
        cabins.append(separator(paints[i % 4], move(RADIUS * math.cos(a), RADIUS * math.sin(a), 0),
                                hanging))
    axle = separator(material((.30, .32, .36), .5, .6), Node("RotationXYZ", axis=Raw("X"), angle=TAU / 4),
                     cylinder(.7, 4.6))
    return separator(move(0, HUB, 0), separator(move(0, 0, 1.1), one_side),
                     separator(move(0, 0, -1.1), one_side), axle,
                     Node("Group", "Cabins", cabins), name="Wheel")


def stand():
    leg = Node("Separator", "Leg", [cylinder(.34, 13.4)])
    legs = [separator(place((x * 2.7, HUB / 2, z), (0, 0, 1, x * .42)), leg)
            for x in (-1, 1) for z in (-2.1, 2.1)]
    return separator(material((.24, .42, .62), .4, .5), *legs, name="Stand")


def ground():
    tree = Node("Separator", "Tree", [
        separator(material((.36, .24, .14)), move(0, .5, 0), cylinder(.16, 1.0)),
        material((.16, .42, .18)), move(0, 1.9, 0), cone(1.0, 2.2), move(0, .9, 0), cone(.75, 1.7)])
    trees = []
    for i in range(16):
        a = TAU * (i + .5) / 16
        k = .8 + .5 * (i * 7 % 5) / 4
        trees.append(separator(place((12.4 * math.cos(a), 0, 12.4 * math.sin(a)), scale=(k, k, k)), tree))
    hut = separator(move(7.2, 0, 4.4), separator(material((.90, .84, .70)), move(0, 1, 0), cube(2.2, 2, 2)),
                    separator(material((.78, .12, .10), .3, .4), move(0, 2.5, 0), cone(1.9, 1.0)), name="TicketHut")
    return separator(separator(material((.46, .62, .34)), move(0, -.3, 0), cylinder(14.5, .6)),
                     separator(material((.78, .74, .66)), move(0, .02, 0), cylinder(10.5, .1)),
                     separator(material((.55, .52, .48)), move(0, .3, 0), cube(11, .5, 5.4)),
                     hut, Node("Group", "Trees", trees), name="Ground")


def build():
    view = camera((21., 17., 37.), (-.19, .972, .10, .52), 44., .66)
    scene = separator(background((.55, .73, .92), (.93, .94, .92)), no_headlight(), view, sun((-.5, -.75, -.6)),
                      sun((.8, -.2, -.5), .25), wheel(), stand(), ground(), name="Fair")
    return scene_text([scene], False,
                      ["Written by generate.py. One cabin hangs in twelve places and takes their colours."]), {}
