# mutation_score.py [COUNT] [--seed N] [--only PATH] [--survivors] [--summary]: see scripts/mutation_score.sh.
import argparse
import json
import shutil
import signal
import sys
from itertools import chain
from pathlib import Path
from time import monotonic

from draw import draw, lines_of_code
from mutant import mutants_of
from rooms import read_rooms, room_of
from sandbox import Build_Failed, Does_Not_Start, Sandbox
from suite import Suite, read_tests
from survivors import Bad_List, outdated, read_survivors, write_entry

SOURCE = Path(__file__).resolve().parents[2]
FOLDER = SOURCE / "build/mutation"
STAGE_SECONDS = 5
LIST = Path(__file__).with_name("survivors.txt")


def say(text):
    print(f"mutation: {text}", flush=True)


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutation_score.sh")
    parser.add_argument("count", metavar="COUNT", nargs="?", type=int, default=100, help="how many defects to draw (100)")
    parser.add_argument("--seed", type=int, default=1, help="which ones are drawn (1)")
    parser.add_argument("--only", metavar="PATH", default="", help="only in files whose path begins so")
    parser.add_argument("--quick", action="store_true", help="only the nearest tests, and of them those of less than a second; the others in a later run")
    parser.add_argument("--as-built", action="store_true", help="build only what a defect needs, with the tests of last time")
    parser.add_argument("--survivors", action="store_true", help="try those again that no test has seen so far")
    parser.add_argument("--summary", action="store_true", help="only the summary of what is there")
    return parser.parse_args()


class Results:
    """What became of each mutant, a line of JSON each; the latest line counts."""

    def __init__(self, file):
        self.file = file
        self.entries = {}
        if file.is_file():
            for line in file.read_text().splitlines():
                entry = json.loads(line)
                self.entries[entry["id"]] = entry

    def add(self, room, mutant, verdict, by, seconds):
        names = dict(zip(("file", "function", "before", "after"), mutant.key))
        entry = {"id": mutant.id, "room": room, "kind": mutant.kind, **names, "verdict": verdict, "by": by, "seconds": seconds}
        self.entries[mutant.id] = entry
        with open(self.file, "a") as file:
            file.write(json.dumps(entry) + "\n")


def print_summary(results, rooms, reasons):
    """By room and layer: what was made, caught, and changes nothing, and what survived. What is open, since not all tests
    have run, counts as survived."""
    rows, survivors = {}, []
    for entry in results.entries.values():
        if entry["verdict"] == "does not compile":
            continue
        key = tuple(entry[name] for name in ("file", "function", "before", "after"))
        if entry["verdict"] == "caught":
            what = "caught"
        elif key in reasons:
            what = "nothing"
        else:
            what = "survived"
            survivors.append((entry["verdict"], key))
        layer = entry["room"].split("/")[0] + "/"
        for name in {entry["room"], f"{layer} in all", "in all"}:
            rows.setdefault(name, {"caught": 0, "nothing": 0, "survived": 0})[what] += 1
    order = [room.path for room in rooms]
    order += [f"{layer} in all" for layer in dict.fromkeys(name.split("/")[0] + "/" for name in order)] + ["in all"]
    print(f"{'room':42}{'made':>6}{'caught':>8}{'survived':>10}{'changes nothing':>17}{'score':>9}")
    for name in order:
        if name not in rows:
            continue
        row = rows[name]
        changing = row["caught"] + row["survived"]
        score = f"{100 * row['caught'] / changing:.1f} %" if changing else "-"
        made = changing + row["nothing"]
        print(f"{name:42}{made:6}{row['caught']:8}{row['survived']:10}{row['nothing']:17}{score:>9}")
    for verdict, key in survivors:
        print(f"\n{verdict}:\n" + write_entry(key, "?"), end="")


class Trial:
    """Puts mutants into the sandbox and sees whether a test fails."""

    def __init__(self, sandbox, rooms, durations, is_quick):
        self.sandbox = sandbox
        self.suite = Suite(durations, FOLDER / "temporary", sandbox.jobs)
        self.tests = read_tests(sandbox.build)
        self.programs = {test.programs for test in self.tests}
        self.is_quick = is_quick
        self.nearest = {}
        for room in rooms:
            folders = [sandbox.build / "tests" / folder for folder in room.tests]
            tests = [read_tests(folder) for folder in folders if (folder / "CTestTestfile.cmake").is_file()]
            self.nearest[room.path] = {test.name for of_folder in tests for test in of_folder}

    def stages(self, tests, function):
        """The tests by the programs that they take, some seconds of them at a time, so that a program whose turn does not
        come need not be built: first those that name the function, and the quick ones before others."""
        by_programs = {}
        for test in tests:
            by_programs.setdefault(test.programs, []).append(test)
        costs = {programs: sum(self.suite.durations[test.name] for test in of_them) for programs, of_them in by_programs.items()}
        names = {programs: self.sandbox.names(of_them[0], function) for programs, of_them in by_programs.items()}
        order = sorted(by_programs, key=lambda programs: (not names[programs], costs[programs], sorted(programs)))
        stage, cost = [], 0
        for programs in order:
            stage += by_programs[programs]
            cost += costs[programs]
            if cost > STAGE_SECONDS:
                yield stage
                stage, cost = [], 0
        yield stage

    def outcome(self, room, mutant):
        """The verdict, and who has caught it."""
        file = self.sandbox.tree / mutant.file
        source = file.read_bytes()
        shutil.rmtree(FOLDER / "temporary", ignore_errors=True)
        (FOLDER / "temporary").mkdir()
        try:
            file.write_bytes(mutant.put_into(source))
            depends = {programs: self.sandbox.depends(programs, mutant.file) for programs in self.programs}
            tests = [test for test in self.tests if depends[test.programs]]
            near = [test for test in tests if test.name in self.nearest[room]]
            if self.is_quick:
                near = [test for test in near if self.suite.durations[test.name] < 1]
            far = [test for test in tests if test.name not in self.nearest[room]]
            function = mutant.function.split(" (")[0].split("::")[-1]
            for stage in [near] if self.is_quick else chain([near], self.stages(far, function)):
                if not stage:
                    continue
                self.sandbox.make({program for test in stage for program in test.programs if self.sandbox.inputs(program)})
                failure = self.suite.first_failure(stage)
                if failure:
                    return "caught", " ".join(failure)
            return "open" if self.is_quick else "survived", ""
        except Does_Not_Start:
            return "caught", "a test program does not start"
        except Build_Failed as failed:
            return "does not compile", next((line for line in str(failed).splitlines() if "error:" in line), "")
        finally:
            file.write_bytes(source)


def measure(sandbox):
    """How long each test takes without a defect, from an earlier run or from running all of them now."""
    file = FOLDER / "durations.json"
    durations = json.loads(file.read_text()) if file.is_file() else {}
    tests = [test for test in read_tests(sandbox.build) if test.name not in durations]
    if tests:
        say(f"running {len(tests)} tests without a defect")
        (FOLDER / "temporary").mkdir(exist_ok=True)
        failures = Suite(durations, FOLDER / "temporary", sandbox.jobs).measure(tests, say)
        if failures:
            sys.exit(f"mutation: tests fail without a defect: {', '.join(failures)}")
        file.write_text(json.dumps(durations, indent=0))
    return durations


def main():
    options = arguments()
    reasons = read_survivors(LIST.read_text())
    for key in outdated(reasons, SOURCE):
        sys.exit(f"mutation: survivors.txt lists lines that do not stand there:\n{write_entry(key, reasons[key])}")
    rooms = read_rooms((SOURCE / "HACKING.md").read_text())
    FOLDER.mkdir(parents=True, exist_ok=True)
    results = Results(FOLDER / "results")
    if options.summary:
        print_summary(results, rooms, reasons)
        return
    say("building (preset release)")
    sandbox = Sandbox(SOURCE, FOLDER, jobs=2)
    if not options.as_built:
        sandbox.make()
    durations = measure(sandbox)
    say("looking for places")
    mutants, lines = {}, {}
    for file, places in sandbox.places().items():
        room = room_of(rooms, file)
        if places and file.startswith(options.only):
            source = (sandbox.tree / file).read_bytes()
            mutants.setdefault(room.path, []).extend(mutants_of(file, source, places))
            lines[room.path] = lines.get(room.path, 0) + lines_of_code(source)
    known = {mutant.key for of_room in mutants.values() for mutant in of_room}
    for key in reasons:
        if key not in known and key[0].startswith(options.only):
            sys.exit(f"mutation: survivors.txt lists a defect that is never made:\n{write_entry(key, reasons[key])}")
    say(f"{len(known)} defects in {sum(lines.values())} lines of code")
    trial = Trial(sandbox, rooms, durations, options.quick)

    def attempt(room, mutant, number):
        begin = monotonic()
        verdict, by = trial.outcome(room, mutant)
        seconds = monotonic() - begin
        results.add(room, mutant, verdict, by, round(seconds, 1))
        say(f"{number} {mutant.id} {mutant.file}: {mutant.kind}: {verdict} {by} ({seconds:.0f} s)")
        return verdict

    if options.survivors:
        for room, of_room in mutants.items():
            for mutant in of_room:
                entry = results.entries.get(mutant.id)
                if entry and entry["verdict"] in ("survived", "open") and mutant.key not in reasons:
                    attempt(room, mutant, "again")
    else:
        say(f"drawing {options.count} with --seed {options.seed}")
        made = 0
        for room, mutant in draw(mutants, lines, options.seed):
            if made >= options.count:
                break
            entry = results.entries.get(mutant.id)
            is_done = entry and (entry["verdict"] != "open" or options.quick)
            verdict = entry["verdict"] if is_done else attempt(room, mutant, f"{made + 1}/{options.count}")
            made += verdict != "does not compile"
    print_summary(results, rooms, reasons)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("mutation: ended"))
    try:
        main()
    except (Bad_List, Build_Failed) as problem:
        sys.exit(f"mutation: {problem}")
