"""`brevane --self-check` off screen: BREVANE RESOURCES."""
import glob
import os
import re
import subprocess
import sys
import tempfile
import unittest

RESOURCES = sys.argv.pop()
BREVANE = sys.argv.pop()


def check(*arguments, **environment):
    with tempfile.TemporaryDirectory() as home:
        inherited = dict(os.environ, QT_QPA_PLATFORM="offscreen", HOME=home, LANG="en_US.UTF-8")
        inherited.update(environment)
        return subprocess.run([BREVANE, "--self-check", *arguments], capture_output=True, text=True, timeout=280,
                              env=inherited)


class SelfCheck(unittest.TestCase):
    def test_everything_succeeds_in_every_language(self):
        run = check()
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        lines = run.stdout.splitlines()
        self.assertEqual(lines.pop(), "All checks succeeded.")
        languages = {os.path.basename(path).removesuffix(".lproj") for path in glob.glob(f"{RESOURCES}/*.lproj")}
        subjects = {language: [] for language in languages}
        for line in lines:
            match = re.fullmatch(r"(\S+) +(.{40}) ok +(.*)", line)
            self.assertTrue(match, line)
            subjects[match[1]].append(match[2].strip())
        for language in languages:
            self.assertEqual(subjects[language], subjects["en"])
        self.assertEqual(len(set(subjects["en"])), 21)
        applied = {line.split(" ok ")[1].strip() for line in lines if " texts " in line}
        self.assertEqual(len(applied), len(languages), "each language has words of its own: " + str(applied))

    def test_the_first_fault_ends_it_with_1(self):
        run = check("en", TMPDIR="/nowhere")
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stdout.splitlines()[-1], r"^en +files and tags +FAULT no temporary folder: /nowhere/")
        run = check(TMPDIR="/nowhere")
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stdout.splitlines()[-1], "A check failed.")
        self.assertEqual(run.stdout.count("FAULT"), 1)


if __name__ == "__main__":
    unittest.main()
