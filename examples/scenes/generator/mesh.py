"""Meshes for indexed face sets."""

import math

from .scene import Node

TAU = 2 * math.pi


class Mesh:
    """Points, faces (lists of indices, counterclockwise from outside), texture coordinates.

    `hulls` are convex groups of points that stand for the mesh when shadows are baked.
    """

    def __init__(self):
        self.points = []
        self.faces = []
        self.tex = []
        self.tex_faces = []
        self.hulls = []

    def add(self, other, move=(0, 0, 0), turn=None):
        base = len(self.points)
        place = lambda p: tuple(a + b for a, b in zip(turn(p) if turn else p, move))
        self.points += [place(p) for p in other.points]
        self.faces += [[i + base for i in f] for f in other.faces]
        self.hulls += [[place(p) for p in h] for h in other.hulls]
        return self

    def node(self, crease, name=None, solid=True, convex=True, colors=None):
        """The indexed face set; `colors` are one colour a point."""
        indices = [i for face in self.faces for i in face + [-1]]
        fields = {"coord": Node("Coordinate", point=[tuple(p) for p in self.points])}
        if colors:
            fields["color"] = Node("Color", color=colors)
        if self.tex:
            fields["texCoord"] = Node("TextureCoordinate", point=self.tex)
            fields["texCoordIndex"] = [i for face in self.tex_faces for i in face + [-1]]
        fields["coordIndex"] = indices
        if crease:
            fields["creaseAngle"] = float(crease)
        if not solid:
            fields["solid"] = False
        if not convex:
            fields["convex"] = False
        node = Node("IndexedFaceSet", name, **fields)
        node.hulls = self.hulls or [self.points]
        return node


def lathe(profile, steps=32):
    """Turns (radius, y) about the y axis; the profile runs upwards along the outside."""
    mesh = Mesh()
    rings = []
    for radius, y in profile:
        if radius == 0:
            rings.append([len(mesh.points)])
            mesh.points.append((0, y, 0))
            continue
        rings.append(list(range(len(mesh.points), len(mesh.points) + steps)))
        for i in range(steps):
            a = TAU * i / steps
            mesh.points.append((radius * math.sin(a), y, radius * math.cos(a)))
    for low, high in zip(rings, rings[1:]):
        for i in range(steps):
            j = (i + 1) % steps
            if len(low) == 1 and len(high) > 1:
                mesh.faces.append([low[0], high[j], high[i]])
            elif len(high) == 1 and len(low) > 1:
                mesh.faces.append([low[i], low[j], high[0]])
            elif len(low) > 1:
                mesh.faces.append([low[i], low[j], high[j], high[i]])
        every = max(1, steps // 12)
        mesh.hulls.append([mesh.points[i] for i in low[::every] + high[::every]])
    return mesh


def box(size, center=(0, 0, 0)):
    mesh = Mesh()
    corners = [(x, y, z) for z in (-.5, .5) for y in (-.5, .5) for x in (-.5, .5)]
    mesh.points = [tuple(c + s * k for c, s, k in zip(center, size, corner)) for corner in corners]
    mesh.faces = [[4, 5, 7, 6], [1, 0, 2, 3], [5, 1, 3, 7], [0, 4, 6, 2], [6, 7, 3, 2], [0, 1, 5, 4]]
    mesh.hulls = [mesh.points]
    return mesh


def prism(outline, depth):
    """An outline (x, y), counterclockwise, as a plate from z = -depth/2 to depth/2."""
    mesh = Mesh()
    n = len(outline)
    mesh.points = [(x, y, depth / 2) for x, y in outline] + [(x, y, -depth / 2) for x, y in outline]
    mesh.faces = [list(range(n)), list(range(2 * n - 1, n - 1, -1))]
    mesh.faces += [[n + i, n + (i + 1) % n, (i + 1) % n, i] for i in range(n)]
    mesh.hulls = [mesh.points]
    return mesh


def stadium(length, r0, r1, depth, steps=8):
    """A lever along x from a round end at the origin to one at `length`."""
    slope = math.asin((r0 - r1) / length)
    outline = []
    for i in range(steps + 1):
        a = -math.pi / 2 + slope + (math.pi - 2 * slope) * i / steps
        outline.append((length + r1 * math.cos(a), r1 * math.sin(a)))
    for i in range(steps + 1):
        a = math.pi / 2 - slope + (math.pi + 2 * slope) * i / steps
        outline.append((r0 * math.cos(a), r0 * math.sin(a)))
    return prism(outline, depth)


# Right and up of the picture on each face of a cube, by axis and sign of the face's normal.
CUBE_FACES = {
    (0, 1): ((0, 0, -1), (0, 1, 0)), (0, -1): ((0, 0, 1), (0, 1, 0)),
    (1, 1): ((1, 0, 0), (0, 0, -1)), (1, -1): ((1, 0, 0), (0, 0, 1)),
    (2, 1): ((1, 0, 0), (0, 1, 0)), (2, -1): ((-1, 0, 0), (0, 1, 0)),
}


def bevelled_cube(size, bevel):
    """A cube with flattened edges and corners; each face shows the whole texture."""
    mesh = Mesh()
    h, b = size / 2, size / 2 - bevel
    index = {}
    for (axis, sign), (right, up) in CUBE_FACES.items():
        face = []
        for u, v in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
            p = [b * (u * r + v * w) for r, w in zip(right, up)]
            p[axis] = sign * h
            index[axis, tuple(int(math.copysign(1, c)) for c in p)] = len(mesh.points)
            face.append(len(mesh.points))
            mesh.points.append(tuple(p))
            mesh.tex.append((.04 + .92 * (u + 1) / 2, .04 + .92 * (v + 1) / 2))
        mesh.faces.append(face)
    _bevel_edges(mesh, index)
    _bevel_corners(mesh, index)
    for face in mesh.faces:
        _make_outward(mesh, face)
    mesh.tex_faces = mesh.faces
    mesh.hulls = [mesh.points]
    return mesh


def _bevel_edges(mesh, index):
    for a in range(3):
        b, c = (a + 1) % 3, (a + 2) % 3
        for sb in (-1, 1):
            for sc in (-1, 1):
                ends = []
                for sa in (-1, 1):
                    signs = [0, 0, 0]
                    signs[a], signs[b], signs[c] = sa, sb, sc
                    ends.append((index[b, tuple(signs)], index[c, tuple(signs)]))
                mesh.faces.append([ends[0][0], ends[1][0], ends[1][1], ends[0][1]])


def _bevel_corners(mesh, index):
    for sx in (-1, 1):
        for sy in (-1, 1):
            for sz in (-1, 1):
                mesh.faces.append([index[axis, (sx, sy, sz)] for axis in range(3)])


def _make_outward(mesh, face):
    """Turns the face of a body around the origin so that it is counterclockwise from outside."""
    p, q, r = (mesh.points[i] for i in face[:3])
    u = [b - a for a, b in zip(p, q)]
    v = [b - a for a, b in zip(p, r)]
    n = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
    if sum(a * b for a, b in zip(n, p)) < 0:
        face.reverse()


def sweep(section, path, closed):
    """A section (across, up), counterclockwise seen along the path, along a level path
    of (point, direction); faces point outwards."""
    mesh = Mesh()
    m = len(section)
    for (px, py, pz), (dx, _, dz) in path:
        right = (-dz, dx)
        for across, up in section:
            mesh.points.append((px + right[0] * across, py + up, pz + right[1] * across))
    n = len(path)
    for i in range(n if closed else n - 1):
        j = (i + 1) % n
        for k in range(m):
            l = (k + 1) % m
            mesh.faces.append([i * m + k, j * m + k, j * m + l, i * m + l])
        mesh.hulls.append([mesh.points[r * m + k] for r in (i, j) for k in range(m)])
    return mesh


def turn_x(p):
    """From along y to along z."""
    return (p[0], -p[2], p[1])


def turn_z(p):
    """From along y to along x."""
    return (p[1], -p[0], p[2])
