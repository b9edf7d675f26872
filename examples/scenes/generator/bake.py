"""Soft shadows of a scene on a plane, as numbers from 0 to 1 for the pixels of a texture."""

import math

from .noise import hash01


# Matrices are rows of a 3 by 4 array.
IDENTITY = ((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0))


def apply(m, p):
    return tuple(r[0] * p[0] + r[1] * p[1] + r[2] * p[2] + r[3] for r in m)


def multiply(a, b):
    """First b, then a."""
    rows = []
    for r in a:
        rows.append(tuple(sum(r[k] * b[k][c] for k in range(3)) + (r[3] if c == 3 else 0)
                          for c in range(4)))
    return tuple(rows)


def rotation(x, y, z, angle):
    n = math.sqrt(x * x + y * y + z * z)
    x, y, z = x / n, y / n, z / n
    c, s = math.cos(angle), math.sin(angle)
    t = 1 - c
    return ((t * x * x + c, t * x * y - s * z, t * x * z + s * y, 0),
            (t * x * y + s * z, t * y * y + c, t * y * z - s * x, 0),
            (t * x * z - s * y, t * y * z + s * x, t * z * z + c, 0))


def local_matrix(node):
    """Of a VRML97 Transform without centre and scale orientation."""
    m = IDENTITY
    if "translation" in node.fields:
        t = node.fields["translation"]
        m = tuple((*row[:3], t[i]) for i, row in enumerate(IDENTITY))
    if "rotation" in node.fields:
        m = multiply(m, rotation(*node.fields["rotation"]))
    if "scale" in node.fields:
        s = node.fields["scale"]
        m = multiply(m, ((s[0], 0, 0, 0), (0, s[1], 0, 0), (0, 0, s[2], 0)))
    return m


def hulls_of(node, matrix=IDENTITY):
    """Convex groups of points, in the world, of everything below that casts a shadow."""
    if not node.casts_shadow:
        return []
    if node.type == "Transform":
        matrix = multiply(matrix, local_matrix(node))
    found = []
    if node.type == "Shape":
        found += [[apply(matrix, p) for p in hull] for hull in _body_hulls(node.fields["geometry"])]
    for kid in node.kids:
        found += hulls_of(kid, matrix)
    return found


def _ring(radius, y, steps=12):
    return [(radius * math.sin(2 * math.pi * i / steps), y, radius * math.cos(2 * math.pi * i / steps))
            for i in range(steps)]


def _body_hulls(geometry):
    get = geometry.fields.get
    if geometry.hulls:
        return geometry.hulls
    if geometry.type == "Box":
        x, y, z = (c / 2 for c in get("size", (2, 2, 2)))
        return [[(a * x, b * y, c * z) for a in (-1, 1) for b in (-1, 1) for c in (-1, 1)]]
    if geometry.type == "Sphere":
        r = get("radius", 1)
        rows = [math.pi * (i / 6 - .5) for i in range(7)]
        return [[p for a in rows for p in _ring(r * math.cos(a), r * math.sin(a))]]
    if geometry.type == "Cylinder":
        r, h = get("radius", 1), get("height", 2) / 2
        return [_ring(r, -h) + _ring(r, h)]
    if geometry.type == "Cone":
        h = get("height", 2) / 2
        return [_ring(get("bottomRadius", 1), -h) + [(0, h, 0)]]
    return []


class Plane:
    """A rectangle: `origin` is its corner at texture coordinate 0 0, `u` and `v` its sides."""

    def __init__(self, origin, u, v, width, height):
        self.origin, self.width, self.height = origin, width, height
        self.u_size, self.v_size = (math.sqrt(sum(c * c for c in s)) for s in (u, v))
        self.u = [c / self.u_size for c in u]
        self.v = [c / self.v_size for c in v]
        a, b = self.u, self.v
        self.normal = (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])

    def local(self, p):
        d = [a - b for a, b in zip(p, self.origin)]
        return (sum(a * b for a, b in zip(d, self.u)), sum(a * b for a, b in zip(d, self.v)),
                max(0.0, sum(a * b for a, b in zip(d, self.normal))))

    def direction(self, d):
        return [sum(a * b for a, b in zip(d, axis)) for axis in (self.u, self.v, self.normal)]


def _outline(points):
    """Convex hull of flat points, counterclockwise."""
    points = sorted(set(points))
    if len(points) < 3:
        return []

    def half(run):
        out = []
        for p in run:
            while len(out) > 1 and ((out[-1][0] - out[-2][0]) * (p[1] - out[-2][1])
                                    - (out[-1][1] - out[-2][1]) * (p[0] - out[-2][0])) <= 0:
                out.pop()
            out.append(p)
        return out[:-1]

    return half(points) + half(points[::-1])


def _fill(mask, width, height, outline):
    """Marks the pixels whose middle lies in the convex outline; rows run with v upwards."""
    low = max(0, math.ceil(min(p[1] for p in outline) - .5))
    high = min(height - 1, math.floor(max(p[1] for p in outline) - .5))
    edges = list(zip(outline, outline[1:] + outline[:1]))
    for row in range(low, high + 1):
        y = row + .5
        cuts = [a[0] + (b[0] - a[0]) * (y - a[1]) / (b[1] - a[1])
                for a, b in edges if (a[1] <= y) != (b[1] <= y)]
        if len(cuts) < 2:
            continue
        x0 = max(0, math.ceil(min(cuts) - .5))
        x1 = min(width, math.floor(max(cuts) + .5))
        if x1 > x0:
            mask[row * width + x0:row * width + x1] = b"\1" * (x1 - x0)


def _cover(plane, hulls, directions):
    """Share of the directions towards the light that is hidden, a byte a pixel, and their count."""
    assert len(directions) < 256
    w, h = plane.width, plane.height
    sx, sy = w / plane.u_size, h / plane.v_size
    local = [[plane.local(p) for p in hull] for hull in hulls]
    total = 0
    for n, towards in enumerate(directions):
        du, dv, dn = plane.direction(towards)
        ju, jv = hash01(n, 1) - .5, hash01(n, 2) - .5
        mask = bytearray(w * h)
        for hull in local:
            outline = _outline([((u - du / dn * t) * sx + ju, (v - dv / dn * t) * sy + jv)
                                for u, v, t in hull])
            if outline:
                _fill(mask, w, h, outline)
        # Bytes never overflow with fewer than 256 directions, so one long sum adds all pixels.
        total += int.from_bytes(mask, "little")
    return total.to_bytes(w * h, "little")


def _basis(n):
    helper = (1, 0, 0) if abs(n[0]) < .8 else (0, 1, 0)
    a = (n[1] * helper[2] - n[2] * helper[1], n[2] * helper[0] - n[0] * helper[2],
         n[0] * helper[1] - n[1] * helper[0])
    size = math.sqrt(sum(c * c for c in a))
    a = tuple(c / size for c in a)
    return a, (n[1] * a[2] - n[2] * a[1], n[2] * a[0] - n[0] * a[2], n[0] * a[1] - n[1] * a[0])


def _around(direction, spread, count):
    """Directions in an even disc about one: `spread` is the tangent of its half angle."""
    a, b = _basis(direction)
    found = []
    for i in range(count):
        r, angle = spread * math.sqrt((i + .5) / count), i * 2.39996
        x, y = r * math.cos(angle), r * math.sin(angle)
        found.append(tuple(d + x * p + y * q for d, p, q in zip(direction, a, b)))
    return found


def shade(plane, hulls, light, sky_share=.45, samples=48, sky_samples=96, softness=.11):
    """Light on each pixel from 0 to 1: `light` is the direction towards the lamp."""
    size = math.sqrt(sum(c * c for c in light))
    lamp = _cover(plane, hulls, _around(tuple(c / size for c in light), softness, samples))
    sky = _cover(plane, hulls, _around(plane.normal, 1.6, sky_samples))
    return [1 - (1 - sky_share) * a / samples - sky_share * b / sky_samples
            for a, b in zip(lamp, sky)]
