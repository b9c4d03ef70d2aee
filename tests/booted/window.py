"""The application in a session of an ordinary user, with polkit and a text agent. Runs inside, straight after
installed.py."""
import os
import plistlib
import shlex
import subprocess

from inside import HERE, PRODUCT, ask, run, state, wait_for
from installed import PASSWORD

PICTURES = HERE + "/pictures"
SHARED = "/home/anna/pictures"
MEMORY = HERE + "/settings"


def play(name, *arguments):
    """A scene of clicks.py, as the user who has logged in."""
    command = shlex.join(["/usr/bin/python3", "-B", HERE + "/clicks.py", name, SHARED, *arguments])
    done = subprocess.run(["su", "--login", "anna", "--command", command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=240, check=False)
    run("sh", "-c", f"mkdir -p {PICTURES} && mv {SHARED}/*.png {PICTURES}/ && rmdir {SHARED}")
    assert done.returncode == 0, (done.stdout, done.stderr)
    return done.stdout


def the_application_opens_from_the_menus_entry_in_a_users_session():
    wait_for(lambda: state() in ("waiting", "off"), "the backup before to end", 90)
    told = play("look")
    assert "session of anna" in told, told


def a_wrong_password_is_told_in_the_window_and_changes_nothing():
    before = ask(1)
    play("apply", "not the administrator's", "7", "Failed to apply settings.")
    assert ask(1) == before


def the_right_password_applies_what_the_window_shows():
    before = ask(1)
    play("apply", PASSWORD, "7", "Settings applied successfully.")
    after = ask(1)
    assert after == before | {"Interval": {"Minutes": 7}}, after
    with open("/var/lib/brevane/Preferences/com.zerkolin.brevane.scheduler.plist", "rb") as file:
        assert plistlib.load(file)["Interval"] == {"Minutes": 7}
    assert os.path.exists(PRODUCT)
    ask(2, before)


SCENES = (
    the_application_opens_from_the_menus_entry_in_a_users_session,
    a_wrong_password_is_told_in_the_window_and_changes_nothing,
    the_right_password_applies_what_the_window_shows,
)
