"""terrain.wrl: mountains around a lake; and a mesh of any size for measurements."""

import math

from .noise import Dice, fractal, value_noise
from .parts import appearance, shape, transform
from .scene import Node, scene_text

SIZE = 200        # points along each side
SPACING = .5
LAKE = 1.6        # height of the water


def height(x, z):
    """In units of length; x and z from -1 to 1."""
    ridge = 1 - abs(2 * fractal(x * 1.7 + 9, z * 1.7 + 4, 5, 20) - 1)
    hills = fractal(x * 3 + 2, z * 3 + 7, 5, 30)
    basin = math.exp(-((x + .08) ** 2 * 5.5 + (z - .28) ** 2 * 9))
    edge = .35 + .65 * min(1, math.hypot(x, z - .1) * 1.15)
    return max(0., 15 * ridge ** 3 * edge + 3.5 * hills + 1.2 - 8.5 * basin)


def mix(a, b, t):
    t = max(0, min(1, t))
    return tuple(p + (q - p) * t for p, q in zip(a, b))


def ground_color(h, slope, rough):
    grass, meadow = (.22, .36, .12), (.38, .46, .20)
    rock, snow, sand = (.42, .38, .34), (.95, .96, .99), (.72, .64, .46)
    color = mix(grass, meadow, rough)
    color = mix(color, rock, (slope - .55) * 2.5 + (h - 8.5) * .25)
    color = mix(color, snow, (h - 10.2 + 1.5 * (rough - .5)) * .9 - slope * .35)
    color = mix(sand, color, (h - LAKE - .12) * 3)
    return tuple(round(c * (.86 + .2 * rough), 2) for c in color)


def grid(size):
    heights = [[height(2 * i / (size - 1) - 1, 2 * j / (size - 1) - 1) for i in range(size)] for j in range(size)]
    colors = []
    step = SPACING * SIZE / size
    for j in range(size):
        for i in range(size):
            h = heights[j][i]
            dx = heights[j][min(i + 1, size - 1)] - heights[j][max(i - 1, 0)]
            dz = heights[min(j + 1, size - 1)][i] - heights[max(j - 1, 0)][i]
            slope = math.hypot(dx, dz) / (2 * step)
            colors.append(ground_color(h, slope, value_noise(i * .37, j * .37, 8)))
    return heights, colors


def pines(heights):
    tree = Node("Transform", "Pine", [
        shape(Node("Cone", bottomRadius=.55, height=2.2), appearance("Needles", (.07, .22, .10))),
        transform(None, (0, -1.2, 0), kids=[
            shape(Node("Cylinder", radius=.1, height=.5), appearance("Bark", (.30, .20, .12)))])])
    dice = Dice(4)
    found = []
    while len(found) < 420:
        i, j = int(dice.between(4, SIZE - 4)), int(dice.between(4, SIZE - 4))
        h = heights[j][i]
        steep = abs(heights[j][i + 1] - h) + abs(heights[j + 1][i] - h)
        if LAKE + .35 < h < 7 and steep < .5 and value_noise(i * .07, j * .07, 12) > .5:
            k = round(dice.between(.45, 1), 2)
            at = (round((i - (SIZE - 1) / 2) * SPACING, 2), round(h + 1.2 * k, 2), round((j - (SIZE - 1) / 2) * SPACING, 2))
            found.append(transform(None, at, scale=(k, k, k), kids=[tree]))
    return Node("Group", "Forest", found)


def build():
    heights, colors = grid(SIZE)
    half = round((SIZE - 1) * SPACING / 2, 3)
    land = Node("ElevationGrid", "Relief", xDimension=SIZE, zDimension=SIZE, xSpacing=SPACING, zSpacing=SPACING,
                creaseAngle=1.2, color=Node("Color", color=colors), height=[round(h, 2) for row in heights for h in row])
    look = Node("Appearance", "Ground", material=Node("Material", ambientIntensity=.5))
    water = appearance("Water", (.10, .30, .42), .9, .85, transparency=.3)
    scene = [
        Node("WorldInfo", title="Terrain", info=["Mountains around a lake."]),
        Node("Viewpoint", "Shore", position=(-6., 17., 62.), orientation=(-.97, -.22, .05, .25), fieldOfView=.7,
             description="Above the shore"),
        Node("NavigationInfo", headlight=False, type=["EXAMINE", "ANY"]),
        Node("Background", skyColor=[(.22, .42, .74), (.55, .72, .90), (.90, .92, .92)], skyAngle=[1.2, 1.571],
             groundColor=[(.30, .32, .30), (.80, .84, .86)], groundAngle=[1.571]),
        Node("Fog", fogType="LINEAR", color=(.80, .86, .92), visibilityRange=260.),
        Node("DirectionalLight", "Sun", direction=(.62, -.55, -.35), color=(1., .95, .85), intensity=.95,
             ambientIntensity=.35),
        Node("DirectionalLight", "Sky", direction=(-.5, -.8, .3), color=(.6, .75, 1.), intensity=.3),
        pines(heights),
        transform("Mountains", (-half, 0, -half), kids=[shape(land, look, "Land")]),
        transform("Lake", (0, LAKE, 0), kids=[shape(Node("Box", size=(2 * half, .02, 2 * half)), water, "LakeSurface")])]
    return scene_text(scene, True, ["Written by generate.py."]), {}


def write_mesh(path, triangles):
    """A mesh of about so many triangles as one indexed face set, nothing else: input of measurements."""
    size = math.isqrt(triangles // 2) + 1
    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write("#VRML V2.0 utf8\nShape { appearance Appearance { material Material { } }\n"
                  "geometry IndexedFaceSet { creaseAngle 1 coord Coordinate { point [\n")
        for j in range(size):
            z = 100 * j / (size - 1) - 50
            for i in range(size):
                x = 100 * i / (size - 1) - 50
                y = 4 * math.sin(x * .21) * math.cos(z * .17) + 1.5 * math.sin(x * .63 + z * .4)
                out.write(f"{x:.5f} {y:.5f} {z:.5f},\n")
        out.write("] }\ncoordIndex [\n")
        for j in range(size - 1):
            for i in range(size - 1):
                a = j * size + i
                out.write(f"{a}, {a + size}, {a + 1}, -1, {a + 1}, {a + size}, {a + size + 1}, -1,\n")
        out.write("] } }\n")
