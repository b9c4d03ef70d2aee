"""What the stories that run inside a booted system have in common. They run as root."""
import os
import plistlib
import subprocess
import time

from wire import Client, ask

# Borg asks whoever has not seen a repository before.
os.environ.update(HOME="/root", BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK="yes")
HERE = os.path.dirname(os.path.abspath(__file__))
HELPER = "com.zerkolin.brevane.scheduler.service"
BACKUP = "com.zerkolin.brevane.backup.service"
PRODUCT = "/opt/brevane/Library/Brevane"
TOOL = PRODUCT + "/com.zerkolin.brevane.scheduler"
STATE = "/opt/brevane/var/db/brevane/state.plist"


def run(*command, fails=True):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    assert fails or done.returncode == 0, (command, done)
    return done.stdout.strip()


def wait_for(condition, what, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "waited in vain for " + what
        time.sleep(0.05)


def unarchived(objects, value):
    if isinstance(value, plistlib.UID):
        value = objects[value.data]
    if isinstance(value, list):
        return [unarchived(objects, each) for each in value]
    if not isinstance(value, dict):
        return value
    if "NS.keys" in value:
        return dict(zip(unarchived(objects, value["NS.keys"]), unarchived(objects, value["NS.objects"])))
    return {key: unarchived(objects, each) for key, each in value.items() if key != "$class"}


def error_of(number):
    """(domain, code, what it or the error below it says) of the reply to a message without a payload; None for a success."""
    client = Client(timeout=240)
    try:
        reply = client.ask([("message", number), ("auth", client.token())])
    finally:
        client.close()
    if "error" not in reply:
        return None
    archive = plistlib.loads(reply["error"])
    error = unarchived(archive["$objects"], archive["$top"]["root"])
    more = error.get("NSUserInfo", {})
    below = more.get("NSUnderlyingError", {}).get("NSUserInfo", more)
    return error["NSDomain"], error["NSCode"], below.get("NSLocalizedDescription", "")


def state():
    try:
        return ask(5)["State"]
    except (OSError, ConnectionError, AssertionError):
        return "nothing"  # it is just being started again


def is_active(unit):
    return run("systemctl", "is-active", unit) in ("active", "activating")


def helper_process():
    return run("systemctl", "show", "--property=MainPID", "--value", HELPER)


def events():
    """Of the journal, oldest first."""
    told = []
    for entry in reversed(ask(5)["Journal"]):
        told.append(entry["Event"] + {True: " success", False: " failure", None: ""}[entry.get("Succeeded")])
    return told


def lines(subsystem):
    run("journalctl", "--sync")
    return run("journalctl", "--boot", "--output=cat", "SUBSYSTEM=" + subsystem).splitlines()


def start_long_backup():
    ask(12, {"Program": "service", "Fields": {"Unit": "long-backup.service"}})
    ask(3)
    wait_for(lambda: is_active(BACKUP) and is_active("long-backup.service"), "the long backup")
    assert state() == "running"


def choose_borg(folder, repository):
    os.makedirs(folder, exist_ok=True)
    with open(folder + "/file", "wb") as file:
        file.write(os.urandom(1 << 20))
    ask(12, {"Program": "borg", "Fields": {"Folders": [folder], "Repository": repository}})
