"""script/mutate on a small source: which places it finds, and that each of its mutants does what it says."""
import os
import subprocess
import sys
import tempfile
import time
import unittest
from unittest import mock

HERE = os.path.dirname(os.path.abspath(__file__))
SCRIPT = os.path.join(os.path.dirname(os.path.dirname(HERE)), "script")
SAMPLE = os.path.join(HERE, "Sample.cpp")
sys.path.insert(0, SCRIPT)
try:
    from mutation import places, trial
except ImportError as missing:
    print(f"SKIPPED: {missing}; install python3-clang-19")
    sys.exit(0)

PLAIN = ["Key 1 0", "first other 1", "2 -7", "ab", "100", "6"]
# By the line's text and what it becomes: the printed lines that change, None when the program never ends.
EXPECTED = {
    ('constexpr const char* key = "Key"', '"qey"'): {0: "qey 1 0"},
    ("constexpr int limit = 10", "11"): {0: "Key 1 1"},
    ("bool isSet = true", "false"): {1: "first other 0"},
    ("return value < limit", "!(value < limit)"): {0: "Key 0 1"},
    ("return value < limit", "< exchanged for <="): {0: "Key 1 1"},
    ('return "first"', '"qirst"'): {1: "qirst other 1"},
    ('return "other"', '"qther"'): {1: "first qther 1"},
    ("if (value == wanted)", "!(value == wanted)"): {2: "1 1"},
    ("return value;", "return {}"): {2: "-7 -7"},
    ("if (const auto length", "negated: length"): {3: ""},
    ("text.append(word)", "left out"): {3: ""},
    ("return text", "return {}"): {3: ""},
    ("return a && b", "!(a && b)"): {4: "011"},
    ("return a && b", "!(a)"): {4: "000"},
    ("return a && b", "!(b)"): {4: "010"},
    ("return a && b", "&& exchanged for ||"): {4: "110"},
    ("int count = 0", "1"): {5: "7"},
    ("for (int i = 0", "1"): {5: "4"},
    ("for (int i = 0", "!(i < to)"): {5: "0"},
    ("for (int i = 0", "< exchanged for <="): {5: "8"},
    ("for (int i = 0", "left out"): None,
    ("count += 2", "left out"): {5: "0"},
    ("count += 2", "3"): {5: "9"},
    ("return count", "the next after count"): {5: "7"},
}


class MutationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        found, cls.errors = places.mutants_of(SAMPLE, ["-std=c++20"], lambda path: path == SAMPLE)
        with open(SAMPLE, encoding="utf-8") as file:
            cls.text = file.read()
        end = cls.text[:cls.text.index("int main()")].count("\n")
        cls.mutants = [mutant for mutant in found[SAMPLE] if mutant.line <= end]
        for number, mutant in enumerate(cls.mutants, 1):
            mutant.number = number
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        source = os.path.join(cls.folder.name, "Sample.cpp")
        with open(source, "w", encoding="utf-8") as file:
            file.write(f'#include "{SCRIPT}/mutation/Mutant.h"\n#line 1\n' + places.rewritten(cls.text, cls.mutants))
        cls.program = os.path.join(cls.folder.name, "sample")
        subprocess.run(["c++", "-std=c++20", "-w", "-o", cls.program, source], check=True)

    def printed(self, number, limit=60):
        environment = {**os.environ, "BREVANE_MUTANT": str(number)}
        done = subprocess.run([self.program], env=environment, capture_output=True, text=True, timeout=limit, check=False)
        return done.stdout.splitlines()

    def line_of(self, mutant):
        return self.text.splitlines()[mutant.line - 1]

    def test_the_parser_has_no_complaint(self):
        self.assertEqual(self.errors, [])

    def test_the_places_are_these_and_no_others(self):
        found = sorted((self.line_of(mutant).strip(), mutant.became) for mutant in self.mutants)
        for line, became in found:
            self.assertEqual(sum(words in line and change == became for words, change in EXPECTED), 1, (line, became))
        self.assertEqual(len(found), len(EXPECTED))

    def test_without_a_mutant_the_program_is_as_before(self):
        self.assertEqual(self.printed(0), PLAIN)

    def test_each_mutant_changes_what_it_says_and_nothing_else(self):
        for mutant in self.mutants:
            changed = next(lines for (words, became), lines in EXPECTED.items()
                           if words in self.line_of(mutant) and became == mutant.became)
            with self.subTest(line=self.line_of(mutant), became=mutant.became):
                if changed is None:
                    self.assertRaises(subprocess.TimeoutExpired, self.printed, mutant.number, 1)
                else:
                    self.assertEqual(self.printed(mutant.number), [changed.get(i, line) for i, line in enumerate(PLAIN)])

    def test_rewriting_adds_no_line(self):
        self.assertEqual(places.rewritten(self.text, self.mutants).count("\n"), self.text.count("\n"))

    def test_other_literals_have_the_type_and_the_length_of_the_first(self):
        for text, other in [("7", "8"), ("10'000", "10001"), ("3U", "4U"), ("0x1F", "(0x1F + 1)"), ("0.5", "(0.5 + 1)"),
                            ("true", "false"), ('"ab"', '"qb"'), ('"quiet"', '"wuiet"'), ('"%d of"', '"%d qf"'),
                            ('"\\n"', '"~"'), ('""', '"~"'), ("name", None)]:
            self.assertEqual(places.other_literal(text), other, text)

    def test_the_compilers_errors_name_the_mutants_to_take_out(self):
        first, second = self.mutants[1], self.mutants[-1]
        output = f"{trial.COPY}/tests/mutation/Sample.cpp:{second.line}:3: error: no match\n" \
                 f"x.h:1:2: error: the value of 'mutant_{first.number}' is not usable in a constant expression\n"
        blamed = trial.Copy.blamed(output, self.mutants)
        self.assertIn(first, blamed)
        self.assertIn(second, blamed)
        self.assertNotIn(self.mutants[0], blamed)

    def program_that(self, lines):
        """A test program of one test of half a second, which does this instead."""
        path = os.path.join(self.folder.name, "program")
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\n{lines}\n")
        os.chmod(path, 0o755)
        program = trial.Program(path, ["sample"], {})
        program.tests = [trial.Test(1, 0.5, "a test")]
        return program

    def notices(self, lines):
        program = self.program_that(lines)
        begin = time.monotonic()
        words = program.notices(self.mutants[0], program.tests)
        return words, time.monotonic() - begin

    @mock.patch.object(trial, "LIMIT_SECONDS", 1)
    def test_a_mutant_that_hangs_is_noticed_by_the_time_limit_and_leaves_nothing_behind(self):
        left = os.path.join(self.folder.name, "left")
        words, seconds = self.notices(f"trap '' TERM; (sleep 60; touch '{left}') & echo $! >'{left}.id'; sleep 60")
        self.assertEqual(words, "program: time limit")
        self.assertGreaterEqual(seconds, 2.5)  # a second and three times half a one
        self.assertLess(seconds, 20)
        with open(left + ".id", encoding="ascii") as file:
            process = int(file.read())
        end = time.monotonic() + 10  # a kill takes effect when the process is next to run
        while is_alive(process) and time.monotonic() < end:
            time.sleep(0.05)
        self.assertFalse(is_alive(process))

    def test_a_mutant_is_given_three_times_as_long_and_ten_seconds(self):
        self.assertEqual((trial.LIMIT_TIMES, trial.LIMIT_SECONDS), (3, 10))
        self.assertIsNone(self.notices("sleep 2; exit 0")[0])

    def test_a_failure_and_a_signal_are_told_with_the_test(self):
        self.assertEqual(self.notices("echo 'TEST CASE:  a test'; exit 1")[0], 'program: "a test"')
        self.assertEqual(self.notices("kill -SEGV $$")[0], "program: signal 11")


def is_alive(process):
    try:
        with open(f"/proc/{process}/stat", encoding="ascii", errors="replace") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


if __name__ == "__main__":
    unittest.main()
