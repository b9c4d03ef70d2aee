"""A desktop that a program can be clicked and typed into: a display, a session bus and the accessibility bus.

Controls are found by what assistive tools see (role and name), clicked where they really are on the screen, and typed into with
real key events.
"""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

DEADLINE = 40  # seconds that anything may take to appear, also on a busy machine


class Failure(Exception):
    pass


def wait_for(what, probe, seconds=DEADLINE):
    """The first true answer of the probe."""
    end = time.monotonic() + seconds
    while True:
        answer = probe()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Failure(f"waited {seconds} s in vain for {what}")
        time.sleep(0.05)


def end_with_parent():
    """For preexec_fn: the child goes when this process does, however that ends."""
    import ctypes
    ctypes.CDLL(None).prctl(1, signal.SIGTERM)


class Desktop:
    """Starts on the display at hand, or on a virtual one; everything ends with `close`."""

    def __init__(self, virtual=True, size="1280x1024x24"):
        self.folder = tempfile.mkdtemp(prefix="brevane-desktop-")
        self.children = []
        self.environment = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb",
                                XDG_RUNTIME_DIR=self.folder, XDG_CACHE_HOME=self.folder, NO_AT_BRIDGE="0")
        for name in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
            self.environment.pop(name, None)
        os.chmod(self.folder, 0o700)
        try:
            if virtual:
                self._start_display(size)
            self._start_session_bus()
        except BaseException:
            self.close()
            raise

    def _start_display(self, size):
        read, write = os.pipe()
        self.children.append(subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", size, "-nolisten", "tcp"], pass_fds=[write],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, preexec_fn=end_with_parent))
        os.close(write)
        with os.fdopen(read) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise Failure("Xvfb did not start")
        self.environment["DISPLAY"] = f":{number}"
        self.environment.pop("XAUTHORITY", None)
        self.children.append(subprocess.Popen(["openbox"], env=self.environment, stdout=subprocess.DEVNULL,
                                              stderr=subprocess.DEVNULL, preexec_fn=end_with_parent))
        # A window that is shown before may stay off the screen, or never hear of the manager's keys.
        wait_for("the window manager", self._is_managed)

    def _is_managed(self):
        asked = subprocess.run(["xdotool", "get_num_desktops"], env=self.environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, check=False)
        return asked.returncode == 0

    def _start_session_bus(self):
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"], env=self.environment,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                               preexec_fn=end_with_parent)
        self.children.append(bus)
        address = bus.stdout.readline().strip()
        if not address:
            raise Failure("no session bus")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        os.environ.update({name: self.environment[name] for name in
                           ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME")})
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        self.atspi = Atspi
        Atspi.init()
        # A program that is busy, as while it waits for the authority's answer, is passed over.
        Atspi.set_timeout(300, 3000)

    def close(self):
        for child in reversed(self.children):
            child.terminate()
        for child in reversed(self.children):
            try:
                child.wait(5)
            except subprocess.TimeoutExpired:
                child.kill()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()

    # What is on the screen

    def nodes(self):
        """Every accessible object that is on the screen, depth first."""
        desktop = self.atspi.get_desktop(0)
        waiting = [desktop]
        while waiting:
            node = waiting.pop()
            try:
                children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
                if node is not desktop:
                    yield Node(self, node)
            except Exception:  # it went away meanwhile
                continue
            waiting.extend(child for child in reversed(children) if child is not None)

    def matching(self, role, name=None, within=None):
        found = []
        for node in (within.nodes() if within else self.nodes()):
            if node.role == role and (name is None or node.is_called(name)) and node.showing:
                found.append(node)
        return found

    def find(self, role, name=None, within=None, seconds=DEADLINE):
        """The first object with the role whose whole name matches the expression."""
        return wait_for(f"{role} {name or ''}", lambda: self.matching(role, name, within), seconds)[0]

    def is_shown(self, role, name=None):
        return bool(self.matching(role, name))

    def wait_gone(self, role, name=None, seconds=DEADLINE):
        wait_for(f"{role} {name or ''} to go", lambda: not self.matching(role, name), seconds)

    def dialog(self, message, seconds=DEADLINE):
        """The alert that shows this message text."""
        def shown():
            for role in ("alert", "dialog"):
                for node in self.matching(role):
                    if message in node.texts():
                        return node
            return None
        return wait_for(f"the alert {message!r}", shown, seconds)

    # What a person does

    def xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)

    def key(self, *keys):
        self.xdotool("key", "--delay", "30", *keys)

    def type(self, text):
        self.xdotool("type", "--delay", "30", text)

    def screenshot(self, path):
        subprocess.run(["import", "-window", "root", path], env=self.environment, check=True)


class Node:
    """One accessible object."""

    def __init__(self, desktop, accessible):
        self.desktop = desktop
        self.accessible = accessible
        self.role = accessible.get_role_name()
        self.name = accessible.get_name() or ""

    def is_called(self, name):
        """Whether the whole name matches the expression; a pop-up is named by its value and described by its name."""
        if re.fullmatch(name, self.name):
            return True
        return self.role == "combo box" and re.fullmatch(name, self.accessible.get_description() or "") is not None

    def _has(self, state):
        try:
            return self.accessible.get_state_set().contains(getattr(self.desktop.atspi.StateType, state))
        except Exception:
            return False

    @property
    def showing(self):
        return self._has("SHOWING")

    @property
    def checked(self):
        return self._has("CHECKED")

    @property
    def enabled(self):
        return self._has("ENABLED")

    @property
    def focused(self):
        return self._has("FOCUSED")

    @property
    def text(self):
        """The content of a field."""
        count = self.accessible.get_character_count()
        return self.accessible.get_text(0, count)

    @property
    def extents(self):
        area = self.accessible.get_extents(self.desktop.atspi.CoordType.SCREEN)
        return area.x, area.y, area.width, area.height

    def nodes(self):
        waiting = [self.accessible]
        while waiting:
            node = waiting.pop()
            try:
                yield Node(self.desktop, node)
                waiting.extend(child for child in reversed([node.get_child_at_index(i)
                                                            for i in range(node.get_child_count())])
                               if child is not None)
            except Exception:
                continue

    def texts(self):
        """The texts and the buttons inside, in order."""
        return [node.name for node in self.nodes() if node.name and node.showing]

    def click(self):
        # A window that is about to grow moves its controls from under the pointer, so the place is asked for again.
        place = None
        end = time.monotonic() + DEADLINE
        while place != self.extents and time.monotonic() < end:
            place = self.extents
            x, y, width, height = place
            # The box of a check box is at its start; its middle may lie beyond the text.
            across = min(width // 2, 12) if self.role in ("check box", "radio button") else width // 2
            self.desktop.xdotool("mousemove", "--sync", x + across, y + height // 2)
        self.desktop.xdotool("click", 1)

    def button(self, name):
        return self.desktop.find("push button", name, within=self)


def main_program(build):
    return os.path.join(build, "shell", "brevane")


if __name__ == "__main__":
    sys.exit("desktop.py is used by the demonstration and by the end-to-end tests")
