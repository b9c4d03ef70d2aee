"""Makes a CTest test of every doctest case of a program, each under its room's name and its own sentence.

    discover_tests.py PROGRAM PART...

A part (a JSON file that BrevaneTests.cmake writes) names the room, its sources, what its tests have in common, and the
file in which CTest looks for them. The program linked last is the one that CTest runs.
"""
import json
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree


def bracket(text):
    return f"[==[{text}]==]"


def cases_of(program):
    run = subprocess.run([program, "--list-test-cases", "--reporters=xml"], capture_output=True, text=True, check=True)
    return [(case.get("filename"), case.get("name")) for case in ElementTree.fromstring(run.stdout).iter("TestCase")]


def filter_of(text):
    """doctest separates filters by commas."""
    return text.replace("\\", "\\\\").replace(",", "\\,")


def is_of(part, source):
    """A compiler cache may name a source by its way from the build folder."""
    return re.sub(r"^(\.\./)+", "", source) in part["sources"]


def filters(cases):
    """Those that choose the cases, by sentence where there is only one: wildcards in it do no harm in its own file."""
    chosen = ["--source-file=" + ",".join(sorted({filter_of(source) for source, _ in cases}))]
    return chosen + (["--test-case=" + filter_of(cases[0][1])] if len(cases) == 1 else [])


def runs_of(part, cases):
    """Sentence, environment and cases of each test."""
    if part["whole"]:
        return [(sentence, environment.replace("|", ";"), cases) for sentence, environment in part["whole"]]
    return [(case[1], part["environment"], [case]) for case in cases]


def lines_of(part, program, cases):
    for sentence, environment, chosen in runs_of(part, cases):
        name = bracket(f"{part['room']}: {sentence}")
        properties = dict(part["properties"], ENVIRONMENT=environment)
        words = " ".join(f"{key} {bracket(value)}" for key, value in properties.items() if value)
        yield f"add_test({name} {' '.join(map(bracket, [program] + filters(chosen)))})"
        yield f"set_tests_properties({name} PROPERTIES {words})"


def main():
    program = sys.argv[1]
    cases = cases_of(program)
    parts = []
    for path in sys.argv[2:]:
        with open(path, encoding="utf-8") as file:
            parts.append(json.load(file))

    seen = set()
    for part in parts:
        own = [case for case in cases if is_of(part, case[0])]
        for _, sentence in own:
            if (part["room"], sentence) in seen:
                sys.exit(f"{part['room']}: two cases say \"{sentence}\"")
            seen.add((part["room"], sentence))
        with open(part["tests"], "w", encoding="utf-8") as file:
            file.write("\n".join(lines_of(part, program, own)) + "\n")
    if len(seen) != len(cases):
        lost = [case for case in cases if not any(is_of(part, case[0]) for part in parts)]
        sys.exit(f"No room has the cases of {sorted({source for source, _ in lost})}")


if __name__ == "__main__":
    main()
