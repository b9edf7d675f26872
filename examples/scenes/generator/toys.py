"""What stands on the board and on the bench: lighthouse, robot arm, blocks, turned things."""

import math

from . import mesh
from .noise import Dice, hash01
from .parts import box, cylinder, placed, shape, sphere, transform
from .scene import Node


def rock(radius, height, seed, steps=18):
    rings = [(1, 0), (.93, .4), (.78, .8), (.62, 1)]
    body = mesh.lathe([(radius * r, height * y) for r, y in rings] + [(0, height)], steps)
    for i, (x, y, z) in enumerate(body.points[:-1]):
        k = .86 + .28 * hash01(i, 0, seed)
        lift = .12 * height * (hash01(i, 1, seed) - .5) if 0 < y < height else 0
        body.points[i] = (x * k, y + lift, z * k)
    body.hulls = [body.points]
    return body.node(0)


def lighthouse(looks):
    """Its foot at the origin."""
    levels = [(.4, .92), (1.05, .82), (1.7, .74), (2.35, .67), (3.0, .61), (3.65, .56)]
    tower = []
    for i, ((y0, r0), (y1, r1)) in enumerate(zip(levels, levels[1:])):
        band = mesh.lathe([(r0, y0), (r1, y1)], 36)
        tower.append(shape(band.node(.5), looks.red if i % 2 == 0 else looks.white, f"Band{i + 1}"))
    gallery = mesh.lathe([(.54, 3.60), (.80, 3.70), (.80, 3.80), (0, 3.80)], 36)
    post = shape(cylinder(.02, .3), looks.iron, "RailingPost")
    posts = [transform(None, (.74 * math.sin(a), 3.94, .74 * math.cos(a)), kids=[post])
             for a in [2 * math.pi * i / 14 for i in range(14)]]
    hoop = mesh.lathe([(.72, 0), (.76, 0), (.76, .035), (.72, .035), (.72, 0)], 36)
    lens = mesh.lathe([(0, 0), (.14, .03), (.2, .22), (.14, .42), (0, .46)], 20)
    glass = mesh.lathe([(.36, 0), (.36, .56)], 24)
    bar = shape(box(.035, .58, .035), looks.iron, "LanternBar")
    bars = [transform(None, (.36 * math.sin(a), 4.08, .36 * math.cos(a)), kids=[bar])
            for a in [math.pi * i / 4 for i in range(8)]]
    roof = mesh.lathe([(.34, 4.34), (.50, 4.36), (.44, 4.48), (.28, 4.66), (.11, 4.78), (.06, 4.80),
                       (.06, 4.86), (.085, 4.90), (.085, 4.94), (0, 5.0)], 32)
    door = mesh.prism([(-.2, 0), (.2, 0), (.2, .42)]
                      + [(.2 * math.cos(a), .42 + .2 * math.sin(a)) for a in
                         [math.pi * i / 8 for i in range(1, 8)]] + [(-.2, .42)], .1)
    pane = shape(box(.17, .26, .08), looks.window, "LighthouseWindow")
    windows = [transform(None, (r * math.sin(a), y, r * math.cos(a)), (0, 1, 0, a), kids=[pane])
               for y, r, a in ((1.72, .735, .55), (2.68, .635, .25))]
    return transform("Lighthouse", kids=[
        transform("Cliff", kids=[shape(rock(1.45, .5, 3), looks.rock)]),
        Node("Group", "Tower", tower),
        transform("Door", (.85 * math.sin(.4), .46, .85 * math.cos(.4)), (0, 1, 0, .4),
                  kids=[shape(door.node(.5), looks.dark_wood)]),
        Node("Group", "TowerWindows", windows),
        transform("Gallery", kids=[shape(gallery.node(.5), looks.white), Node("Group", "Railing", posts),
                                   placed(hoop.node(.5), looks.iron, (0, 4.08, 0))]),
        transform("Lantern", kids=[placed(lens.node(1), looks.lamp, (0, 3.84, 0), name="Lens"),
                                   Node("Group", "LanternBars", bars),
                                   shape(roof.node(.6), looks.red, "LanternRoof"),
                                   placed(glass.node(.5), looks.glass, (0, 3.8, 0), name="LanternGlass")])])


def arm_lever(looks, length, r0, r1, name):
    """Two plates with a gap, along x."""
    plate = shape(mesh.stadium(length, r0, r1, .13).node(.5, name + "Mesh"), looks.orange, name + "Plate")
    cover = placed(cylinder(r0 * .55, .52), looks.steel, None, (1, 0, 0, math.pi / 2))
    return [transform(None, (0, 0, .17), kids=[plate]), transform(None, (0, 0, -.17), kids=[plate]), cover,
            placed(box(length * .5, r1 * .9, .22), looks.iron, (length * .5, 0, 0))]


def robot_arm(looks, blocks, turn=-.35, shoulder=1.02, elbow=-1.25, wrist=-1.342):
    """The base at the origin; angles in radians. The arm reaches along x when `turn` is 0."""
    base = mesh.lathe([(0, 0), (.95, 0), (.95, .14), (.86, .2), (.7, .24), (.62, .5), (0, .5)], 36)
    table = mesh.lathe([(0, .5), (.56, .5), (.56, .66), (.5, .72), (0, .72)], 36)
    finger = shape(box(.36, .10, .16), looks.steel, "Finger")
    gripper = transform("Gripper", (.62, 0, 0), kids=[
        placed(box(.14, .92, .34), looks.iron, (0, 0, 0), name="Palm"),
        transform("UpperFinger", (.22, .40, 0), kids=[finger]),
        transform("LowerFinger", (.22, -.40, 0), kids=[finger]),
        transform("HeldBlock", (.50, 0, 0), (0, 0, 1, math.pi / 2), (.95, .95, .95), [blocks.plain(looks.blue)])])
    wrist_node = transform("Wrist", (1.75, 0, 0), (0, 0, 1, wrist), kids=[
        placed(cylinder(.2, .62), looks.steel, None, (1, 0, 0, math.pi / 2)),
        placed(cylinder(.14, .5), looks.orange, (.32, 0, 0), (0, 0, 1, math.pi / 2)), gripper])
    forearm = transform("Forearm", (2.0, 0, 0), (0, 0, 1, elbow), kids=arm_lever(looks, 1.75, .30, .2, "Forearm")
                        + [wrist_node])
    upper = transform("UpperArm", (0, 1.15, 0), (0, 0, 1, shoulder),
                      kids=arm_lever(looks, 2.0, .36, .28, "UpperArm") + [forearm])
    cheek = shape(box(.5, .85, .12), looks.orange, "ShoulderCheek")
    return transform("RobotArm", kids=[
        shape(base.node(.6), looks.iron, "Pedestal"),
        transform("Turntable", None, (0, 1, 0, turn), kids=[
            shape(table.node(.6), looks.orange),
            transform(None, (0, 1.02, .33), kids=[cheek]), transform(None, (0, 1.02, -.33), kids=[cheek]), upper])])


class Blocks:
    """Toy blocks of side .8: one mesh, one sheet of letters."""

    SIDE = .8

    def __init__(self, looks, sheet, letters):
        self.mesh = mesh.bevelled_cube(self.SIDE, .05).node(0, "BlockMesh")
        self.sheet = sheet
        self.letters = letters
        self.plains = {}

    def plain(self, look):
        if look.name not in self.plains:
            self.plains[look.name] = shape(self.mesh, look, "BlockIn" + look.name)
        return self.plains[look.name]

    def lettered(self, letter):
        index = self.letters.index(letter)
        look = Node("Appearance", f"Letter{letter}", material=self.sheet.fields["material"],
                    texture=self.sheet.fields["texture"],
                    textureTransform=Node("TextureTransform", scale=(1 / len(self.letters), 1.0),
                                          translation=(float(index), 0.0)))
        return shape(self.mesh, look)

    def word(self, text, move, step):
        dice = Dice(11)
        kids = []
        for i, letter in enumerate(text):
            turn = (0, 1, 0, dice.between(-.16, .16))
            kids.append(transform(f"Block{letter}", (i * step, self.SIDE / 2, dice.between(-.08, .08)), turn,
                                  kids=[self.lettered(letter)]))
        return transform("LetterBlocks", move, kids=kids)

    def tower(self, looks, move):
        half = self.SIDE / 2
        spots = [(-.47, half, .1, .12, looks.yellow), (.45, half, -.02, -.2, looks.red),
                 (.02, half * 3, .03, .35, looks.white)]
        kids = [transform(None, (x, y, z), (0, 1, 0, a), kids=[self.plain(look)]) for x, y, z, a, look in spots]
        return transform("BlockTower", move, kids=kids)


def pines(looks, places):
    crown = mesh.lathe([(.5, .35), (.22, .85), (.40, .82), (.17, 1.3), (.3, 1.27), (0, 1.85)], 14)
    tree = transform("Pine", kids=[shape(crown.node(.35), looks.pine),
                                   placed(cylinder(.09, .4), looks.dark_wood, (0, .2, 0))])
    return Node("Group", "Pines", [transform(None, (x, 0, z), (0, 1, 0, x), (s, s, s), [tree])
                                   for x, z, s in places])


def boat(looks):
    hull = mesh.Mesh()
    ribs = [(-.6, .20, .0), (-.35, .28, 0), (0, .30, 0), (.3, .24, 0), (.52, .13, .02), (.72, .01, .06)]
    for x, w, lift in ribs:
        hull.points += [(x, .34 + lift, -w), (x, .02, -w * .5), (x, .02, w * .5), (x, .34 + lift, w)]
    for i in range(len(ribs) - 1):
        a, b = 4 * i, 4 * i + 4
        for k in range(4):
            l = (k + 1) % 4
            hull.faces.append([a + k, b + k, b + l, a + l])
    hull.faces.append([3, 2, 1, 0])
    for face in hull.faces:
        face.reverse()
    hull.hulls = [hull.points]
    sails = mesh.Mesh()
    sails.points = [(-.02, .5, 0), (-.5, .55, .1), (-.02, 1.55, 0), (.05, .5, 0), (.62, .5, .08), (.05, 1.4, 0)]
    sails.faces = [[0, 1, 2], [3, 4, 5]]
    sails.hulls = [sails.points[:3], sails.points[3:]]
    return transform("SailingBoat", kids=[
        shape(hull.node(.9), looks.red, "Hull"), placed(cylinder(.025, 1.5), looks.dark_wood, (0, .95, 0)),
        shape(sails.node(0, solid=False), looks.white, "Sails")])


def spinning_top(looks):
    body = mesh.lathe([(0, 0), (.05, .05), (.09, .2), (.3, .36), (.62, .52), (.66, .6)], 36)
    upper = mesh.lathe([(.66, .6), (.6, .68), (.3, .78), (.1, .84), (.07, 1.0), (.065, 1.18), (.09, 1.22),
                        (.09, 1.27), (0, 1.3)], 36)
    return transform("SpinningTop", kids=[shape(body.node(.6), looks.yellow),
                                          shape(upper.node(.6), looks.blue)])


def skittles(looks, places):
    pin = mesh.lathe([(0, 0), (.26, 0), (.28, .04), (.33, .3), (.30, .55), (.16, .88), (.13, 1.0)], 28).node(.7)
    neck = mesh.lathe([(.13, 1.0), (.135, 1.08)], 28).node(.5)
    head = mesh.lathe([(.135, 1.08), (.19, 1.18), (.21, 1.3), (.17, 1.42), (.08, 1.49), (0, 1.5)], 28).node(.9)
    skittle = transform("Skittle", kids=[shape(pin, looks.wood), shape(neck, looks.red), shape(head, looks.wood)])
    return Node("Group", "Skittles", [transform(None, (x, 0, z), kids=[skittle]) for x, z in places])


def paint_pots(looks, places):
    """Jars of clear glass with paint in them."""
    wall = mesh.lathe([(0, 0), (.36, 0), (.42, .05), (.42, .78), (.36, .86), (.36, .92)], 32)
    lid = mesh.lathe([(0, .92), (.40, .92), (.40, 1.06), (.37, 1.09), (0, 1.09)], 32)
    lid_shape = shape(lid.node(.5, "LidMesh"), looks.steel, "Lid")
    glass_shape = shape(wall.node(.5, "JarMesh"), looks.glass, "Jar")
    fill = cylinder(.385, .66)
    fill.name = "PaintBody"
    kids = []
    for i, (x, z, look) in enumerate(places):
        kids.append(transform(f"PaintPot{i + 1}", (x, 0, z), kids=[
            placed(fill, look, (0, .36, 0)), lid_shape, glass_shape]))
    return Node("Group", "PaintPots", kids)


def pencil_cup(looks):
    cup = mesh.lathe([(0, 0), (.42, 0), (.46, .05), (.5, 1.0), (.46, 1.0), (.42, .08), (0, .08)], 28)
    shaft = mesh.lathe([(0, 0), (.07, 0), (.07, 1.5)], 6)
    tip = mesh.lathe([(.07, 1.5), (.02, 1.7), (0, 1.76)], 6)
    shaft_mesh, tip_shape = shaft.node(0, "PencilShaft"), shape(tip.node(0), looks.cream, "PencilTip")
    kids = [shape(cup.node(.5), looks.blue, "Cup")]
    for i, look in enumerate((looks.red, looks.yellow, looks.green, looks.orange, looks.white)):
        a = 2 * math.pi * i / 5 + .4
        kids.append(transform(f"Pencil{i + 1}", (.2 * math.sin(a), .1, .2 * math.cos(a)),
                              (math.cos(a), 0, -math.sin(a), .13), kids=[shape(shaft_mesh, look), tip_shape]))
    return transform("PencilCup", kids=kids)


def marble_bowl(looks):
    bowl = mesh.lathe([(0, 0), (.45, 0), (.48, .06), (.8, .3), (1.02, .62), (.97, .64), (.76, .36), (.42, .14),
                       (0, .12)], 36)
    marble = sphere(.19)
    marble.name = "MarbleBody"
    spots = [(0, .32, 0), (.36, .38, .1), (-.3, .38, .22), (.05, .38, -.37), (.2, .40, .42), (-.38, .44, -.2),
             (-.08, .64, .18), (.18, .66, -.12)]
    paints = [looks.blue, looks.red, looks.yellow, looks.green, looks.orange, looks.white, looks.steel, looks.red]
    return transform("MarbleBowl", kids=[shape(bowl.node(.5), looks.dark_wood, "Bowl")]
                     + [placed(marble, paint, spot) for spot, paint in zip(spots, paints)])


def desk_lamp(looks):
    foot = mesh.lathe([(0, 0), (.8, 0), (.8, .1), (.7, .16), (.12, .22), (0, .22)], 32)
    shade = mesh.lathe([(.80, -.55), (.30, .1), (.22, .3), (0, .34)], 32)
    head = transform("LampHead", (0, 2.9, 0), (0, 0, 1, .45), kids=[
        shape(shade.node(.5, solid=False), looks.green, "LampShade"),
        placed(sphere(.26), looks.lamp, (0, -.28, 0), name="Bulb")])
    upper = transform("LampUpperArm", (0, 3.0, 0), (0, 0, 1, -1.0), kids=[
        placed(cylinder(.06, 2.9), looks.brass, (0, 1.45, 0)),
        placed(cylinder(.15, .26), looks.brass, None, (1, 0, 0, math.pi / 2)), head])
    lower = transform("LampLowerArm", (0, .15, 0), (0, 0, 1, .22), kids=[
        placed(cylinder(.06, 3.0), looks.brass, (0, 1.5, 0)), upper])
    return transform("DeskLamp", kids=[shape(foot.node(.6), looks.green, "LampFoot"), lower])
