"""The machine in a folder: a root, a private bus in place of the system's, the scheduler helper and the authority.

Nothing outside the root is written to, except a folder for the bus's socket where the root's path is too long for one.
"""
import contextlib
import os
import plistlib
import select
import shutil
import signal
import subprocess
import tempfile
import time
from urllib.parse import quote
from xml.sax.saxutils import escape

from desktop import end_with_parent

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SERVICE = "com.zerkolin.brevane.scheduler"
PRODUCT = "Library/Brevane"
TOOL = PRODUCT + "/" + SERVICE
APPLICATION = "brevane"
POST_UPDATE = "com.zerkolin.brevane.post-update"
SETTINGS = "Library/Preferences/" + SERVICE + ".plist"
PROGRAM = "Library/Preferences/com.zerkolin.brevane.program.plist"
DEFAULTS = "home/Library/Preferences/com.zerkolin.brevane.application.plist"
UPDATES = "feed/configuration.plist"
SUPPLIES = "sys/class/power_supply"
PLUG = SUPPLIES + "/AC/online"
BORG = "/usr/bin/borg"
LOCK = "var/run/backupd.lock"
RULES = "etc/polkit-1/rules.d"
MARKER = ".brevane-sandbox"
POLICY = os.path.join(SOURCE, "resources", "linux", "com.zerkolin.brevane.policy")
LONGEST_SOCKET_PATH = 107  # bytes
START_LIMIT = 20  # seconds

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>{address}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="false"/>
    <allow send_type="signal"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""


class SandboxError(Exception):
    """Why the sandbox cannot be used, in a sentence for a person."""


class Sandbox:
    """`close` ends every program in it; so does the end of this process."""

    def __init__(self, root, build, fresh=False):
        self.root = os.path.abspath(root)
        self.build = os.path.abspath(build)
        self.bus = self.helper = self.authority = self.other_backup = None
        self._socket_folder = None
        self._lay_out(fresh)
        self.socket = self._socket_path()
        self.address = "unix:path=" + quote(self.socket, safe="/-_.*")
        self.variables = self._variables()
        self.environment = {**os.environ, **self.variables}

    def path(self, name):
        return os.path.join(self.root, name)

    # The root

    def _lay_out(self, fresh):
        marker = self.path(MARKER)
        if os.path.isdir(self.root) and os.listdir(self.root) and not os.path.exists(marker):
            raise SandboxError(f"{self.root} is not empty and was not made by the sandbox: nothing is touched there. "
                               "Name another folder in BREVANE_ROOT.")
        if fresh and os.path.exists(marker):
            self._empty()
        os.makedirs(self.root, exist_ok=True)
        with open(marker, "w", encoding="ascii") as file:
            file.write("Made by script/run, which may empty this folder.\n")
        self._install()
        for name in ("home", "run", "run/user", RULES):
            os.makedirs(self.path(name), exist_ok=True)
        for name in ("run", "run/user"):
            os.chmod(self.path(name), 0o700)

    def _empty(self):
        for name in os.listdir(self.root):
            path = self.path(name)
            if name == MARKER:
                continue
            if os.path.isdir(path) and not os.path.islink(path):
                shutil.rmtree(path)
            else:
                os.remove(path)

    def _install(self):
        """As on a real machine, but for the root. Over what is there: the build may be newer."""
        command = ["cmake", "--install", self.build, "--component", "brevane", "--prefix", self.root, "--strip"]
        done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
        if done.returncode != 0:
            raise SandboxError(f"The installation failed: {done.stderr.strip()}")

    def offer_update(self):
        """A feed with a newer version, which holds what is installed now under a higher number."""
        import feed
        with open(self.path(PRODUCT + "/" + feed.MANIFEST), "rb") as file:
            numbers = plistlib.load(file)["HumanVersion"].split(".")
        version = ".".join(numbers[:-1] + [str(int(numbers[-1]) + 1)])
        os.makedirs(self.path("feed"), exist_ok=True)
        key, package, address = (self.path("feed/" + name) for name in ("key.pem", "Brevane.pkg", "update.plist"))
        if not os.path.exists(key):
            feed.make_key(key)
        feed.make_package(key, self.root, version, version, package)
        feed.make_feed(package, version, version, address)
        feed.make_configuration(key, "file://" + quote(address), self.path(UPDATES))
        return version

    def choose_borg(self):
        """Backs up the home into a repository beside it, unless something else was chosen before."""
        if os.path.exists(BORG) and not os.path.exists(self.path(PROGRAM)):
            fields = {"Folders": [self.path("home")], "Repository": self.path("repository")}
            with open(self.path(PROGRAM), "wb") as file:
                plistlib.dump({"Program": "borg", "Fields": fields}, file)

    def defaults(self):
        """What the application remembers for its user."""
        try:
            with open(self.path(DEFAULTS), "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return {}

    def settle(self, **questions):
        """Whether the application's questions, by the keys of its user defaults, were answered before it is started."""
        os.makedirs(os.path.dirname(self.path(DEFAULTS)), exist_ok=True)
        defaults = {**self.defaults(), **questions}
        with open(self.path(DEFAULTS), "wb") as file:
            plistlib.dump({key: value for key, value in defaults.items() if value}, file)

    def set_power(self, is_plugged):
        """The machine is one with a battery; another one than this one perhaps."""
        supplies = {"AC/type": "Mains", "BAT0/type": "Battery", "BAT0/status": "Charging" if is_plugged else "Discharging",
                    "AC/online": "1" if is_plugged else "0"}
        for name, value in supplies.items():
            path = self.path(SUPPLIES + "/" + name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="ascii") as file:
                file.write(value + "\n")

    def _socket_path(self):
        path = self.path("run/bus")
        if len(os.fsencode(path)) > LONGEST_SOCKET_PATH:
            self._socket_folder = tempfile.mkdtemp(prefix="brevane-")
            path = os.path.join(self._socket_folder, "bus")
        return path

    def _variables(self):
        """What the environment of everything in the sandbox has besides the user's."""
        home = self.path("home")
        variables = {"HOME": home, "BREVANE_ROOT": self.root, "DBUS_SYSTEM_BUS_ADDRESS": self.address}
        for name, folder in (("CONFIG", ".config"), ("CACHE", ".cache"), ("DATA", ".local/share"),
                             ("STATE", ".local/state")):
            variables[f"XDG_{name}_HOME"] = os.path.join(home, folder)
        if "XDG_RUNTIME_DIR" not in os.environ:
            variables["XDG_RUNTIME_DIR"] = self.path("run/user")
        # The user's own display stays reachable although the home is another.
        authority = os.path.expanduser("~/.Xauthority")
        if "DISPLAY" in os.environ and "XAUTHORITY" not in os.environ and os.path.exists(authority):
            variables["XAUTHORITY"] = authority
        return variables

    # The programs

    def _start(self, arguments, environment=None, errors=None):
        return subprocess.Popen(arguments, env=environment or self.environment, stdin=subprocess.DEVNULL,
                                stderr=errors, preexec_fn=end_with_parent)

    def _wait_until(self, ready, program, what):
        end = time.monotonic() + START_LIMIT
        while not ready():
            if program.poll() is not None:
                raise SandboxError(f"{what} ended with status {program.returncode} while starting.")
            if time.monotonic() > end:
                raise SandboxError(f"{what} is not ready after {START_LIMIT} seconds.")
            time.sleep(0.02)

    def _owns_name(self, name, program):
        answer = subprocess.run(
            ["dbus-send", f"--bus={self.address}", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/",
             "org.freedesktop.DBus.GetConnectionUnixProcessID", f"string:{name}"],
            env=self.environment, capture_output=True, text=True, check=False)
        return answer.returncode == 0 and answer.stdout.split()[-1] == str(program.pid)

    def start_bus(self):
        configuration = self.path("run/bus.conf")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(BUS_CONFIGURATION.format(address=escape(self.address)))
        if os.path.exists(self.socket):
            os.remove(self.socket)
        with open(self.path("run/bus.log"), "wb") as log:
            self.bus = self._start(["dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--config-file",
                                    configuration], errors=log)
        self._wait_until(lambda: os.path.exists(self.socket), self.bus, f"The private bus (see {log.name})")

    def start_helper(self):
        environment = dict(self.environment)
        environment.pop("BREVANE_ROOT")  # it is told its root
        self.helper = self._start(self.helper_command(), environment)
        self._wait_until(lambda: self._owns_name(SERVICE, self.helper), self.helper, "The scheduler helper")

    def helper_command(self):
        command = [self.path(TOOL), "--root", self.root, "--rules", self.path(RULES)]
        if os.path.exists(self.path(UPDATES)):
            command += ["--updates", self.path(UPDATES)]
        return command

    def start_authority(self, environment=None):
        program = os.path.join(self.build, "sandbox", "brevane_sandbox_authority")
        self.authority = self._start([program, POLICY, self.path(RULES)], environment)
        self._wait_until(lambda: self._owns_name("org.freedesktop.PolicyKit1", self.authority), self.authority,
                         "The authority")

    def start_other_backup(self):
        """Something that backs up as far as others can tell."""
        self.other_backup = self._start(["flock", "--no-fork", self.path(LOCK), "sleep", "600"])

    def start_application(self, environment=None):
        return self._start([self.path(PRODUCT + "/bin/" + APPLICATION)], environment)

    def applications(self):
        """The processes of the application, and those of the tool that is about to start another version of it."""
        found = []
        for name in filter(str.isdigit, os.listdir("/proc")):
            with contextlib.suppress(OSError):  # another user's, or it has ended meanwhile
                program = os.readlink(f"/proc/{name}/exe").removesuffix(" (deleted)")
                if (program.startswith(os.path.realpath(self.root) + "/Library/")
                        and os.path.basename(program) in (APPLICATION, POST_UPDATE)):
                    found.append(int(name))
        return found

    def wait_for_applications(self):
        """After an update the new version goes on where the old one ended. One that is started while the processes are
        looked through, by one that ends meanwhile, is seen at the second look."""
        while running := self.applications() or self.applications():
            with contextlib.suppress(ProcessLookupError):
                process = os.pidfd_open(running[0])
                try:
                    select.select([process], [], [])
                finally:
                    os.close(process)

    def stored_settings(self):
        """What the helper has on disk; None when nothing was applied yet."""
        try:
            with open(self.path(SETTINGS), "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return None

    @staticmethod
    def end(program):
        """Ends a program politely, or else for certain."""
        if program is None or program.poll() is not None:
            return
        program.terminate()
        try:
            program.wait(5)
        except subprocess.TimeoutExpired:
            program.kill()
            program.wait()

    def _end_backup(self):
        """It outlives the helper on purpose, but not the sandbox."""
        with contextlib.suppress(OSError, KeyError, plistlib.InvalidFileException):
            with open(self.path("var/db/brevane/backup-run.plist"), "rb") as file:
                record = plistlib.load(file)
            program = os.readlink(f"/proc/{record['Process']}/exe").removesuffix(" (deleted)")
            if "Status" not in record and program.startswith(os.path.realpath(self.root) + "/Library/"):
                os.kill(record["Process"], signal.SIGTERM)

    def close(self):
        # However often somebody presses Control-C meanwhile.
        previous = signal.signal(signal.SIGINT, signal.SIG_IGN)
        for process in self.applications():
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGTERM)
        self._end_backup()
        for program in (self.other_backup, self.authority, self.helper, self.bus):
            self.end(program)
        if self._socket_folder:
            shutil.rmtree(self._socket_folder, ignore_errors=True)
        signal.signal(signal.SIGINT, previous)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()
