"""The toy train and its track."""

import math

from . import mesh
from .parts import box, cylinder, placed, shape, sphere, transform
from .scene import Node

RADIUS, HALF, RAIL_TOP = 2.9, 4.3, .20
GAUGE = .42  # half the distance of the rails


def on_track(s):
    """Place (x, z) and heading about y, as a turn of the x axis, at the length s along the track.

    The front straight runs to the right; s = 0 is its middle.
    """
    straight, bend = 2 * HALF, math.pi * RADIUS
    s = (s + HALF) % (2 * (straight + bend))
    if s < straight:
        return (-HALF + s, RADIUS), 0.0
    if s < straight + bend:
        a = (s - straight) / RADIUS
        return (HALF + RADIUS * math.sin(a), RADIUS * math.cos(a)), a
    if s < 2 * straight + bend:
        return (HALF - (s - straight - bend), -RADIUS), math.pi
    a = (s - 2 * straight - bend) / RADIUS
    return (-HALF - RADIUS * math.sin(a), -RADIUS * math.cos(a)), math.pi + a


LENGTH = 2 * (2 * HALF + math.pi * RADIUS)


def track(looks):
    sleeper = shape(box(.2, .09, 1.3), looks.dark_wood, "Sleeper")
    count = 52
    sleepers = []
    for i in range(count):
        (x, z), heading = on_track(LENGTH * (i + .5) / count)
        sleepers.append(transform(None, (x, .045, z), (0, 1, 0, heading) if heading else None,
                                  kids=[sleeper]))
    path = []
    steps = 96
    for i in range(steps):
        s = LENGTH * i / steps
        (x, z), heading = on_track(s)
        path.append(((x, .09, z), (math.cos(heading), 0, -math.sin(heading))))
    rails = []
    for side, name in ((-GAUGE, "InnerRail"), (GAUGE, "OuterRail")):
        section = [(side - .045, 0), (side + .045, 0), (side + .035, .11), (side - .035, .11)]
        rails.append(shape(mesh.sweep(section, path, True).node(.6), looks.steel, name))
    return transform("Track", kids=[Node("Group", "Sleepers", sleepers), Node("Group", "Rails", rails)])


def wheel_mesh(radius, width, spokes):
    """About the z axis, its outside towards +z."""
    wheel = mesh.Mesh()
    inner = radius * .74
    rim = [(inner, -width / 2), (radius * 1.12, -width / 2), (radius * 1.12, -width / 2 + .035),
           (radius, -width / 2 + .04), (radius * .97, width / 2), (inner, width / 2), (inner, -width / 2)]
    wheel.add(mesh.lathe(rim, 28), turn=mesh.turn_x)
    hub = [(0, -width / 2), (radius * .24, -width / 2), (radius * .24, width * .6),
           (radius * .12, width * .75), (0, width * .75)]
    wheel.add(mesh.lathe(hub, 14), turn=mesh.turn_x)
    for i in range(spokes):
        a = 2 * math.pi * i / spokes
        turn = lambda p, c=math.cos(a), s=math.sin(a): (p[0] * c - p[1] * s, p[0] * s + p[1] * c, p[2])
        wheel.add(mesh.box((inner, radius * .13, width * .5), (inner / 2 + .01, 0, 0)), turn=turn)
    wheel.hulls = [mesh.lathe([(radius, -width / 2), (radius, width / 2)], 16).points]
    wheel.hulls = [[mesh.turn_x(p) for p in h] for h in wheel.hulls]
    return wheel


class Train:
    """`wheels` are shared by all vehicles."""

    def __init__(self, looks):
        self.looks = looks
        self.big = shape(wheel_mesh(.40, .12, 10).node(.5, "DrivingWheelMesh"), looks.red, "DrivingWheel")
        self.small = shape(wheel_mesh(.23, .11, 6).node(.5, "CarWheelMesh"), looks.iron, "CarWheel")
        self.axle = self._axle()
        self.bogie = transform("Bogie", kids=[
            transform(None, (-.3, 0, 0), kids=[self.axle]), transform(None, (.3, 0, 0), kids=[self.axle]),
            placed(box(.95, .10, .5), looks.black, (0, .3, 0))])
        buffer = mesh.lathe([(0, 0), (.05, 0), (.05, .14), (.12, .15), (.12, .18), (0, .19)], 16)
        self.buffer = shape(buffer.node(.5, "BufferMesh"), looks.steel, "Buffer")
        section = [(.5 * 1.06 * math.sin(a), .3 * math.cos(a) - .25)
                   for a in [math.pi * (i / 10 - .5) * .82 for i in range(11)]]
        self.roof_outline = section[::-1] + [(x * .96, y - .06) for x, y in section]

    def _axle(self):
        rod = placed(cylinder(.05, .8), self.looks.steel, (0, .23, 0), (1, 0, 0, math.pi / 2))
        right = transform(None, (0, .23, GAUGE), kids=[self.small])
        left = transform(None, (0, .23, -GAUGE), (0, 1, 0, math.pi), kids=[self.small])
        return transform("Axle", kids=[rod, right, left])

    def roof(self, length, width, look, name):
        """An arched roof along x."""
        outline = [(x * width, y) for x, y in self.roof_outline]
        body = mesh.prism(outline, length)
        turned = mesh.Mesh().add(body, turn=lambda p: (p[2], p[1], -p[0]))
        turned.hulls = [turned.points]
        return shape(turned.node(.5, convex=False), look, name)

    def buffers(self, x, sign):
        turn = (0, 0, 1, -math.pi / 2 * sign)
        return [transform(None, (x, .52, z), turn, kids=[self.buffer]) for z in (-.34, .34)]

    def boiler(self):
        looks = self.looks
        lay = (0, 0, 1, -math.pi / 2)
        shell = mesh.lathe([(0, -.62), (.47, -.62), (.47, 1.35), (0, 1.35)], 32)
        smokebox = mesh.lathe([(0, 1.33), (.44, 1.33), (.49, 1.36), (.49, 1.80), (.45, 1.84), (.38, 1.84),
                               (.36, 1.90), (.20, 1.96), (0, 1.98)], 32)
        band = mesh.lathe([(.468, -.04), (.492, -.04), (.492, .04), (.468, .04)], 32)
        band_shape = shape(band.node(.4, "BoilerBandMesh"), looks.brass, "BoilerBand")
        kids = [shape(shell.node(.5), looks.green, "Shell"), shape(smokebox.node(.5), looks.black, "Smokebox")]
        kids += [transform(None, (0, y, 0), kids=[band_shape]) for y in (-.3, .35, 1.0)]
        return transform("Boiler", (0, 1.12, 0), lay, kids=kids)

    def chimney_and_domes(self):
        looks = self.looks
        chimney = mesh.lathe([(.26, 1.50), (.20, 1.60), (.155, 1.72), (.15, 2.0), (.19, 2.16), (.27, 2.30),
                              (.27, 2.38), (.22, 2.38), (.16, 2.2), (0, 2.2)], 28)
        dome = mesh.lathe([(.27, 1.48), (.22, 1.56), (.21, 1.70), (.19, 1.80), (.13, 1.88), (0, 1.91)], 28)
        whistle = mesh.lathe([(.03, 1.5), (.03, 1.74), (.055, 1.74), (.055, 1.88), (0, 1.92)], 14)
        return [transform("Chimney", (1.58, 0, 0), kids=[shape(chimney.node(.7), looks.black)]),
                transform("SteamDome", (.68, 0, 0), kids=[shape(dome.node(1), looks.brass)]),
                transform("Whistle", (-.05, 0, 0), kids=[shape(whistle.node(.7), looks.brass)])]

    def cab(self):
        looks = self.looks
        post = shape(box(.10, .56, .08), looks.red, "CabPost")
        kids = [placed(box(1.0, .74, 1.06), looks.red, (-1.1, 1.03, 0), name="CabBody"),
                placed(box(.94, .05, .98), looks.black, (-1.1, 1.40, 0))]
        kids += [transform(None, (x, 1.67, z), kids=[post]) for x in (-1.55, -.65) for z in (-.49, .49)]
        kids.append(placed(box(.06, .56, .9), looks.red, (-.66, 1.67, 0)))
        kids.append(transform("CabRoof", (-1.08, 2.08, 0), kids=[self.roof(1.3, 1.26, looks.black, None)]))
        return transform("Cab", kids=kids)

    def drive(self):
        """Wheels, rods and steam cylinders."""
        looks = self.looks
        kids = []
        for x in (-1.05, -.12, .81):
            kids.append(transform(None, (x, .40, GAUGE), (0, 0, 1, .5), kids=[self.big]))
            kids.append(transform(None, (x, .40, -GAUGE), (0, 1, 0, math.pi), kids=[self.big]))
        kids.append(transform("LeadingAxle", (1.5, 0, 0), kids=[self.axle]))
        rod = mesh.stadium(1.86, .075, .075, .05)
        rod_shape = shape(rod.node(.5, "RodMesh"), looks.steel, "CouplingRod")
        piston = placed(cylinder(.17, .5), looks.red, None, (0, 0, 1, math.pi / 2))
        piston.name = "SteamCylinder"
        for z in (.56, -.56):
            kids.append(transform(None, (-1.0, .30, z), kids=[rod_shape]))
            kids.append(transform(None, (1.42, .52, z * .95), kids=[piston]))
        return transform("RunningGear", kids=kids)

    def locomotive(self):
        looks = self.looks
        lamp = [placed(cylinder(.13, .12), looks.brass, (1.74, 1.74, 0), (0, 0, 1, math.pi / 2)),
                placed(sphere(.10), looks.lamp, (1.79, 1.74, 0))]
        cow = mesh.prism([(0, 0), (.42, 0), (0, .34)], .8)
        return transform("Locomotive", kids=[
            self.boiler(), *self.chimney_and_domes(), self.cab(), self.drive(),
            placed(box(3.45, .14, .62), looks.black, (.08, .56, 0), name="Frame"),
            placed(box(3.5, .06, 1.12), looks.black, (.05, .69, 0), name="RunningBoard"),
            placed(box(.12, .26, 1.08), looks.red, (1.84, .58, 0), name="BufferBeam"),
            transform("CowCatcher", (1.86, .12, 0), kids=[shape(cow.node(0), looks.iron)]),
            transform("HeadLamp", kids=lamp), *self.buffers(1.9, 1)])

    def tender(self):
        looks = self.looks
        heap = mesh.Mesh()
        from .noise import hash01
        nx, nz = 9, 6
        for i in range(nx):
            for k in range(nz):
                edge = i in (0, nx - 1) or k in (0, nz - 1)
                y = 0 if edge else .16 + .2 * hash01(i, k, 5)
                jitter = 0 if edge else .05 * (hash01(i, k, 6) - .5)
                heap.points.append((-.76 + 1.52 * i / (nx - 1) + jitter, y, -.44 + .88 * k / (nz - 1) + jitter))
        for i in range(nx - 1):
            for k in range(nz - 1):
                a = i * nz + k
                heap.faces += [[a, a + 1, a + nz + 1], [a, a + nz + 1, a + nz]]
        return transform("Tender", kids=[
            placed(box(1.75, .14, .9), looks.black, (0, .56, 0)),
            placed(box(1.65, .62, 1.02), looks.red, (0, .92, 0), name="CoalBox"),
            placed(box(1.67, .05, 1.05), looks.brass, (0, 1.14, 0)),
            transform("Coal", (0, 1.23, 0), kids=[shape(heap.node(0), looks.iron)]),
            transform(None, (0, 0, 0), kids=[self.bogie])])

    def log_car(self):
        looks = self.looks
        log = transform("Log", None, (0, 0, 1, math.pi / 2), kids=[
            shape(cylinder(.165, 2.0, top=False, bottom=False), looks.dark_wood),
            placed(cylinder(.16, 2.01, side=False), looks.cream)])
        post = shape(box(.07, .66, .07), looks.iron, "Stake")
        places = [(.90, -.34), (.90, 0), (.90, .34), (1.19, -.17), (1.19, .17), (1.48, 0)]
        kids = [placed(box(2.3, .14, 1.0), looks.blue, (0, .64, 0), name="Flatbed")]
        kids.append(Node("Group", "Logs", [transform(None, (.03 * (i % 3 - 1), y, z), kids=[log])
                                           for i, (y, z) in enumerate(places)]))
        kids.append(Node("Group", "Stakes", [transform(None, (x, 1.0, z), kids=[post])
                                             for x in (-.8, .8) for z in (-.52, .52)]))
        return transform("LogCar", kids=kids + self.bogies(.7))

    def bogies(self, x):
        return [transform(None, (-x, 0, 0), kids=[self.bogie]), transform(None, (x, 0, 0), kids=[self.bogie])]

    def coach(self):
        looks = self.looks
        window = shape(box(.30, .36, 1.10), looks.window, "CoachWindow")
        kids = [placed(box(2.5, .5, 1.06), looks.green, (0, .88, 0), name="LowerBody"),
                placed(box(2.5, .06, 1.08), looks.brass, (0, 1.15, 0)),
                placed(box(2.5, .6, 1.06), looks.cream, (0, 1.46, 0), name="UpperBody"),
                placed(box(2.4, .12, .9), looks.black, (0, .58, 0)),
                transform("CoachRoof", (0, 1.94, 0), kids=[self.roof(2.7, 1.26, looks.dark_wood, None)])]
        kids.append(Node("Group", "Windows", [transform(None, (x, 1.46, 0), kids=[window])
                                              for x in (-1.0, -.6, -.2, .2, .6, 1.0)]))
        return transform("Coach", kids=kids + self.bogies(.75))

    def tank_car(self):
        looks = self.looks
        lay = (0, 0, 1, math.pi / 2)
        tank = mesh.lathe([(0, -1.12), (.2, -1.10), (.38, -1.03), (.46, -.9), (.46, .9), (.38, 1.03),
                           (.2, 1.10), (0, 1.12)], 28)
        hatch = mesh.lathe([(.2, 0), (.2, .14), (.24, .14), (.24, .2), (0, .23)], 20)
        band = Node("Cylinder", "TankBandBody", radius=.472, height=.09)
        return transform("TankCar", kids=[
            placed(box(2.3, .14, .9), looks.black, (0, .58, 0)),
            transform("Tank", (0, 1.08, 0), lay, kids=[
                shape(tank.node(1), looks.yellow),
                *[placed(band, looks.black, (0, y, 0)) for y in (-.6, .6)]]),
            transform("Hatch", (0, 1.5, 0), kids=[shape(hatch.node(.6), looks.steel)])] + self.bogies(.7))

    def on_rails(self, name, vehicle, s):
        (x, z), heading = on_track(s)
        turn = (0, 1, 0, heading) if heading else None
        return transform(name, (x, RAIL_TOP, z), turn, kids=[vehicle])

    def node(self):
        start = 3.0
        cars = [("OnRails1", self.locomotive(), 0), ("OnRails2", self.tender(), 2.75),
                ("OnRails3", self.log_car(), 5.0), ("OnRails4", self.tank_car(), 7.6),
                ("OnRails5", self.coach(), 10.3)]
        return transform("Train", kids=[self.on_rails(n, v, start - back) for n, v, back in cars])
