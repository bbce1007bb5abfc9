# A copy of the tree, built with the preset release, in which defects are made one by one.
import filecmp
import hashlib
import json
import pickle
import re
import shlex
import shutil
import subprocess
from concurrent.futures import ProcessPoolExecutor
from functools import cached_property
from pathlib import Path

from places import places_in
from rooms import LAYERS


class Build_Failed(Exception):
    """Something could not be compiled or linked."""


class Does_Not_Start(Exception):
    """A test program cannot even list its tests."""


def bring_up_to_date(source, tree):
    """Makes the copy's files those of the checkout, as git knows them, and touches no file that is the same."""
    listing = subprocess.run(
        ["git", "-C", source, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True, text=True,
    ).stdout  # fmt: skip
    names = {name for name in listing.split("\0") if name and (source / name).is_file()}
    known = tree / ".copied"
    for name in (set(known.read_text().splitlines()) if known.is_file() else set()) - names:
        (tree / name).unlink(missing_ok=True)
    for name in names:
        target = tree / name
        if not (target.is_file() and filecmp.cmp(source / name, target, shallow=False)):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source / name, target)
    known.write_text("\n".join(sorted(names)))
    modules = "tools/orbe_view/page/node_modules"
    shutil.copytree(source / modules, tree / modules, dirs_exist_ok=True)


SEEN = set()  # by this process


def scan(task):
    main_file, options, files = task
    found = places_in(main_file, options, files - SEEN)
    SEEN.update(found)
    return found


class Sandbox:
    def __init__(self, source, folder, jobs):
        self.tree = folder / "tree"
        self.build = self.tree / "build/release"
        self.jobs = jobs
        self.inputs_of = {}
        self.sources = {}
        self.tree.mkdir(parents=True, exist_ok=True)
        bring_up_to_date(source, self.tree)
        self.run(["cmake", "--preset", "release", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"])

    def run(self, command):
        done = subprocess.run(command, cwd=self.tree, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
        if done.returncode != 0:
            raise Build_Failed(done.stdout)
        return done.stdout

    def make(self, targets=()):
        """Builds the targets, or everything."""
        try:
            self.run(["ninja", "-C", self.build, "-j", str(self.jobs), *sorted(targets)])
        except Build_Failed as failure:
            output = str(failure)
            if "Error running test executable" in output:
                raise Does_Not_Start(output) from None
            raise

    @cached_property
    def commands(self):
        """What every source file of the layers is compiled with."""
        found = {}
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            name = str(Path(entry["file"]).relative_to(self.tree))
            if name.startswith(LAYERS) and name not in found:
                words = shlex.split(entry["command"])
                options = [word for word in words if word.startswith(("-I", "-D", "-std="))]
                for position, word in enumerate(words):
                    if word == "-isystem":
                        options += words[position : position + 2]
                found[name] = options
        return found

    def places(self):
        """The places of all files of the layers that this build compiles. What was found is kept while the files are the
        same."""
        files = sorted(str(path) for layer in LAYERS for path in (self.tree / layer).rglob("*") if path.suffix in (".cpp", ".h"))
        digest = hashlib.sha256(Path(places_in.__code__.co_filename).read_bytes())
        for file in files:
            digest.update(file.encode() + b"\n" + Path(file).read_bytes())
        kept = self.tree.parent / "places"
        if kept.is_file():
            known, found = pickle.loads(kept.read_bytes())
            if known == digest.digest():
                return found
        found = {}
        tasks = [(str(self.tree / name), options, set(files)) for name, options in sorted(self.commands.items())]
        with ProcessPoolExecutor(self.jobs) as pool:
            for of_files in pool.map(scan, tasks):
                for file, of_file in of_files.items():
                    found.setdefault(str(Path(file).relative_to(self.tree)), of_file)
        kept.write_bytes(pickle.dumps((digest.digest(), found)))
        return found

    def inputs(self, program):
        """All that goes into what the build makes."""
        if program not in self.inputs_of:
            try:
                self.inputs_of[program] = set(self.run(["ninja", "-C", self.build, "-t", "inputs", program]).split("\n"))
            except Build_Failed:
                self.inputs_of[program] = set()  # not made by the build but by a test
        return self.inputs_of[program]

    def depends(self, programs, file):
        """Whether the programs of a test are made from the file, or not made by the build at all."""
        inputs = [self.inputs(program) for program in programs]
        return not any(inputs) or any(str(self.tree / file) in of_program for of_program in inputs)

    def names(self, test, function):
        """Whether a source of what the test runs has the function's name."""
        word = re.compile(rb"\b" + re.escape(function.encode()) + rb"\b")
        sources = {
            name
            for program in test.programs
            for name in self.inputs(program)
            if name.startswith(f"{self.tree}/tests/") and name.endswith(".cpp")
        }
        return any(word.search(self.source_of(name)) for name in sources)

    def source_of(self, file):
        if file not in self.sources:
            self.sources[file] = Path(file).read_bytes()
        return self.sources[file]
