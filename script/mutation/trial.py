"""A copy of the sources with all mutants of a room in it, its build, and its test programs."""
import concurrent.futures
import fcntl
import json
import multiprocessing
import os
import re
import signal
import subprocess
import tempfile
import time

from mutation import places

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
COPY = os.path.join(ROOT, "build/mutate")
BUILD = os.path.join(COPY, "build/debug")
ROWS = 4000  # tests of one program
# A mutant hangs when its tests take more than so many times what they take without it, and so many seconds.
LIMIT_TIMES = 3
LIMIT_SECONDS = 10
HEADER = 4096
CODE = (".cpp", ".h")


def say(text):
    print(text, flush=True)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write_if_other(path, data):
    """Leaves a file alone that is so already: what depends on it need not be built again."""
    if os.path.isfile(path) and read(path) == data:
        return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


class Copy:
    """The copy below build/ and what is changed in it; one process has it at a time."""

    def __init__(self, room):
        os.makedirs(COPY, exist_ok=True)
        self.lock = os.open(COPY + ".lock", os.O_RDWR | os.O_CREAT | os.O_CLOEXEC)
        fcntl.flock(self.lock, fcntl.LOCK_EX)
        self.room = room
        self.refused_path = os.path.join(ROOT, "build", f"mutate-{room}-refused.json")
        listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True)
        self.files = [path for path in listed.stdout.splitlines() if os.path.isfile(os.path.join(ROOT, path))]
        self.mutants = []

    def is_room(self, path):
        return path.startswith(self.room + "/") and path.endswith(CODE)

    def fill(self):
        """Brings everything but the room's own sources up to date, and takes away what is gone."""
        for path in self.files:
            if self.is_room(path) and os.path.exists(os.path.join(COPY, path)):
                continue
            data = read(os.path.join(ROOT, path))
            if path.endswith(".cpp") and b"#define DOCTEST_CONFIG_IMPLEMENT" in data:
                data = self.with_listener(data)
            write_if_other(os.path.join(COPY, path), data)
            os.chmod(os.path.join(COPY, path), os.stat(os.path.join(ROOT, path)).st_mode)
        known = set(self.files)
        for folder, folders, names in os.walk(COPY):
            folders[:] = [name for name in folders if os.path.join(folder, name) != os.path.join(COPY, "build")]
            for name in names:
                if os.path.relpath(os.path.join(folder, name), COPY) not in known:
                    os.remove(os.path.join(folder, name))
        run(["cmake", "--preset", "debug", "-DCMAKE_CXX_FLAGS=-w", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"], COPY)

    @staticmethod
    def with_listener(data):
        include = f'#include "{HERE}/Mutant.h"\n'.encode()
        return data + b"\n" + include + read(os.path.join(HERE, "Listener.cpp"))

    def find(self):
        """Every place of the room, with the parser's arguments from the build's own commands."""
        sources = [path for path in self.files if self.is_room(path) and path.endswith(".cpp")]
        with open(os.path.join(BUILD, "compile_commands.json"), encoding="utf-8") as file:
            commands = {os.path.relpath(entry["file"], COPY): entry["command"] for entry in json.load(file)}
        found = {}
        with concurrent.futures.ProcessPoolExecutor(os.cpu_count(), mp_context=multiprocessing.get_context("spawn")) as pool:
            def look(paths, command):
                tasks = [(path, arguments_of(command(path))) for path in paths]
                for by_path, errors in pool.map(find_in, tasks, [self.room] * len(tasks)):
                    for error in errors:
                        say(f"mutate: the parser's words: {error}")
                    for path, mutants in by_path.items():
                        found.setdefault(path, {}).update({mutant.key: mutant for mutant in mutants})

            sources = [path for path in sources if path in commands]
            look(sources, commands.get)
            # Headers that no source of the room includes are read by themselves.
            look([path for path in self.files if self.is_room(path) and path.endswith(".h") and os.path.join(ROOT, path) not in found],
                 lambda path: commands[sources[0]])
        self.mutants = [mutant for path in sorted(found) for mutant in sorted(found[path].values(), key=lambda m: (m.start, -m.end, m.became))]
        for number, mutant in enumerate(self.mutants, 1):
            mutant.number = number

    def build(self, programs):
        """Builds with every mutant in, without those that the compiler refuses; returns how many those are."""
        refused = self.known_refusals()
        while True:
            taken = [mutant for mutant in self.mutants if mutant.key not in refused]
            self.write(taken)
            done = subprocess.run(["cmake", "--build", BUILD, "--target", *programs, "--", "-k", "0"],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
            if done.returncode == 0:
                break
            blamed = self.blamed(done.stdout, taken)
            if not blamed:
                raise SystemExit(f"mutate: the copy does not build:\n{errors_of(done.stdout)}")
            say(f"mutate: {len(blamed)} mutants do not compile and are taken out")
            refused.update(mutant.key for mutant in blamed)
            self.keep_refusals(refused)
        count = len(self.mutants) - len(taken)
        self.mutants = taken
        return count

    def write(self, taken):
        by_path = {}
        for mutant in taken:
            by_path.setdefault(mutant.path, []).append(mutant)
        for path in self.files:
            if not self.is_room(path):
                continue
            text = read(os.path.join(ROOT, path)).decode()
            mutants = by_path.get(os.path.join(ROOT, path))
            if mutants:
                text = f'#include "{HERE}/Mutant.h"\n#line 1\n' + places.rewritten(text, mutants)
            write_if_other(os.path.join(COPY, path), text.encode())

    @staticmethod
    def blamed(output, taken):
        """The mutants on the lines that the compiler's errors and their notes name, or named by an error themselves."""
        lines, named, error = set(), set(), False
        for line in output.splitlines():
            match = re.match(r"([^:\s]+):(\d+):(?:\d+:)?\s+(?:fatal )?(error|note|warning|required from)", line)
            if match and match.group(3) != "note":
                error = match.group(3) != "warning"
            if match and error:
                path = os.path.normpath(os.path.join(BUILD, match.group(1)))
                lines.add((os.path.relpath(path, COPY), int(match.group(2))))
            if error:
                named.update(int(number) for number in re.findall(r"\bmutant_(\d+)", line))
        return [mutant for mutant in taken if mutant.number in named or any(
            (os.path.relpath(mutant.path, ROOT), line) in lines for line in lines_of(mutant))]

    def known_refusals(self):
        """What was refused before, of files that have not changed since."""
        try:
            with open(self.refused_path, encoding="utf-8") as file:
                kept = json.load(file)
        except (OSError, ValueError):
            return set()
        return {key for path, (text, keys) in kept.items() for key in keys
                if os.path.isfile(path) and text == read(path).decode()}

    def keep_refusals(self, refused):
        kept = {}
        for key in sorted(refused):
            path = key.split(":")[0]
            kept.setdefault(path, (read(path).decode(), []))[1].append(key)
        with open(self.refused_path, "w", encoding="utf-8") as file:
            json.dump(kept, file)


def errors_of(output):
    found = [line for line in output.splitlines() if re.search(r"error|undefined", line)]
    return "\n".join(found[:40]) or output[-4000:]


def lines_of(mutant):
    """The lines that a mutant's edits change."""
    before = read(mutant.path)
    offsets = {edit.end if edit.where == "after" else edit.start for edit in mutant.edits}
    return {before.count(b"\n", 0, offset) + 1 for offset in offsets} | {mutant.line}


def arguments_of(command):
    """What the parser needs of a compiler's command: language, definitions and folders, those of the sources themselves."""
    taken, words = ["-xc++"], command.split()
    for place, word in enumerate(words):
        if word.startswith("-D") or word.startswith("-std="):
            taken.append(word.replace("\\", ""))
        elif word == f"-I{COPY}":
            taken.append(f"-I{ROOT}")
        elif word.startswith("-I"):
            taken.append(word)
        elif word == "-isystem":
            taken += [word, words[place + 1]]
    return taken


def find_in(task, room):
    path, arguments = task
    return places.mutants_of(os.path.join(ROOT, path), arguments,
                             lambda found: os.path.relpath(found, ROOT).startswith(room + "/") and found.endswith(CODE))


def run(command, folder):
    done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        raise SystemExit(f"mutate: {' '.join(command)}:\n{done.stdout[-4000:]}")


class Test:
    """A test case of a program: its row in the record of what was reached, its name, how long it takes."""

    def __init__(self, row, seconds, name):
        self.row, self.seconds = row, seconds
        # What doctest's filters would take for something else stands as "any one character".
        self.pattern = re.sub(r'[,*"\\]', "?", name)
        self.reaches = set()


class Program:
    """A test program of the copy, limited to the room's tests."""

    def __init__(self, path, folders, described):
        self.path = path
        self.name = os.path.basename(path)
        self.filters = ["-sf=" + ",".join(f"*tests/{folder}/*" for folder in folders), "-nc=true", "--no-intro=true", "--no-version=true"]
        self.environment = dict(variable.split("=", 1) for variable in described.get("ENVIRONMENT", []))
        self.folder = described.get("WORKING_DIRECTORY", os.path.dirname(path))
        self.serial = described.get("RUN_SERIAL", False)
        self.tests, self.broken, self.outside = [], [], set()

    def start(self, options, variables, limit):
        """Runs to the end or the limit (seconds); returns the exit status, None after the limit, and what was printed."""
        environment = {**os.environ, **self.environment, **variables}
        with tempfile.TemporaryFile() as output:
            with subprocess.Popen([self.path, *self.filters, *options], cwd=self.folder, env=environment, stdin=subprocess.DEVNULL,
                                  stdout=output, stderr=subprocess.STDOUT, start_new_session=True) as process:
                try:
                    status = process.wait(limit)
                except subprocess.TimeoutExpired:
                    status = None
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
            output.seek(0)
            return status, output.read().decode(errors="replace")

    def record(self, width):
        """Runs every test once, without a mutant, and notes which mutants each reaches."""
        with tempfile.TemporaryDirectory() as folder:
            reached, tests = os.path.join(folder, "reached"), os.path.join(folder, "tests")
            os.chmod(folder, 0o755)
            with open(reached, "wb") as file:
                file.write((0).to_bytes(4, "little") + width.to_bytes(4, "little"))
                file.truncate(HEADER + ROWS * width)
            os.chmod(reached, 0o666)
            self.start([], {"BREVANE_MUTANT_REACHED": reached, "BREVANE_MUTANT_TESTS": tests}, 1800)
            lines = read(tests).decode(errors="replace").splitlines() if os.path.exists(tests) else []
            with open(reached, "rb") as file:
                self.outside = marked(file, 0, width)
                for line in lines:
                    row, failed, seconds, _, name = line.split("\t", 4)
                    test = Test(int(row), float(seconds), name)
                    test.reaches = marked(file, test.row, width)
                    (self.broken if failed == "1" else self.tests).append(test)

    def choices(self, mutant):
        """The lists of tests to run for a mutant, one after the other: those that reach it, in steps from fast to slow."""
        everywhere = mutant.number in self.outside
        reaching = [test for test in self.tests if everywhere or mutant.number in test.reaches]
        steps = [(0, 0.1), (0.1, 1), (1, 10), (10, float("inf"))]
        lists = [[test for test in reaching if least <= test.seconds < most] for least, most in steps]
        return [tests for tests in lists if tests]

    def notices(self, mutant, tests):
        """The words for how the tests notice a mutant; None when they do not."""
        options = ["--abort-after=1"]
        patterns = ",".join(test.pattern for test in tests)
        if len(patterns) < 100_000:
            options.append("-tc=" + patterns)
        if self.broken:
            options.append("-tce=" + ",".join(test.pattern for test in self.broken))
        limit = LIMIT_SECONDS + LIMIT_TIMES * sum(test.seconds for test in tests)
        status, output = self.start(options, {"BREVANE_MUTANT": str(mutant.number)}, limit)
        if status == 0:
            return None
        names = re.findall(r"^TEST CASE:\s+(.*)$", output, re.M)
        how = "time limit" if status is None else f"signal {-status}" if status < 0 else ""
        return f"{self.name}: " + " ".join(filter(None, [how, f'"{names[-1].strip()}"' if names else ""]))


def marked(file, row, width):
    file.seek(HEADER + row * width)
    return {number for number, byte in enumerate(file.read(width)) if byte}


def programs_of(folders, named):
    """The doctest programs of the tests with a folder's label, or of these names, with what CTest knows of each."""
    listed = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, capture_output=True, text=True, check=True)
    described = {}
    for test in json.loads(listed.stdout)["tests"]:
        path = test.get("command", [""])[0]
        properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        rooms = {folder.split("/")[0] for folder in folders}
        wanted = os.path.basename(path) in named or not rooms.isdisjoint(properties.get("LABELS", []))
        if wanted and path.startswith(BUILD + "/"):
            described.setdefault(path, properties)
    return [Program(path, folders, properties) for path, properties in described.items()]


def targets(folders, named):
    """What to build: the folders' own targets, or the programs of these names."""
    listed = subprocess.run(["ninja", "-C", BUILD, "-t", "targets", "all"], capture_output=True, text=True, check=True).stdout
    known = set(re.findall(r"^([\w.-]+): phony$", listed, re.M))
    rooms = sorted({f"room_{folder.split('/')[0]}" for folder in folders} & known)
    return rooms or [name for name in named if name in known]


def timed(begin):
    return f"{time.monotonic() - begin:.0f} s"
