#!/usr/bin/env python3
"""Runs the fuzzers of all scene formats beside each other, seeded with the test corpora.

Exits with 1 when something was found.
"""

import argparse
import collections
import gzip
import os
import pathlib
import re
import subprocess
import sys
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


def start(name, seconds, options, environment):
    """A fuzzer that runs on its own for so long."""
    corpus, log = options.work / name, options.work / f"{name}.log"
    artifacts = options.work / "found" / name
    artifacts.mkdir(parents=True, exist_ok=True)
    out = log.open("a")
    out.write(f"== {time.strftime('%H:%M:%S')} {name} for {seconds} s\n")
    out.flush()
    return subprocess.Popen([options.bin / f"fuzz_{name}", f"-max_total_time={seconds}",
                             f"-dict={options.work / 'words'}", f"-artifact_prefix={artifacts}/",
                             "-fork=1", "-ignore_crashes=1", "-ignore_timeouts=1",
                             "-ignore_ooms=1", *LIMITS, corpus],
                            stdout=out, stderr=out, env=environment)


def report(options, names):
    """Inputs that each format was tried with, and what was found. The number of findings."""
    total = 0
    for name in names:
        log = (options.work / f"{name}.log").read_text(errors="replace")
        runs = re.findall(r"^#(\d+):", log.rpartition("== ")[2], re.M)
        found = len(list((options.work / "found" / name).iterdir()))
        total += found
        print(f"{name}: {runs[-1] if runs else 0} inputs, {found} findings")
    return total


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("bin", type=pathlib.Path, help="folder of the fuzzers and of kmr")
    parser.add_argument("work", type=pathlib.Path, help="folder for seeds, logs and findings")
    parser.add_argument("--hours", type=float, default=1, help="for each format")
    parser.add_argument("--formats", default=",".join(FORMATS))
    options = parser.parse_args()
    options.work.mkdir(parents=True, exist_ok=True)
    make_seeds(options.bin / "kmr", options.work)
    make_dictionary(options.work / "words")
    environment = dict(os.environ, LSAN_OPTIONS=f"suppressions={ROOT / 'tools/lsan.supp'}",
                       ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=1",
                       UBSAN_OPTIONS="print_stacktrace=1")
    names = options.formats.split(",")
    fuzzers = []
    try:
        for name in names:
            fuzzers.append(start(name, max(int(options.hours * 3600), 1), options, environment))
        failed = [fuzzer.wait() for fuzzer in fuzzers]
    finally:
        for fuzzer in fuzzers:
            fuzzer.terminate()
            fuzzer.wait()
    return 1 if report(options, names) or any(failed) else 0


if __name__ == "__main__":
    sys.exit(main())
