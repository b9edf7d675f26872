"""workshop.wrl: a model railway on a workbench."""

import math

from . import mesh, paint, toys
from .bake import Plane, hulls_of, shade
from .noise import value_noise
from .parts import Looks, box, cylinder, picture, placed, shape, transform
from .scene import Node, scene_text
from .train import Train, track

LIGHT = (-.42, .80, .50)  # towards the lamp of the room
BENCH = (23.0, 12.0)      # width and depth of the bench's top, which is at y = 0
BOARD = (16.4, 7.6)       # of the railway board inside its rim
BOARD_TOP = .25
BOARD_Z = -.8
WALL_Z = -6.6
PEGS = (13.2, 4.4)        # size of the tool wall
PEGS_LOW = 1.5
FLOOR_Y = -7.6


def panel(plane, look, name):
    """A rectangle with a picture on it."""
    o, n = plane.origin, plane
    corners = [tuple(o[k] + a * n.u[k] * n.u_size + b * n.v[k] * n.v_size for k in range(3))
               for a, b in ((0, 0), (1, 0), (1, 1), (0, 1))]
    body = mesh.Mesh()
    body.points, body.faces = corners, [[0, 1, 2, 3]]
    body.tex, body.tex_faces = [(0., 0.), (1., 0.), (1., 1.), (0., 1.)], body.faces
    return shape(body.node(0), look, name)


def bench_plane():
    w, d = BENCH
    return Plane((-w / 2, 0, d / 2), (w, 0, 0), (0, 0, -d), 768, 400)


def board_plane():
    w, d = BOARD
    return Plane((-w / 2, BOARD_TOP, BOARD_Z + d / 2), (w, 0, 0), (0, 0, -d), 1024, 474)


def pegboard_plane():
    w, h = PEGS
    return Plane((-w / 2, PEGS_LOW, WALL_Z + .14), (w, 0, 0), (0, h, 0), 660, 220)


def bench(looks, top_look):
    w, d = BENCH
    leg = shape(box(1.1, 7, 1.1), looks.wood, "Leg")
    legs = [transform(None, (x, -4.1, z), kids=[leg]) for x in (-10.4, 10.4) for z in (-5, 5)]
    return transform("Workbench", kids=[
        panel(bench_plane(), top_look, "BenchTop"),
        placed(box(w, .6, d), looks.wood, (0, -.302, 0), name="Slab"),
        placed(box(20, .9, .3), looks.dark_wood, (0, -1.05, 5.3), name="Apron"),
        Node("Group", "Legs", legs)]).no_shadow()


def board(looks, top_look):
    w, d = BOARD
    long_rim = shape(box(w + .6, .38, .3), looks.dark_wood, "LongRim")
    short_rim = shape(box(.3, .38, d), looks.dark_wood, "ShortRim")
    return transform("RailwayBoard", kids=[
        panel(board_plane(), top_look, "BoardTop").no_shadow(),
        transform("Rim", (0, .19, BOARD_Z), kids=[
            transform(None, (0, 0, d / 2 + .15), kids=[long_rim]),
            transform(None, (0, 0, -d / 2 - .15), kids=[long_rim]),
            transform(None, (w / 2 + .15, 0, 0), kids=[short_rim]),
            transform(None, (-w / 2 - .15, 0, 0), kids=[short_rim])])])


def on_board(looks, blocks):
    pines = [(-6.5, -.9, .85), (-5.9, .3, .7), (-6.2, 1.0, .55), (6.3, -1.1, .7), (6.4, .9, .8), (.2, -1.75, .8),
             (-.5, -1.9, .6), (5.9, .1, .5), (1.0, -1.95, .55)]
    return transform("Landscape", (0, BOARD_TOP, BOARD_Z), kids=[
        Train(looks).node(), track(looks),
        transform("LighthousePlace", (3.7, 0, -.75), kids=[toys.lighthouse(looks)]),
        transform("RobotPlace", (-4.2, 0, -.55), kids=[toys.robot_arm(looks, blocks)]),
        blocks.tower(looks, (-1.25, 0, .45)),
        transform("BoatPlace", (1.0, 0, .25), (0, 1, 0, .45), (.85, .85, .85), kids=[toys.boat(looks)]),
        toys.pines(looks, pines)])


def on_bench(looks, blocks):
    return transform("BenchThings", kids=[
        blocks.word(paint.LETTERS, (-3.1, 0, 4.75), 1.18),
        transform("TopPlace", (5.6, 0, 4.75), (0, 0, 1, -.16), kids=[toys.spinning_top(looks)]),
        transform("BowlPlace", (7.9, 0, 4.55), kids=[toys.marble_bowl(looks)]),
        toys.skittles(looks, [(9.3, 1.9), (9.8, 2.7), (10.1, 1.6)]),
        toys.paint_pots(looks, [(-6.1, 4.7, looks.yellow), (-7.2, 4.35, looks.red), (-8.3, 4.8, looks.blue)]),
        transform("CupPlace", (-9.8, 0, 2.6), kids=[toys.pencil_cup(looks)]),
        transform("LampPlace", (-9.9, 0, -3.9), (0, 1, 0, -.35), kids=[toys.desk_lamp(looks)])])


def tools(looks):
    """What hangs on the wall, each thing's place in the plane of the board."""
    handle = mesh.lathe([(0, -.95), (.14, -.9), (.17, -.6), (.12, -.2), (.16, -.05), (.1, 0)], 20).node(.7)
    blade = cylinder(.045, 1.1)
    handle.name, blade.name = "ScrewdriverGrip", "ScrewdriverBlade"
    blade_shape = transform("Blade", (0, .55, 0), kids=[shape(blade, looks.steel)])
    drivers = [transform(f"Screwdriver{i + 1}", (x, 4.0, .16), (0, 0, 1, math.pi),
                         (k, k, k), [shape(handle, look), blade_shape])
               for i, (x, look, k) in enumerate(((2.1, looks.red, 1.2), (2.8, looks.blue, 1.05),
                                                 (3.45, looks.yellow, .9)))]
    hammer = transform("Hammer", (-1.6, 3.0, .2), kids=[
        placed(mesh.lathe([(0, -1.1), (.13, -1.05), (.15, -.5), (.10, .6), (.12, 1.3), (0, 1.3)], 18).node(.7),
               looks.wood),
        placed(mesh.lathe([(0, -.62), (.2, -.62), (.2, -.36), (.15, -.3), (.16, .2), (.06, .75), (0, .75)], 20).node(.5),
               looks.iron, (0, 1.25, 0), (0, 0, 1, -math.pi / 2))])
    jaw = [(math.cos(a), math.sin(a)) for a in [math.radians(40 + 280 * i / 16) for i in range(17)]]
    outline = [(.34 * x + 0, .34 * y) for x, y in jaw] + [(.16, -.1), (.02, 0), (.16, .1)]
    wrench = transform("Spanner", (.7, 3.0, .1), (0, 0, 1, math.pi / 2), kids=[
        placed(mesh.prism(outline, .12).node(0, convex=False), looks.steel, (1.1, 0, 0)),
        placed(mesh.stadium(2.0, .15, .15, .1).node(.5), looks.steel, (-1.1, 0, 0))])
    teeth = []
    for i in range(19):
        teeth += [(-1.3 + .14 * i, -.28), (-1.23 + .14 * i, -.38)]
    saw_outline = teeth + [(1.36, -.28), (1.36, -.05), (-1.3, .35)]
    saw = transform("Saw", (-4.3, 3.45, .08), (0, 0, 1, -.05), kids=[
        shape(mesh.prism(saw_outline, .04).node(0, convex=False), looks.steel),
        placed(box(.75, .85, .18), looks.orange, (-1.5, .0, 0), name="SawHandle")])
    ruler = placed(box(3.4, .34, .05), looks.yellow, (-3.9, 2.35, .06))
    ruler.name = "Ruler"
    return transform("Tools", (0, 0, WALL_Z + .14), kids=[saw, ruler, hammer, wrench, *drivers])


def plain_grid(origin, u, v, columns, rows, color_at, name, look):
    """A rectangle in cells with a colour at each corner."""
    body = mesh.Mesh()
    colors = []
    for j in range(rows + 1):
        for i in range(columns + 1):
            a, b = i / columns, j / rows
            body.points.append(tuple(o + a * p + b * q for o, p, q in zip(origin, u, v)))
            colors.append(color_at(a, b))
    for j in range(rows):
        for i in range(columns):
            c = j * (columns + 1) + i
            body.faces.append([c, c + 1, c + columns + 2, c + columns + 1])
    return shape(body.node(0, colors=colors), look, name)


def room(peg_look, looks):
    look = Node("Appearance", "RoomPaint", material=Node("Material", ambientIntensity=.45))

    def wall(a, b):
        glow = math.exp(-((a - .42) * 3.4) ** 2 - ((b - .52) * 3.2) ** 2)
        k = .42 + .58 * glow
        return (round(.50 * k, 3), round(.56 * k, 3), round(.62 * k, 3))

    def floor(a, b):
        k = .5 + .25 * value_noise(a * 6, b * 5, 90)
        return (round(.26 * k, 3), round(.20 * k, 3), round(.16 * k, 3))

    w, h = PEGS
    rim = looks.dark_wood
    frame = transform("PegboardFrame", (0, PEGS_LOW + h / 2, WALL_Z), kids=[
        placed(box(w + .4, .2, .24), rim, (0, h / 2 + .1, .12)),
        placed(box(w + .4, .2, .24), rim, (0, -h / 2 - .1, .12)),
        placed(box(.2, h, .24), rim, (w / 2 + .1, 0, .12)), placed(box(.2, h, .24), rim, (-w / 2 - .1, 0, .12))])
    return transform("Room", kids=[
        plain_grid((-26, FLOOR_Y, WALL_Z), (52, 0, 0), (0, 26, 0), 20, 12, wall, "Wall", look),
        plain_grid((-26, FLOOR_Y, 18), (52, 0, 0), (0, 0, WALL_Z - 18), 10, 6, floor, "Floor", look),
        panel(pegboard_plane(), peg_look, "Pegboard"), frame]).no_shadow()


def lights():
    away = tuple(-c for c in LIGHT)
    return [Node("NavigationInfo", type=["EXAMINE", "ANY"], headlight=False),
            Node("Background", skyColor=[(.30, .36, .44), (.12, .14, .18)], skyAngle=[1.571],
                 groundColor=[(.05, .05, .06), (.12, .14, .18)], groundAngle=[1.571]),
            Node("DirectionalLight", "KeyLight", direction=away, color=(1., .955, .87), intensity=1.,
                 ambientIntensity=.5),
            Node("DirectionalLight", "FillLight", direction=(-.8, -.35, -.45), color=(.68, .80, 1.), intensity=.45,
                 ambientIntensity=.12),
            Node("SpotLight", "LampLight", location=(-8.3, 4.0, -3.2), direction=(.75, -1., .3),
                 color=(1., .80, .50), intensity=.5, cutOffAngle=1.05, beamWidth=.35, attenuation=(1., .03, .012),
                 radius=30.)]


def build():
    """The file's text, and its pictures by name."""
    looks = Looks()
    blocks = toys.Blocks(looks, picture("LetterSheet", "LetterPicture", "workshop_letters.png"), paint.LETTERS)
    landscape, things, hung = on_board(looks, blocks), on_bench(looks, blocks), tools(looks)
    the_board = board(looks, picture("BoardPaint", "BoardPicture", "workshop_board.png"))
    pegs = room(picture("PegboardPaint", "PegboardPicture", "workshop_pegboard.png"), looks)
    scene = transform("Workshop", kids=[
        landscape, the_board, things, bench(looks, picture("BenchWood", "BenchPicture", "workshop_bench.png")),
        hung, pegs])
    viewpoint = Node("Viewpoint", "Entrance", position=VIEW[0], orientation=VIEW[1], fieldOfView=VIEW[2],
                     description="At the bench")
    info = Node("WorldInfo", title="Workshop", info=["A model railway on a workbench."])
    text = scene_text([info, viewpoint, *lights(), scene], True,
                      ["Written by generate.py; the shadows are part of the pictures."])
    return text, pictures(landscape, things, the_board, hung)


def pictures(landscape, things, the_board, hung):
    standing = hulls_of(landscape)
    planes = {"bench": (bench_plane(), standing + hulls_of(things) + hulls_of(the_board), LIGHT),
              "board": (board_plane(), standing + hulls_of(the_board), LIGHT),
              "pegboard": (pegboard_plane(), hulls_of(hung), (-.35, .55, .75))}
    painters = {"bench": paint.bench_png, "board": paint.board_png, "pegboard": paint.pegboard_png}
    found = {"workshop_letters.png": paint.letters_png()}
    for name, (plane, hulls, light) in planes.items():
        found[f"workshop_{name}.png"] = painters[name](plane, shade(plane, hulls, light))
    return found


# Position, orientation and angle of the viewpoint.
VIEW = ((6.6, 9.4, 18.6), (-.836, .532, .129, .507), .62)
