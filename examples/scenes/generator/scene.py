"""Nodes in memory, and their text in the two languages of the scenes.

Field values: numbers and tuples, lists of these, bool, str (a quoted string), Raw (as it stands),
Node, and lists of nodes. A node that occurs again is written as USE of its name.
"""


class Raw(str):
    """Text that goes into the file as it is: names of enumerations, hexadecimal numbers."""


class Node:
    def __init__(self, type_name, name=None, kids=None, comment=None, **fields):
        self.type = type_name
        self.name = name
        self.fields = {k: v for k, v in fields.items() if v is not None}
        self.kids = list(kids or [])
        self.comment = comment
        # For the baked shadows: convex hulls of points that stand for the shape, if it casts any.
        self.hulls = None
        self.casts_shadow = True

    def add(self, *kids):
        self.kids.extend(kids)
        return self

    def no_shadow(self):
        self.casts_shadow = False
        return self

    def nodes(self):
        """All occurrences of nodes from here down."""
        yield self
        for value in list(self.fields.values()) + self.kids:
            for node in value if isinstance(value, list) else [value]:
                if isinstance(node, Node):
                    yield from node.nodes()


def number(x):
    if isinstance(x, int):
        return str(x)
    text = f"{x:.4f}".rstrip("0").rstrip(".")
    if text in ("-0", ""):
        text = "0"
    return text.replace("0.", ".", 1) if text.startswith(("0.", "-0.")) else text


def one_value(value):
    if isinstance(value, bool):
        return "TRUE" if value else "FALSE"
    if isinstance(value, Raw):
        return str(value)
    if isinstance(value, str):
        return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'
    if isinstance(value, tuple):
        return " ".join(number(x) for x in value)
    return number(value)


class Writer:
    """`prefix` goes in front of children: VRML97 keeps them in a field, Kalmyr text does not."""

    WIDTH = 100

    def __init__(self, vrml97):
        self.vrml97 = vrml97
        self.lines = []
        self.written = set()

    def line(self, depth, text):
        self.lines.append("  " * depth + text)

    def node(self, node, depth, before="", after=""):
        if id(node) in self.written:
            if not node.name:
                raise ValueError(f"a {node.type} occurs twice and has no name")
            self.line(depth, f"{before}USE {node.name}{after}")
            return
        self.written.add(id(node))
        if node.comment:
            self.line(depth, "# " + node.comment)
        define = f"DEF {node.name} " if node.name else ""
        head = f"{before}{define}{node.type} {{"
        short = self.short_body(node)
        if short is not None and len(head) + len(short) + 2 * depth < self.WIDTH:
            self.line(depth, head + (f" {short} " if short else "") + "}" + after)
            return
        self.line(depth, head)
        for name, value in node.fields.items():
            self.field(name, value, depth + 1)
        self.children(node, depth)
        self.line(depth, "}" + after)

    def children(self, node, depth):
        if not node.kids:
            return
        if self.vrml97:
            self.line(depth + 1, "children [")
        for kid in node.kids:
            self.node(kid, depth + (2 if self.vrml97 else 1))
        if self.vrml97:
            self.line(depth + 1, "]")

    @staticmethod
    def short_body(node):
        if node.kids or any(isinstance(v, (Node, list)) for v in node.fields.values()):
            return None
        return " ".join(f"{name} {one_value(v)}" for name, v in node.fields.items())

    def field(self, name, value, depth):
        if isinstance(value, Node):
            self.node(value, depth, name + " ")
        elif isinstance(value, list) and value and isinstance(value[0], Node):
            self.line(depth, name + " [")
            for node in value:
                self.node(node, depth + 1)
            self.line(depth, "]")
        elif isinstance(value, list):
            self.many(name, value, depth)
        else:
            self.line(depth, f"{name} {one_value(value)}")

    def many(self, name, values, depth):
        """Values in lines of a readable length; faces are kept together."""
        words, word = [], []
        for value in values:
            word.append(one_value(value))
            if not isinstance(value, int) or value == -1 or len(values) < 8:
                words.append(" ".join(word))
                word = []
        if word:
            words += word
        text = ", ".join(words)
        if len(text) + len(name) + 2 * depth < self.WIDTH:
            self.line(depth, f"{name} [ {text} ]")
            return
        self.line(depth, name + " [")
        row = ""
        for word in words:
            if row and len(row) + len(word) + 2 * depth + 4 > self.WIDTH:
                self.line(depth + 1, row.rstrip())
                row = ""
            row += word + ", "
        self.line(depth + 1, row.rstrip(", "))
        self.line(depth, "]")


HEADERS = {True: "#VRML V2.0 utf8", False: "#Kalmyr V1.0 ascii"}


def scene_text(nodes, vrml97, remarks=()):
    writer = Writer(vrml97)
    writer.line(0, HEADERS[vrml97])
    for remark in remarks:
        writer.line(0, "# " + remark)
    writer.line(0, "")
    for node in nodes:
        writer.node(node, 0)
    return "\n".join(writer.lines) + "\n"
