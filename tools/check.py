#!/usr/bin/env python3
"""Build the project and run all its tests headless; ./check calls this.

Counts the single cases of every test executable. An executable that crashes,
hangs, leaks or runs no case counts as one more failure, and so does a build that
does not finish.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PRESETS = ["release", "asan"]
# What --full builds and runs besides, under the thread sanitizer: the toolkit's
# libraries alone take about six minutes of two cores, too long for every check.
THREADED_PRESET = "tsan"
THREADED_TESTS = ["test_threads"]
SHOWN_LINES = 150
# The leak sanitizer stops the program's threads to look for leaks, and sometimes
# crashes on one of the OpenGL driver's that is just ending. That says nothing about
# the tests, so such a program runs again; a leak or a failed case never does.
LEAK_CHECK_DIED = "LeakSanitizer has encountered a fatal error"
LEAK_CHECK_ATTEMPTS = 3


@dataclass
class Outcome:
    name: str
    passed: int = 0
    failed: int = 0
    skipped: int = 0
    seconds: float = 0.0
    problems: list = field(default_factory=list)
    output: str = ""

    def fail(self, problem):
        self.failed += 1
        self.problems.append(problem)


def run_step(name, command):
    """Runs a step that passes or fails as a whole; its output goes to ours."""
    print(f"== {name}", flush=True)
    outcome = Outcome(name)
    start = time.monotonic()
    status = subprocess.run(command, cwd=ROOT, stdin=subprocess.DEVNULL).returncode
    outcome.seconds = time.monotonic() - start
    if status:
        outcome.fail(f"exit status {status}")
    return outcome


def build(preset, targets=()):
    """Configures and builds a preset; no outcome of its own unless it fails."""
    jobs = str(os.cpu_count() or 1)
    wanted = ["--target", *targets] if targets else []
    for name, command in ((f"configure {preset}", ["cmake", "--preset", preset]),
                          (f"build {preset}", ["cmake", "--build", f"build/{preset}", "-j", jobs, *wanted])):
        outcome = run_step(name, command)
        if outcome.failed:
            return outcome
        print(f"   {outcome.seconds:.0f} s", flush=True)
    return None


def listed_tests(preset):
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=ROOT / "build" / preset,
                             check=True, stdout=subprocess.PIPE).stdout
    for test in json.loads(listing)["tests"]:
        properties = {p["name"]: p["value"] for p in test.get("properties", [])}
        yield test["name"], test.get("command", []), properties


def test_environment(properties, home):
    environment = dict(os.environ)
    environment.pop("DISPLAY", None)
    environment.pop("WAYLAND_DISPLAY", None)
    # Preferences, caches and run-time files of one test program are its own.
    environment.update(HOME=home, XDG_RUNTIME_DIR=home, XDG_CONFIG_HOME=f"{home}/config",
                       XDG_CACHE_HOME=f"{home}/cache", XDG_DATA_HOME=f"{home}/data", TMPDIR=home)
    for entry in properties.get("ENVIRONMENT", []):
        key, _, value = entry.partition("=")
        environment[key] = value
    if "x11" in properties.get("LABELS", []):
        environment["QT_QPA_PLATFORM"] = "xcb"
    return environment


def count_cases(outcome, report):
    """Adds the cases of a GoogleTest report; false when there is none."""
    try:
        suites = json.loads(report.read_text(encoding="utf-8"))["testsuites"]
    except (OSError, ValueError, KeyError):
        return False
    for case in (case for suite in suites for case in suite["testsuite"]):
        if case.get("failures"):
            outcome.fail(f"{case['classname']}.{case['name']}")
        elif case.get("result") == "SKIPPED":
            outcome.skipped += 1
        elif case.get("status") == "RUN":
            outcome.passed += 1
    return True


def judge_gtest(outcome, status, report):
    if not count_cases(outcome, report):
        # It died on the way: what it had finished still counts.
        outcome.passed = len(re.findall(r"^\[       OK \]", outcome.output, re.M))
        for case in re.findall(r"^\[  FAILED  \] ([^\s,]+).* \(\d+ ms\)$", outcome.output, re.M):
            outcome.fail(case)
        begun = re.findall(r"^\[ RUN      \] (\S+)", outcome.output, re.M)
        outcome.fail(f"died with status {status}" + (f" after {begun[-1]} began" if begun else ""))
    elif status and not outcome.failed:
        outcome.fail(f"exit status {status}")
    elif not outcome.passed and not outcome.failed and not outcome.skipped:
        outcome.fail("ran no case")


def executed(command, properties, environment):
    """Runs a test program to its end or its time limit; its status and what it printed."""
    try:
        process = subprocess.run(command, cwd=properties.get("WORKING_DIRECTORY", ROOT),
                                 env=environment, stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                 timeout=properties.get("TIMEOUT", 900))
        status, output = process.returncode, process.stdout
    except subprocess.TimeoutExpired as expired:
        status, output = "timeout", expired.stdout or b""
    return status, output.decode("utf-8", "replace")


def run_test(preset, name, command, properties):
    outcome = Outcome(f"{preset}/{name}")
    if not command or not Path(command[0]).exists():
        outcome.fail("the program was not built")
        return outcome
    labels = properties.get("LABELS", [])
    home = tempfile.mkdtemp(prefix="check-")
    report = Path(home) / "report.json"
    gtest = "gtest" in labels
    full = list(command) + ([f"--gtest_output=json:{report}"] if gtest else [])
    if "x11" in labels:
        full = ["xvfb-run", "-a", "-s", "-screen 0 1600x1200x24"] + full
    start = time.monotonic()
    for attempt in range(LEAK_CHECK_ATTEMPTS):
        report.unlink(missing_ok=True)
        status, output = executed(full, properties, test_environment(properties, home))
        if not status or LEAK_CHECK_DIED not in output or "[  FAILED  ]" in output:
            break
        print(f"{outcome.name}: the leak check itself died, attempt {attempt + 1} of "
              f"{LEAK_CHECK_ATTEMPTS}", flush=True)
    outcome.seconds = time.monotonic() - start
    outcome.output = output
    if gtest:
        judge_gtest(outcome, status, report)
    elif status:
        outcome.fail(f"exit status {status}")
    else:
        outcome.passed = 1
    shutil.rmtree(home, ignore_errors=True)
    return outcome


def show(outcome):
    skipped = f", {outcome.skipped} skipped" if outcome.skipped else ""
    print(f"{outcome.name}: {outcome.passed} passed, {outcome.failed} failed{skipped} "
          f"({outcome.seconds:.1f} s)", flush=True)
    if outcome.failed:
        lines = outcome.output.splitlines()
        kept = [line for line in lines if not line.startswith(("[ RUN", "[       OK", "[-----"))]
        if len(kept) > SHOWN_LINES:
            kept = kept[:SHOWN_LINES // 3] + ["   ..."] + kept[-2 * SHOWN_LINES // 3:]
        for line in kept:
            print("    " + line)
        sys.stdout.flush()


def run_tests(preset, pattern):
    tests = [test for test in listed_tests(preset) if re.search(pattern, test[0])]
    print(f"== test {preset}", flush=True)
    outcomes = []
    with ThreadPoolExecutor(max_workers=os.cpu_count() or 1) as pool:
        for future in [pool.submit(run_test, preset, *test) for test in tests]:
            outcomes.append(future.result())
            show(outcomes[-1])
    if not tests:
        outcomes.append(Outcome(f"{preset}: no tests found", failed=1))
    return outcomes


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--preset", action="append", choices=PRESETS + ["dev", "tsan"],
                        help="build and test this preset only (may be given several times)")
    parser.add_argument("--tests", default="", metavar="REGEX", help="run only these tests")
    parser.add_argument("--no-build", action="store_true", help="test what is built already")
    parser.add_argument("--full", action="store_true",
                        help="longer storms (MIRABO_FULL=1 in the tests' environment), and the "
                             "threaded tests under the thread sanitizer as well")
    arguments = parser.parse_args()
    if arguments.full:
        os.environ["MIRABO_FULL"] = "1"

    outcomes = [run_step("layers", [sys.executable, "tools/check_layers"])]
    outcomes[0].passed = 1 - outcomes[0].failed
    for preset in arguments.preset or PRESETS:
        broken = None if arguments.no_build else build(preset)
        outcomes += [broken] if broken else run_tests(preset, arguments.tests)
    if arguments.full:
        broken = None if arguments.no_build else build(THREADED_PRESET, THREADED_TESTS)
        pattern = f"^({'|'.join(THREADED_TESTS)})$"
        outcomes += [broken] if broken else run_tests(THREADED_PRESET, pattern)

    passed = sum(outcome.passed for outcome in outcomes)
    failed = sum(outcome.failed for outcome in outcomes)
    if failed:
        print("== failures")
        for outcome in outcomes:
            for problem in outcome.problems:
                print(f"{outcome.name}: {problem}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
