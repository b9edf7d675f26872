#!/usr/bin/env python3
"""Writes the sample scenes that are not written by hand, and large ones for measurements.

    generate.py [NAME...]                      all scenes, or those named: workshop, shared, ...
    generate.py --out DIR [NAME...]            into another folder
    generate.py --mesh TRIANGLES FILE.wrl      one mesh of about so many triangles

The same text comes out on every machine.
"""

import argparse
import gzip
import pathlib

from generator import city, crate, garden, terrain, wheel, workshop

SCENES = {
    "workshop": ("workshop.wrl", workshop.build),
    "shared": ("shared.ky", wheel.build),
    "deep": ("deep.ky", garden.build),
    "city": ("city.ky.gz", city.build),
    "terrain": ("terrain.wrl", terrain.build),
    "lights": (None, crate.build),
}


def write(folder, name):
    file_name, build = SCENES[name]
    text, pictures = build()
    if file_name:
        data = text.encode("ascii")
        packed = gzip.compress(data, 9, mtime=0) if file_name.endswith(".gz") else data
        (folder / file_name).write_bytes(packed)
        print(f"{file_name}: {len(packed)} bytes")
    for picture, data in pictures.items():
        (folder / picture).write_bytes(data)
        print(f"{picture}: {len(data)} bytes")


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description="Writes the sample scenes.")
    parser.add_argument("--out", type=pathlib.Path, default=here, metavar="DIR")
    parser.add_argument("--mesh", nargs=2, metavar=("TRIANGLES", "FILE"))
    parser.add_argument("names", nargs="*", metavar="NAME", help=", ".join(SCENES))
    choice = parser.parse_args()
    unknown = [name for name in choice.names if name not in SCENES]
    if unknown:
        parser.error(f"no scene named {unknown[0]}; there are {', '.join(SCENES)}")
    if choice.mesh:
        terrain.write_mesh(choice.mesh[1], int(choice.mesh[0]))
        return
    choice.out.mkdir(parents=True, exist_ok=True)
    for name in choice.names or SCENES:
        write(choice.out, name)


if __name__ == "__main__":
    main()
