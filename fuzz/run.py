#!/usr/bin/env python3
"""Runs the fuzzers of all scene formats in turn, seeded with the test corpora."""

import argparse
import collections
import gzip
import os
import pathlib
import re
import subprocess
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
FORMATS = ("vrml97", "kalmyr_ascii", "vrml1", "kalmyr_binary", "packed")
LIMITS = ("-max_len=16000", "-timeout=25", "-rss_limit_mb=2500", "-malloc_limit_mb=1500")


def scenes():
    folders = (ROOT / "tests/data/formats", ROOT / "tests/data/fuzz", ROOT / "examples/scenes")
    for folder in folders:
        for path in sorted(folder.rglob("*")):
            if path.suffix in (".ky", ".wrl") and path.stat().st_size < 16000:
                yield path


def body(path):
    """What stands behind the header line, unpacked."""
    data = path.read_bytes()
    if data.startswith(b"\x1f\x8b"):
        data = gzip.decompress(data)
    return re.split(rb"[\r\n]", data, maxsplit=1)[-1]


def make_seeds(kmr, folder):
    for name in FORMATS:
        (folder / name).mkdir(parents=True, exist_ok=True)
    for number, path in enumerate(scenes()):
        text = body(path)
        first = path.read_bytes()[:80]
        kind = "vrml1" if b"V1.0 ascii" in first and b"VRML" in first else \
            "kalmyr_ascii" if b"Kalmyr" in first else "vrml97"
        seed = f"seed{number:04}"
        (folder / kind / seed).write_bytes(text)
        header = {"vrml1": b"#VRML V1.0 ascii\n", "vrml97": b"#VRML V2.0 utf8\n",
                  "kalmyr_ascii": b"#Kalmyr V1.0 ascii\n"}[kind]
        # Stored blocks stay readable when they are changed.
        for level in (0, 9):
            packed = gzip.compress(header + text, level)
            (folder / "packed" / f"{seed}_{level}").write_bytes(packed[2:])
        binary = folder / "kalmyr_binary" / seed
        made = folder / "made.ky"
        done = subprocess.run([kmr, "convert", path, made, "--format=kalmyr-binary"],
                              capture_output=True)
        if done.returncode == 0:
            binary.write_bytes(made.read_bytes().split(b"\n", 1)[-1])
        made.unlink(missing_ok=True)


def make_dictionary(path):
    """The words that most scenes have."""
    count = collections.Counter()
    for scene in scenes():
        count.update(set(re.findall(rb"[A-Za-z_][A-Za-z_0-9]{2,30}", body(scene))))
    words = [word.decode() for word, _ in count.most_common(700)]
    words += ["[", "]", "{", "}", " 0 ", " -1 ", "1e39", "NULL", "DEF A ", "USE A ", " IS ", "~",
              "ROUTE A.a TO B.b ", "PROTO A [ ] { ", "0xFFFFFFFF", "2147483647", "-2147483648"]
    path.write_text("".join(f'"{word}"\n' for word in words))


def run(name, seconds, options, environment):
    corpus, log = options.work / name, options.work / f"{name}.log"
    artifacts = options.work / "found" / name
    artifacts.mkdir(parents=True, exist_ok=True)
    with log.open("a") as out:
        out.write(f"== {time.strftime('%H:%M:%S')} {name} for {seconds} s\n")
        out.flush()
        subprocess.run([options.bin / f"fuzz_{name}", f"-max_total_time={seconds}",
                        f"-dict={options.work / 'words'}", f"-artifact_prefix={artifacts}/",
                        "-fork=1", "-ignore_crashes=1", "-ignore_timeouts=1", "-ignore_ooms=1",
                        *LIMITS, corpus], stdout=out, stderr=out, env=environment)
        out.write(f"== {time.strftime('%H:%M:%S')} end\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("bin", type=pathlib.Path, help="folder of the fuzzers and of kmr")
    parser.add_argument("work", type=pathlib.Path, help="folder for seeds, logs and findings")
    parser.add_argument("--minutes", type=int, default=60)
    parser.add_argument("--slot", type=int, default=120, help="seconds for a format at a time")
    parser.add_argument("--formats", default=",".join(FORMATS))
    options = parser.parse_args()
    options.work.mkdir(parents=True, exist_ok=True)
    make_seeds(options.bin / "kmr", options.work)
    make_dictionary(options.work / "words")
    environment = dict(os.environ, LSAN_OPTIONS=f"suppressions={ROOT / 'tools/lsan.supp'}",
                       ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1",
                       UBSAN_OPTIONS="print_stacktrace=1")
    end = time.monotonic() + options.minutes * 60
    while time.monotonic() < end:
        for name in options.formats.split(","):
            left = int(end - time.monotonic())
            if left > 0:
                run(name, min(options.slot, left), options, environment)


if __name__ == "__main__":
    main()
