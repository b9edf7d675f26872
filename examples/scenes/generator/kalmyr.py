"""Short names for what scenes in Kalmyr text consist of."""

from .scene import Node, Raw


def separator(*kids, name=None, comment=None):
    return Node("Separator", name, kids, comment)


def material(diffuse, specular=None, shininess=None, name=None, emissive=None):
    return Node("Material", name, ambientColor=tuple(round(.45 * c, 3) for c in diffuse),
                diffuseColor=diffuse, specularColor=specular and (specular,) * 3,
                shininess=shininess, emissiveColor=emissive)


def move(x, y, z):
    return Node("Translation", translation=(x, y, z))


def place(translation=None, rotation=None, scale=None):
    return Node("Transform", translation=translation, rotation=rotation, scaleFactor=scale)


def cube(width, height, depth):
    return Node("Cube", width=width, height=height, depth=depth)


def cylinder(radius, height, parts=None):
    return Node("Cylinder", parts=parts and Raw(parts), radius=radius, height=height)


def cone(radius, height):
    return Node("Cone", bottomRadius=radius, height=height)


def sphere(radius, name=None):
    return Node("Sphere", name, radius=radius)


def body(mesh, crease):
    """The nodes of a solid mesh."""
    return [Node("ShapeHints", vertexOrdering=Raw("COUNTERCLOCKWISE"), shapeType=Raw("SOLID"),
                 creaseAngle=float(crease)),
            Node("Coordinate3", point=[tuple(p) for p in mesh.points]),
            Node("IndexedFaceSet", coordIndex=[i for f in mesh.faces for i in [*f, -1]])]


def background(top, bottom):
    return Node("GradientBackground", color0=top, color1=bottom)


def camera(position, orientation, distance, angle):
    return Node("PerspectiveCamera", "Camera", position=position, orientation=orientation,
                focalDistance=distance, heightAngle=angle)


def no_headlight():
    """The scene brings all its light along."""
    return Node("VRMLNavigationInfo", headlight=False)


def sun(direction, intensity=.9, color=None):
    return Node("DirectionalLight", None, direction=direction, intensity=intensity, color=color)
