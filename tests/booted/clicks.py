"""What an ordinary user does in the application's window, on a display of its own. Played inside, as that user.

    clicks.py look PICTURES
    clicks.py apply PICTURES PASSWORD MINUTES MESSAGE

PICTURES is a folder for photographs of the display.
"""
import configparser
import contextlib
import os
import shlex
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE + "/sandbox")

from desktop import Desktop, wait_for  # noqa: E402
from user import start_agent  # noqa: E402

COLOURS = 50  # of a display that shows something
ENTRY = "/usr/share/applications/com.zerkolin.brevane.application.desktop"


def command_of_entry():
    entry = configparser.ConfigParser(interpolation=None, strict=False)
    entry.read(ENTRY, encoding="utf-8")
    return [word for word in shlex.split(entry["Desktop Entry"]["Exec"]) if not word.startswith("%")]


@contextlib.contextmanager
def application(desktop):
    program = subprocess.Popen(command_of_entry(), env=desktop.environment)
    try:
        desktop.find("frame", "Brevane")
        yield program
    finally:
        program.terminate()
        program.wait(10)


def photograph(desktop, folder, name):
    os.makedirs(folder, exist_ok=True)
    path = f"{folder}/{name}.png"

    def is_painted():
        time.sleep(1)
        desktop.screenshot(path)
        return int(subprocess.run(["identify", "-format", "%k", path], capture_output=True, text=True, check=True).stdout) > COLOURS
    wait_for("a painted window", is_painted)


def say_whose_session():
    told = subprocess.run(["loginctl", "show-session", os.environ["XDG_SESSION_ID"], "--property=Name", "--value"],
                          capture_output=True, text=True, check=True)
    print("session of " + told.stdout.strip())


def look(folder):
    say_whose_session()
    with Desktop() as desktop, application(desktop):
        desktop.find("push button", "Apply")
        photograph(desktop, folder, "window")


def enter_minutes(desktop, minutes):
    field = desktop.find("text", "Interval")
    field.click()
    desktop.key("ctrl+a")
    desktop.type(minutes)
    wait_for("the number", lambda: field.text == minutes)


def apply(folder, password, minutes, message):
    with Desktop() as desktop, application(desktop) as program:
        agent, said = start_agent(password, program.pid)
        enter_minutes(desktop, minutes)
        desktop.find("push button", "Apply").click()
        alert = desktop.dialog(message)
        photograph(desktop, folder, "refused" if message.startswith("Failed") else "applied")
        assert said, "nobody asked for a password"
        alert.button("OK").click()
        desktop.wait_gone("dialog", "Brevane", 5)
        os.kill(agent, 15)


if __name__ == "__main__":
    {"look": look, "apply": apply}[sys.argv[1]](*sys.argv[2:])
