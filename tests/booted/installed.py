"""The main job on a system that has just got the package: what an ordinary user does with it. Runs inside; see boot.py."""
import glob
import hashlib
import os
import plistlib
import re

import trees
from inside import HELPER, HERE, PRODUCT, ask, choose_borg, events, is_active, lines, run, state, wait_for
from user import as_user

PASSWORD = "the administrator's"
INTERVAL = {"AllowBattery": True, "Backups": True, "BackupsMode": "Interval", "DontRunWhenNotNetworkWired": False,
            "DontRunWhenPassive": False, "DontRunWithSleepPreventers": False, "Interval": {"Minutes": 1}, "Snapshots": False,
            "Suspend": False, "SuspendSettings": {"StartHour": 9, "StartMinute": 0, "EndHour": 18, "EndMinute": 0}}
MOST_EXPOSED = 3.0
PACKAGES = sorted(glob.glob(HERE + "/*.deb"))  # the present version first


def install(package, *options):
    run("apt-get", "-q", "-y", "--no-install-recommends", "-o", "DPkg::Lock::Timeout=60", *options, "install", package, fails=False)


def installed_version():
    with open(PRODUCT + "/installation.plist", "rb") as file:
        return plistlib.load(file)["Version"]


def apt_installs_the_package_and_starts_the_helper():
    for user, groups in (("anna", []), ("admin", ["sudo"]), ("jo", ["systemd-journal"])):
        run("useradd", "--create-home", "--shell", "/bin/sh", *(["--groups", ",".join(groups)] if groups else []), user, fails=False)
    run("sh", "-c", f"echo \"admin:{PASSWORD}\" | chpasswd", fails=False)
    trees.remember()
    install(PACKAGES[0])
    assert is_active(HELPER)
    assert run("systemctl", "is-enabled", HELPER) == "enabled"
    assert os.readlink("/opt/brevane/var") == "/var/lib/brevane"
    assert run("dpkg-query", "--show", "--showformat", "${Conffiles}", "brevane") == ""
    assert run("brevane", "--version") == "Brevane " + installed_version()
    assert os.path.exists("/etc/xdg/autostart/com.zerkolin.brevane.agent.desktop")


def the_helper_runs_after_a_restart_of_the_system():
    return True


def it_was_started_with_the_system():
    wait_for(lambda: is_active(HELPER), "the helper")
    assert "Running version " + installed_version() + "." in lines("com.zerkolin.brevane")


def the_helper_is_confined():
    told = run("systemd-analyze", "security", "--no-pager", HELPER)
    exposure = float(re.search(r"Overall exposure level for .*: ([0-9.]+)", told).group(1))
    print(f"systemd-analyze security: {exposure}")
    assert exposure <= MOST_EXPOSED, told
    for option in ("Type=notify", "WatchdogUSec=1min", "ProtectSystem=strict"):
        assert run("systemctl", "show", "--property=" + option.split("=")[0], HELPER) == option


def a_message_of_an_ordinary_user_starts_the_helper():
    run("systemctl", "stop", HELPER)
    assert not is_active(HELPER)
    reply, = as_user("anna", "", [[1]])
    assert not reply["Error"] and plistlib.loads(reply["Payload"])["Backups"] is False
    assert is_active(HELPER)


def a_wrong_password_changes_nothing():
    before = ask(1)
    reply, = as_user("anna", "not the administrator's", [[2, INTERVAL]])
    assert reply["Asked"] > 0 and not reply["Authorized"] and reply["Error"], reply
    assert ask(1) == before


def a_user_applies_a_schedule_with_the_administrators_password_given_once():
    choose_borg("/srv/data", "/srv/repository")
    applied, chosen = as_user("anna", PASSWORD, [[2, INTERVAL], [2, INTERVAL]])
    assert applied["Authorized"] and not applied["Error"], applied
    assert chosen["Authorized"] and not chosen["Error"] and chosen["Asked"] == 1, chosen
    assert ask(1) == INTERVAL
    with open("/var/lib/brevane/Preferences/com.zerkolin.brevane.scheduler.plist", "rb") as file:
        assert plistlib.load(file)["Backups"] is True


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def archives():
    return run("borg", "list", "--short", "/srv/repository", fails=False).split()


def a_minute_later_a_backup_is_made_and_its_file_comes_back():
    wait_for(lambda: events()[-2:] == ["start", "end success"], "the backup", 100)
    wait_for(lambda: state() != "running", "its end")
    first = archives()[0]
    os.makedirs("/srv/restored")
    run("sh", "-c", f"cd /srv/restored && borg extract /srv/repository::{first} srv/data/file", fails=False)
    assert digest("/srv/restored/srv/data/file") == digest("/srv/data/file")


SCENES = (
    apt_installs_the_package_and_starts_the_helper,
    the_helper_runs_after_a_restart_of_the_system,
    it_was_started_with_the_system,
    the_helper_is_confined,
    a_message_of_an_ordinary_user_starts_the_helper,
    a_wrong_password_changes_nothing,
    a_user_applies_a_schedule_with_the_administrators_password_given_once,
    a_minute_later_a_backup_is_made_and_its_file_comes_back,
)
