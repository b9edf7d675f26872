#!/usr/bin/env python3
"""Draws the contact sheets of this folder with kmr, from the scenes beside it.

usage: docs/images/draw_sheets.py [KMR [SHEET...]]     (build/release/bin/kmr and all when not given)

A scene of a sheet holds its cells between the lines "#: CAPTION", the last of which is "#."; each
cell is drawn as a scene of its own, with what stands before the first and behind the last. The
pictures are then put together by a scene too.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
ROOT = FOLDER.parent.parent
GAP = 8
CAPTION = 18

TRANSPARENCIES = [
    (0, "0 screen door"), (3, "3 blended"), (4, "4 delayed"),
    (6, "6 sorted objects"), (7, "7 sorted pixels"), (8, "8 delayed sorted pixels"),
    (10, "10 sorted triangles"), (12, "12 sorted triangles of objects"), (13, "13 none"),
]

# Columns and size of a cell.
SHEETS = {
    "shapes.ky": (6, 200, 150), "nurbs.ky": (5, 200, 150), "looks.ky": (6, 200, 150),
    "textures.ky": (7, 160, 120), "lights.ky": (6, 200, 150), "groups.ky": (6, 200, 150),
    "handles.ky": (6, 200, 150), "vrml97.wrl": (8, 152, 114), "vrml1.wrl": (6, 200, 150),
}


def render(kmr, scene, picture, width, height, *options):
    subprocess.run([kmr, "render", str(scene), str(picture), "--size", f"{width}x{height}",
                    *options], check=True)


def cells_of(scene):
    """Pairs of a caption and the text of a scene that shows that cell alone."""
    lines = scene.read_text(encoding="utf-8").splitlines(keepends=True)
    marks = [i for i, line in enumerate(lines) if line.startswith("#:")]
    end = lines.index("#.\n")
    top, bottom = lines[:marks[0]], lines[end:]
    for mark, after in zip(marks, marks[1:] + [end]):
        yield lines[mark][2:].strip(), "".join(top + lines[mark:after] + bottom)


def join(kmr, cells, target, columns, width, height, folder):
    """Puts pictures with their captions into rows."""
    step_x, step_y = width + GAP, height + CAPTION + GAP
    rows = -(-len(cells) // columns)
    whole = (columns * step_x + GAP, rows * step_y + GAP)
    nodes = []
    for number, (picture, caption) in enumerate(cells):
        left = GAP + number % columns * step_x
        top = whole[1] - GAP - number // columns * step_y
        nodes.append(
            f'Separator {{ Translation {{ translation {left} {top} 0 }} '
            f'Image {{ filename "{picture}" vertAlignment TOP }} '
            f'Translation {{ translation {width / 2} {-height - 13} 0 }} '
            f'Text2 {{ string "{caption}" justification CENTER }} }}\n')
    scene = folder / "sheet.ky"
    scene.write_text(
        "#Kalmyr V1.0 ascii\nSeparator { OrthographicCamera { "
        f"position {whole[0] / 2} {whole[1] / 2} 1 nearDistance 0 farDistance 2 "
        f"height {whole[1]} }} LightModel {{ model BASE_COLOR }} BaseColor {{ rgb 0 0 0 }}"
        f"FontStyle {{ size 11.5 family SANS }}\n{''.join(nodes)}}}\n", encoding="utf-8")
    render(kmr, scene, target, *whole, "--background", "1,1,1")
    print(target, len(cells))


def draw_transparencies(kmr, folder):
    cells = []
    for number, caption in TRANSPARENCIES:
        picture = folder / f"transparency{number}.png"
        render(kmr, FOLDER / "scenes/transparency.ky", picture, 360, 240, "--transparency",
               str(number))
        cells.append((picture, caption))
    join(kmr, cells, FOLDER / "transparency.png", 3, 360, 240, folder)


def draw_sheet(kmr, name, folder):
    columns, width, height = SHEETS[name]
    scenes = folder / "scenes"
    if not scenes.exists():
        shutil.copytree(FOLDER / "scenes", scenes)
    scene, cells = scenes / name, []
    for number, (caption, text) in enumerate(cells_of(scene)):
        one = scenes / f"cell{number}{scene.suffix}"
        one.write_text(text, encoding="utf-8")
        picture = folder / f"{scene.stem}{number}.png"
        render(kmr, one, picture, width, height, "--background", "0.86,0.88,0.92")
        cells.append((picture, caption))
    join(kmr, cells, FOLDER / f"{scene.stem}.png", columns, width, height, folder)


def main():
    kmr = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "build/release/bin/kmr")
    wanted = sys.argv[2:] or ["transparency", *SHEETS]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for sheet in wanted:
            if sheet == "transparency":
                draw_transparencies(kmr, folder)
            else:
                draw_sheet(kmr, sheet, folder)


if __name__ == "__main__":
    main()
