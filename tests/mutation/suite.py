# The tests that ctest knows of a build: which programs they run, how long they take, and whether they pass, each in a
# process group of its own that ends in time and cannot fill the machine.
import json
import os
import re
import signal
import subprocess
import threading
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path
from time import monotonic

# What does not depend on the layers' code, or looks at it for hours, in browsers or in packages.
LEFT_OUT = re.compile(r"^(endurance|mutation|packaging|rooms|scripts)\.|^view\.(Live_)?Browser$")
LIMITS = ["prlimit", "--as=8589934592", "--fsize=4294967296:unlimited", "--core=0", "--"]


@dataclass(frozen=True)
class Test:
    name: str
    command: tuple
    folder: str
    environment: tuple
    output: str  # a pattern, if that decides
    alone: bool
    programs: frozenset  # what the build makes and the test is given


def read_tests(build, folder=""):
    """The tests of a folder of the build, and of those in it."""
    listing = subprocess.run(
        ["ctest", "--test-dir", build / folder, "--show-only=json-v1"], check=True, capture_output=True, text=True
    ).stdout
    tests = []
    for entry in json.loads(listing)["tests"]:
        if LEFT_OUT.search(entry["name"]):
            continue
        if "command" not in entry or entry["name"].endswith("_NOT_BUILT"):
            raise RuntimeError(f"{entry['name']} is not built")
        properties = {item["name"]: item["value"] for item in entry.get("properties", [])}
        environment = tuple(properties.get("ENVIRONMENT", []))
        words = list(entry["command"]) + [item.partition("=")[2] for item in environment]
        made = {word for word in words if word.startswith(f"{build}/") and Path(word).is_file()}
        tests.append(
            Test(
                entry["name"],
                tuple(entry["command"]),
                properties.get("WORKING_DIRECTORY", str(build)),
                environment,
                "|".join(properties.get("PASS_REGULAR_EXPRESSION", [])),
                bool(properties.get("RUN_SERIAL")),
                frozenset(os.path.relpath(word, build) for word in made),
            )
        )
    return tests


def passes(test, limit, temporary):
    """Whether the test passes within `limit` seconds: "passed", "failed" or "timeout", and the seconds that it took."""
    environment = dict(os.environ, TMPDIR=str(temporary), **dict(item.split("=", 1) for item in test.environment))
    begin = monotonic()
    process = subprocess.Popen(
        [*LIMITS, *test.command],
        cwd=test.folder,
        env=environment,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE if test.output else subprocess.DEVNULL,
        stderr=subprocess.STDOUT,
        process_group=0,
    )
    try:
        output, _ = process.communicate(timeout=limit)
        if test.output:
            good = re.search(test.output, output.decode(errors="replace")) is not None
        else:
            good = process.returncode == 0
        verdict = "passed" if good else "failed"
    except subprocess.TimeoutExpired:
        verdict = "timeout"
    finally:
        # Also what a test has left running.
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
    return verdict, monotonic() - begin


class Suite:
    """Runs tests two at a time, the quickest first, until the first of them fails."""

    def __init__(self, durations, temporary, jobs=2):
        self.durations = durations
        self.temporary = temporary
        self.jobs = jobs

    def limit(self, test):
        return 10 * self.durations.get(test.name, 1) + 10

    def first_failure(self, tests):
        """The name of the first test that fails, and how; None if all pass. What fails without having run out of time
        must fail again by itself, so that a busy machine does not pass for a defect that was seen."""
        tests = sorted(tests, key=lambda test: (test.alone, self.durations.get(test.name, 0)))
        failures, stop, lock = [], threading.Event(), threading.Lock()

        def run(test):
            if stop.is_set():
                return
            verdict, _ = passes(test, self.limit(test), self.temporary)
            if verdict == "failed":
                verdict, _ = passes(test, self.limit(test), self.temporary)
            if verdict != "passed":
                with lock:
                    failures.append((test.name, verdict))
                stop.set()

        for alone in (False, True):
            with ThreadPoolExecutor(1 if alone else self.jobs) as pool:
                try:
                    list(pool.map(run, [test for test in tests if test.alone == alone]))
                except SystemExit:
                    stop.set()  # the pool waits for what it has not begun
                    raise
            if failures:
                return failures[0]
        return None

    def measure(self, tests, report):
        """Runs all tests as they are and keeps how long each took. Answers the names of those that fail twice."""
        failures = []

        def run(test):
            for _ in range(2):
                verdict, seconds = passes(test, 600, self.temporary)
                if verdict == "passed":
                    self.durations[test.name] = round(seconds, 3)
                    return
            failures.append(test.name)

        for alone in (False, True):
            with ThreadPoolExecutor(1 if alone else self.jobs) as pool:
                for count, _ in enumerate(pool.map(run, [test for test in tests if test.alone == alone]), 1):
                    if count % 100 == 0:
                        report(f"{count} tests run")
        return failures
