#!/usr/bin/env python3
"""Write what the toolkit's headers say of fields (units, ranges, meaning) as a C++ table.

field_hints.py --out FILE.cpp HEADER_DIRECTORY...

Takes the comment behind a field's declaration ("///<", with the lines that continue it) and the
one in front of it ("///").
"""

import argparse
import re
from pathlib import Path

CLASS = re.compile(r"^class (?:KALMYR\w* )?So(\w+)(?: final)? : public")
FIELD = re.compile(r"^    So[SM]F\w+ (\w+);\s*(?:///< ?(.*))?$")
BEHIND = re.compile(r"^\s*///< ?(.*)$")
BEFORE = re.compile(r"^    /// ?(.*)$")
# A default alone says nothing to whom sees the field.
DEFAULT = re.compile(r"^(\S+|[-0-9. ]+)$")


def hints(lines):
    """(class, field, text) for every field that has a comment."""
    type_name, before = None, []
    for at, line in enumerate(lines):
        if match := CLASS.match(line):
            type_name = match.group(1)
        if match := BEFORE.match(line):
            before.append(match.group(1))
            continue
        match = FIELD.match(line)
        if match and type_name:
            words = before + ([match.group(2)] if match.group(2) else [])
            for later in lines[at + 1:] if match.group(2) else []:
                if not (more := BEHIND.match(later)):
                    break
                words.append(more.group(1))
            if words and not DEFAULT.match(" ".join(words)):
                yield type_name, match.group(1), " ".join(words)
        before = []


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("directories", nargs="+", type=Path)
    arguments = parser.parse_args()
    found = set()
    for directory in arguments.directories:
        for header in directory.rglob("*.h"):
            found.update(hints(header.read_text(encoding="utf-8").splitlines()))
    rows = "".join(f"    {{{quoted(t)}, {quoted(f)}, {quoted(h)}}},\n" for t, f, h in sorted(found))
    arguments.out.write_text(
        '#include "FieldHints.h"\n\n'
        f"const FieldHint kFieldHints[] = {{\n{rows}}};\n"
        f"const int kFieldHintCount = {len(found)};\n", encoding="utf-8")


if __name__ == "__main__":
    main()
