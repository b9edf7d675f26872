#!/usr/bin/env python3
"""Draws the contact sheets of this folder with kmr and puts them together with ImageMagick.

usage: docs/images/draw_sheets.py [KMR]     (build/release/bin/kmr when not given)
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
ROOT = FOLDER.parent.parent
SIZE = "360x240"

TRANSPARENCIES = [
    (0, "0 screen door"), (3, "3 blended"), (4, "4 delayed"),
    (6, "6 sorted objects"), (7, "7 sorted pixels"), (8, "8 delayed sorted pixels"),
    (10, "10 sorted triangles"), (12, "12 sorted triangles of objects"), (13, "13 none"),
]

SHAPES = {
    "Cube": "Cube { }", "Sphere": "Sphere { radius 1.2 }", "Cone": "Cone { }",
    "Cylinder": "Cylinder { }",
    "AsciiText": 'Translation { translation 0 -0.4 0 } Font { size 1.2 } '
                 'AsciiText { string "Text" justification CENTER }',
    "Text3": 'Translation { translation 0 -0.4 0 } Font { size 1.2 } '
             'Text3 { string "Text" justification CENTER parts ALL }',
    "IndexedFaceSet": "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1.4 0.6 0, 0 1.4 0, -1.4 0.6 0 ] } "
                      "IndexedFaceSet { coordIndex [ 0, 1, 2, 3, 4, -1 ] }",
    "QuadMesh": "Coordinate3 { point [ -1.4 -1 0, -0.5 -1 0.6, 0.5 -1 -0.6, 1.4 -1 0, "
                "-1.4 1 0, -0.5 1 -0.6, 0.5 1 0.6, 1.4 1 0 ] } "
                "QuadMesh { verticesPerRow 4 verticesPerColumn 2 }",
    "LineSet": "LightModel { model BASE_COLOR } DrawStyle { lineWidth 4 } Coordinate3 { point "
               "[ -1.5 -1 0, -0.5 1 0, 0.5 -1 0, 1.5 1 0 ] } LineSet { numVertices 4 }",
    "Dashes": "LightModel { model BASE_COLOR } DrawStyle { lineWidth 4 linePattern 0x0fff } "
              "Coordinate3 { point [ -1.5 -1 0, -0.5 1 0, 0.5 -1 0, 1.5 1 0 ] } "
              "LineSet { numVertices 4 }",
    "PointSet": "LightModel { model BASE_COLOR } DrawStyle { pointSize 14 } Coordinate3 { point "
                "[ -1.5 -1 0, -0.5 1 0, 0.5 -1 0, 1.5 1 0 ] } PointSet { }",
    "Edges": "LightModel { model BASE_COLOR } DrawStyle { style LINES lineWidth 2 } Cylinder { }",
}

HEADER = ("#Kalmyr V1.0 ascii\nSeparator { PerspectiveCamera { position 0 0 7 nearDistance 1 "
          "farDistance 30 heightAngle 0.6 } DirectionalLight { direction -0.4 -0.6 -1 } "
          "GradientBackground { color0 0.94 0.95 0.97 color1 0.75 0.79 0.85 } "
          "Material { diffuseColor 0.2 0.45 0.75 specularColor 0.4 0.4 0.4 shininess 0.4 } "
          "RotationXYZ { axis X angle 0.35 } RotationXYZ { axis Y angle 0.5 } ")


def render(kmr, scene, picture, *options):
    subprocess.run([kmr, "render", str(scene), str(picture), "--size", SIZE, *options], check=True)


def join(pictures, target, columns):
    command = ["montage", "-font", "DejaVu-Sans", "-pointsize", "15", "-background", "white"]
    for picture, label in pictures:
        command += ["-label", label, str(picture)]
    command += ["-tile", f"{columns}x", "-geometry", "+6+6", "-strip", str(target)]
    subprocess.run(command, check=True)
    print(target)


def main():
    kmr = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "build/release/bin/kmr")
    if not shutil.which("montage"):
        sys.exit("ImageMagick's montage is needed")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        sheet = []
        for number, label in TRANSPARENCIES:
            picture = folder / f"transparency{number}.png"
            render(kmr, FOLDER / "scenes/transparency.ky", picture, "--transparency", str(number))
            sheet.append((picture, label))
        join(sheet, FOLDER / "transparency.png", 3)
        sheet = []
        for label, content in SHAPES.items():
            scene = folder / f"{label}.ky"
            scene.write_text(f"{HEADER} {content} }}\n")
            picture = folder / f"{label}.png"
            render(kmr, scene, picture)
            sheet.append((picture, label))
        join(sheet, FOLDER / "shapes.png", 4)


if __name__ == "__main__":
    main()
