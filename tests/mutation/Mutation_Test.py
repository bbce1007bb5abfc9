# The parts of scripts/mutation_score.sh on a small file, and the list of what changes nothing against the tree.
import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

import mutation_score
from draw import draw, lines_of_code
from mutant import mutants_of
from places import places_in
from rooms import LAYERS, Room, read_rooms, room_of
from suite import Suite, Test, passes
from survivors import Bad_List, outdated, read_survivors, write_entry

HERE = Path(__file__).resolve().parent
TREE = HERE.parents[1]
SAMPLE = HERE / "sample.cpp"


def mutants_of_sample(change=lambda source: source):
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "sample.cpp"
        file.write_bytes(change(SAMPLE.read_bytes()))
        found = places_in(str(file), ["-std=c++20"], {str(file)})
        return mutants_of("sample.cpp", file.read_bytes(), found[str(file)])


class Operators(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.mutants = mutants_of_sample()

    def expect(self, function, *wanted):
        found = {(mutant.kind, mutant.before, mutant.after) for mutant in self.mutants if mutant.function == function}
        self.assertEqual(found, set(wanted))

    def test_comparisons_are_turned_and_their_bounds_shifted(self):
        line = "return a < b || a == b || c < d;"
        self.expect(
            "comparisons",
            ("bound", line, "return a <= b || a == b || c < d;"),
            ("comparison", line, "return a >= b || a == b || c < d;"),
            ("logic", line, "return a < b && a == b || c < d;"),
            ("comparison", line, "return a < b || a != b || c < d;"),
            ("logic", line, "return a < b || a == b && c < d;"),
            ("bound", line, "return a < b || a == b || c <= d;"),
            ("comparison", line, "return a < b || a == b || c >= d;"),
        )

    def test_arithmetic_is_exchanged(self):
        line = "return a * b - a % b;"
        self.expect(
            "arithmetic",
            ("arithmetic", "a += b;", "a -= b;"),
            ("left out", "a += b;", ";"),
            ("arithmetic", line, "return a / b - a % b;"),
            ("arithmetic", line, "return a * b + a % b;"),
            ("arithmetic", line, "return a * b - a * b;"),
            ("return", line, "return static_cast<decltype(a * b - a % b)>((a * b - a % b) + 1);"),
        )

    def test_bits_are_exchanged(self):
        self.expect(
            "bits",
            ("bits", "a <<= 2;", "a >>= 2;"),
            ("constant", "a <<= 2;", "a <<= 3;"),
            ("constant", "a <<= 2;", "a <<= 1;"),
            ("left out", "a <<= 2;", ";"),
            ("bits", "return a & ~b;", "return a | ~b;"),
            ("bits", "return a & ~b;", "return a & b;"),
            ("return", "return a & ~b;", "return static_cast<decltype(a & ~b)>((a & ~b) + 1);"),
        )

    def test_logic_is_exchanged_and_not_in_comments(self):
        line = "return a /* || */ && !b;"
        self.expect(
            "logic", ("logic", line, "return a /* || */ || !b;"), ("negation", line, "return a /* || */ && b;")
        )

    def test_constants_are_off_by_one_and_not_in_types_and_strings(self):
        line = "return flag == true ? holder.values[7] : static_cast<int>(half) + text[0];"
        self.expect(
            "constants",
            ("constant", "const double half = 0.5;", "const double half = (0.5 + 1);"),
            ("constant", line, line.replace("7", "8")),
            ("constant", line, line.replace("7", "6")),
            ("constant", line, line.replace("[0]", "[1]")),
            ("constant", line, line.replace("true", "false")),
            ("comparison", line, line.replace("==", "!=")),
            ("arithmetic", line, line.replace("+", "-")),
            (
                "return",
                line,
                "return static_cast<decltype({0})>(({0}) + 1);".format(line[len("return ") : -1]),
            ),
        )
        self.expect(
            "mask",
            ("constant", "constexpr unsigned mask = 0x0Fu;", "constexpr unsigned mask = 0x10u;"),
            ("constant", "constexpr unsigned mask = 0x0Fu;", "constexpr unsigned mask = 0xeu;"),
        )
        self.expect("Holder::first", ("constant", "int first = 1;", "int first = 2;"), ("constant", "int first = 1;", "int first = 0;"))

    def test_conditions_are_negated(self):
        self.expect(
            "conditions",
            ("negation", "if (is_set) {", "if (!(is_set)) {"),
            ("negation", "while (holder->first) {", "while (!(holder->first)) {"),
            ("arithmetic", "--holder->first;", "++holder->first;"),
            ("left out", "--holder->first;", ";"),
        )

    def test_statements_are_left_out_and_what_macros_are_made_of_is_not_touched(self):
        self.expect(
            "statements",
            ("left out", "b = a;", ";"),
            ("left out", "call(b);", ";"),
            ("bound", "if (a > 100)", "if (a >= 100)"),
            ("comparison", "if (a > 100)", "if (a <= 100)"),
            ("constant", "if (a > 100)", "if (a > 101)"),
            ("constant", "if (a > 100)", "if (a > 99)"),
            ("left out", "call();", "static_cast<void>(0);"),
            ("left out", "TWICE(a);", "static_cast<void>(0);"),
            ("left out", "delete text;", ";"),
        )

    def test_other_values_are_returned(self):
        self.expect(
            "enumerator",
            (
                "return",
                "return result_of(mask);",
                "return static_cast<decltype(result_of(mask))>(static_cast<int>(result_of(mask)) + 1);",
            ),
        )
        self.expect(
            "record",
            ("return", "return text_of(1);", "return {};"),
            ("constant", "return text_of(1);", "return text_of(2);"),
            ("constant", "return text_of(1);", "return text_of(0);"),
        )
        self.expect("truth", ("return", "return ask();", "return !(ask());"))

    def test_nothing_else_is_touched(self):
        functions = {mutant.function.split(" (")[0] for mutant in self.mutants}
        tried = "comparisons arithmetic bits logic constants conditions statements enumerator record truth number"
        self.assertEqual(functions, {*tried.split(), "mask", "Holder::first", "call"})

    def test_mutant_is_one_change_of_the_file(self):
        source = SAMPLE.read_bytes()
        for mutant in self.mutants:
            changed = mutant.put_into(source)
            self.assertNotEqual(changed, source)
            self.assertEqual(changed[: mutant.begin], source[: mutant.begin])
            self.assertTrue(changed.endswith(source[mutant.end :]))


class Names(unittest.TestCase):
    def test_ids_stay_while_other_lines_change(self):
        moved = mutants_of_sample(lambda source: source.replace(b"int arithmetic", b"int more;\n\nint arithmetic"))
        self.assertEqual({mutant.id for mutant in moved}, {mutant.id for mutant in mutants_of_sample()})

    def test_same_lines_in_a_function_are_numbered(self):
        left_out = [mutant for mutant in mutants_of_sample() if mutant.before == "call(1);" and mutant.kind == "left out"]
        self.assertEqual([mutant.function for mutant in left_out], ["number", "number (2)"])


class Drawing(unittest.TestCase):
    def setUp(self):
        mutants = mutants_of_sample()
        self.mutants = {"large/": mutants[:40], "small/": mutants[40:]}
        self.lines = {"large/": 300, "small/": 100}

    def test_seed_decides(self):
        first, second, other = (list(draw(self.mutants, self.lines, seed)) for seed in (1, 1, 2))
        self.assertEqual(first, second)
        self.assertNotEqual(first, other)
        self.assertEqual(len(set(first)), len(first))
        self.assertEqual({mutant for _, mutant in first}, set(self.mutants["large/"] + self.mutants["small/"]))

    def test_rooms_have_their_share_of_the_first_ones(self):
        rooms = [room for room, _ in draw(self.mutants, self.lines, 1)]
        for count in (4, 8, 20):
            self.assertEqual(rooms[:count].count("small/"), count // 4)

    def test_comments_and_empty_lines_are_no_code(self):
        self.assertEqual(lines_of_code(b"// text\n\n  int a; // text\n}\n    // }\n"), 2)


class Survivors(unittest.TestCase):
    KEY = ("sample.cpp", "arithmetic", "a += b;", "a -= b;")

    def test_entry_is_read_as_written(self):
        text = "# head\n\n" + write_entry(self.KEY, "a reason") + "\n"
        self.assertEqual(read_survivors(text), {self.KEY: "a reason"})

    def test_bad_entries_are_refused(self):
        entry = write_entry(self.KEY, "a reason")
        for bad in (entry.replace("= a reason\n", ""), entry.replace("- a", "a"), entry + "\n" + entry, "only text"):
            with self.assertRaises(Bad_List):
                read_survivors(bad)

    def test_entry_ends_with_its_lines(self):
        self.assertEqual(outdated({self.KEY: ""}, HERE), [])
        for position, other in ((0, "none.cpp"), (1, "none"), (2, "a += c;"), (3, "a += b;")):
            key = list(self.KEY)
            key[position] = other
            self.assertEqual(outdated({tuple(key): ""}, HERE), [tuple(key)])

    def test_list_holds_for_the_tree(self):
        reasons = read_survivors((HERE / "survivors.txt").read_text())
        self.assertEqual(outdated(reasons, TREE), [])
        self.assertTrue(all(len(reason.split()) > 2 for reason in reasons.values()))


class Rooms(unittest.TestCase):
    def test_table_has_every_room_and_where_it_is_tested(self):
        rooms = read_rooms((TREE / "HACKING.md").read_text())
        paths = {room.path for room in rooms}
        for layer in LAYERS:
            for file in (TREE / layer).rglob("CMakeLists.txt"):
                if "orbe_add_room" in file.read_text():
                    self.assertIn(f"{file.parent.relative_to(TREE)}/", paths)
        for room in rooms:
            self.assertTrue(room.tests, room.path)
            for folder in room.tests:
                self.assertTrue((TREE / "tests" / folder / "CMakeLists.txt").is_file(), folder)

    def test_file_is_in_the_innermost_room(self):
        rooms = [Room("api/"), Room("api/modes/")]
        self.assertEqual(room_of(rooms, "api/modes/A_Mode.h"), rooms[1])
        self.assertEqual(room_of(rooms, "api/NeuropixAPI.cpp"), rooms[0])
        self.assertIsNone(room_of(rooms, "tools/a.cpp"))


class Tests(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def shell(self, name, command, output=""):
        return Test(name, ("sh", "-c", command), self.folder, (), output, False, frozenset())

    def test_exit_code_or_output_decides(self):
        for command, output, verdict in (
            ("true", "", "passed"),
            ("false", "", "failed"),
            ("echo well; false", "we[l]+", "passed"),
            ("echo bad", "well", "failed"),
            ("kill -SEGV $$", "", "failed"),
        ):
            self.assertEqual(passes(self.shell("", command, output), 10, self.folder)[0], verdict, command)

    def test_what_does_not_end_is_ended_with_all_that_it_has_started(self):
        test = self.shell("", "(sleep 1; touch late) & sleep 60")
        verdict, seconds = passes(test, 0.2, self.folder)
        self.assertEqual(verdict, "timeout")
        self.assertLess(seconds, 30)
        passes(self.shell("", "sleep 1.2"), 10, self.folder)
        self.assertFalse((Path(self.folder) / "late").exists())

    def test_first_failure_is_told_if_it_comes_twice(self):
        once = self.shell("once", "test -e was || { touch was; false; }")
        good, bad = self.shell("good", "true"), self.shell("bad", "false")
        self.assertIsNone(Suite({}, self.folder).first_failure([once, good]))
        self.assertEqual(Suite({}, self.folder).first_failure([good, bad]), ("bad", "failed"))


class Summary(unittest.TestCase):
    def test_latest_verdict_counts_and_listed_survivors_are_apart(self):
        mutants = mutants_of_sample()[:6]
        with tempfile.TemporaryDirectory() as folder:
            file = Path(folder) / "results"
            results = mutation_score.Results(file)
            verdicts = ["survived", "caught", "caught", "survived", "survived", "does not compile"]
            for mutant, verdict in zip(mutants, verdicts):
                results.add("api/modes/", mutant, verdict, "", 1)
            results.add("api/modes/", mutants[0], "caught", "a_test failed", 1)
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                mutation_score.print_summary(mutation_score.Results(file), [Room("api/modes/")], {mutants[3].key: "reason"})
        lines = output.getvalue().splitlines()
        self.assertEqual(lines[0].split(), "room made caught survived changes nothing score".split())
        for line, name in zip(lines[1:4], ("api/modes/", "api/ in all", "in all")):
            self.assertEqual(line, f"{name:42}{5:6}{3:8}{1:10}{1:17}{'75.0 %':>9}")
        self.assertEqual(lines[5:], ["survived:", *write_entry(mutants[4].key, "?").splitlines()])


if __name__ == "__main__":
    sys.exit(unittest.main(verbosity=2))
