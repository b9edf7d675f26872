#!/usr/bin/env python3
"""Render the icon drawings to PNG and list them in a Qt resource file.

Every NAME.svg becomes Icons/NAME.png and Icons/NAME@2x.png. A picture that is
newer than its drawing is kept.
"""

import argparse
import os
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ICON_SIZE = 24
WINDOW_ICON = "MiraboIcon"
WINDOW_ICON_SIZES = {"MiraboIcon": 128, "MiraboIcon@2x": 256, "MiraboIcon24": 24,
                     "MiraboIcon64": 64, "MiraboIcon128": 128, "MiraboIcon256": 256}
# Parts of the tree's style sheet: drawn at the size of their own view box.
BRANCH_IMAGES = {"vline", "branch-more", "branch-end", "branch-closed", "branch-open"}
# Names that are also asked for without extension.
BARE_NAMES = {"fileopen"}
VIEW_BOX = re.compile(r'viewBox\s*=\s*"\s*[-\d.]+[\s,]+[-\d.]+[\s,]+([\d.]+)[\s,]+([\d.]+)\s*"')


def view_box_size(drawing):
    match = VIEW_BOX.search(drawing.read_text(encoding="utf-8"))
    if not match:
        raise SystemExit(f"{drawing}: error: no viewBox")
    return round(float(match.group(1))), round(float(match.group(2)))


def sizes(drawing):
    """Pictures made from a drawing: name without extension -> (width, height)."""
    name = drawing.stem
    if name == WINDOW_ICON:
        return {key: (size, size) for key, size in WINDOW_ICON_SIZES.items()}
    width, height = view_box_size(drawing)
    if name not in BRANCH_IMAGES:
        width = height = ICON_SIZE
    return {name: (width, height), name + "@2x": (2 * width, 2 * height)}


def render(rsvg, drawing, picture, size):
    if picture.exists() and picture.stat().st_mtime >= drawing.stat().st_mtime:
        return
    partial = picture.with_suffix(".tmp")
    subprocess.run([rsvg, "--width", str(size[0]), "--height", str(size[1]), "--format", "png",
                    "--output", str(partial), str(drawing)],
                   check=True, stdin=subprocess.DEVNULL)
    os.replace(partial, picture)


def resource_file(names):
    lines = ['<!DOCTYPE RCC>', '<RCC version="1.0">', '<qresource prefix="/Mirabo_icons">']
    for name in names:
        lines.append(f'<file alias="Icons/{name}.png">Icons/{name}.png</file>')
        if name in BARE_NAMES:
            lines.append(f'<file alias="Icons/{name}">Icons/{name}.png</file>')
    return "\n".join(lines + ["</qresource>", "</RCC>", ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rsvg", required=True)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("directory", type=Path)
    arguments = parser.parse_args()

    icons = arguments.out / "Icons"
    icons.mkdir(parents=True, exist_ok=True)
    jobs = []
    for drawing in sorted(arguments.directory.glob("*.svg")):
        for name, size in sizes(drawing).items():
            jobs.append((drawing, name, size))
    with ThreadPoolExecutor(max_workers=os.cpu_count()) as pool:
        list(pool.map(lambda job: render(arguments.rsvg, job[0], icons / (job[1] + ".png"), job[2]),
                      jobs))
    (arguments.out / "mirabo_icons.qrc").write_text(resource_file([job[1] for job in jobs]),
                                                    encoding="utf-8")


if __name__ == "__main__":
    main()
