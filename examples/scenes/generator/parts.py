"""Short names for what VRML97 scenes consist of."""

from .scene import Node


def transform(name=None, move=None, turn=None, scale=None, kids=(), comment=None):
    return Node("Transform", name, kids, comment, translation=move, rotation=turn, scale=scale)


def appearance(name, diffuse, specular=None, shininess=None, emissive=None, transparency=None,
               ambient=.45):
    material = Node("Material", ambientIntensity=ambient, diffuseColor=diffuse,
                    specularColor=specular and (specular,) * 3, shininess=shininess,
                    emissiveColor=emissive, transparency=transparency)
    return Node("Appearance", name, material=material)


def shape(geometry, look, name=None):
    return Node("Shape", name, appearance=look, geometry=geometry)


def placed(geometry, look, move=None, turn=None, scale=None, name=None):
    """A shape of its own in a transform."""
    return transform(name, move, turn, scale, [shape(geometry, look)])


def box(x, y, z):
    return Node("Box", size=(x, y, z))


def cylinder(radius, height, **more):
    return Node("Cylinder", radius=radius, height=height, **more)


def sphere(radius):
    return Node("Sphere", radius=radius)


def picture(look_name, texture_name, file_name, repeat=False):
    """An appearance with a picture, lit."""
    look = appearance(look_name, (1, 1, 1))
    look.fields["material"].name = look_name + "Material"
    look.fields["texture"] = Node("ImageTexture", texture_name, url=[file_name],
                                  repeatS=None if repeat else False, repeatT=None if repeat else False)
    return look


class Looks:
    """The paints of the workshop, each one node that all its users share."""

    def __init__(self):
        self.red = appearance("RedPaint", (.70, .07, .06), .45, .55)
        self.white = appearance("WhitePaint", (.86, .84, .78), .25, .45)
        self.black = appearance("BlackPaint", (.055, .058, .07), .35, .5)
        self.brass = appearance("Brass", (.72, .50, .14), .7, .6)
        self.steel = appearance("Steel", (.46, .49, .53), .6, .6)
        self.iron = appearance("Iron", (.17, .18, .20), .4, .45)
        self.orange = appearance("OrangePaint", (.90, .36, .03), .4, .5)
        self.blue = appearance("BluePaint", (.06, .22, .56), .45, .55)
        self.yellow = appearance("YellowPaint", (.90, .66, .06), .35, .5)
        self.green = appearance("GreenPaint", (.05, .33, .16), .35, .5)
        self.cream = appearance("CreamPaint", (.84, .74, .52), .3, .45)
        self.wood = appearance("Beech", (.66, .44, .23), .12, .3)
        self.dark_wood = appearance("Walnut", (.30, .17, .085), .12, .3)
        self.pine = appearance("PineNeedles", (.045, .25, .11), .05, .1)
        self.rock = appearance("Rock", (.40, .38, .36))
        self.rubber = appearance("Rubber", (.09, .09, .10), .12, .2)
        self.window = appearance("WindowGlass", (.10, .16, .24), .9, .8)
        self.glass = appearance("ClearGlass", (.50, .62, .68), .9, .9, transparency=.78)
        self.lamp = appearance("LampGlow", (1, .85, .45), emissive=(1, .78, .30))
