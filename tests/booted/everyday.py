"""What happens to the package in its life: users look, programs are killed, systems restart, versions come and go. Runs inside,
after installed.py."""
import datetime
import json
import os
import plistlib
import signal
import subprocess
import time

import dbus

import trees
from inside import BACKUP, HELPER, HERE, ask, events, helper_process, is_active, run, start_long_backup, state, wait_for
from installed import INTERVAL, PACKAGES, PASSWORD, install, installed_version
from user import SERVICE, as_user

VOLUME = "/srv/volume"
SNAPSHOTS = VOLUME + "/.brevane-snapshots"
MADE = "/var/lib/brevane/db/brevane/snapshots.plist"
LOG = "brevane-log show --style json --predicate 'subsystem == \"com.zerkolin.brevane\"'"


def log_of(user):
    done = subprocess.run(["su", "--login", user, "--command", LOG], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    return json.loads(done.stdout) if done.stdout.strip() else []


def wrote_of_backups(entries):
    return any("The backup succeeded" in entry["eventMessage"] for entry in entries)


def the_log_is_for_root_and_the_journals_group_alone():
    run("journalctl", "--sync")
    assert wrote_of_backups(log_of("root"))
    assert wrote_of_backups(log_of("jo"))
    assert not wrote_of_backups(log_of("anna"))  # nothing but what her own programs wrote


def serves_anna():
    reply, = as_user("anna", "", [[1]])
    return not reply["Error"]


def the_helper_comes_back_after_a_kill():
    before = helper_process()
    os.kill(int(before), signal.SIGKILL)
    wait_for(lambda: helper_process() not in ("0", before), "the next helper")
    assert serves_anna() and ask(1) == INTERVAL


def it_survives_restarts_of_the_bus_and_of_the_logins():
    run("systemctl", "restart", "dbus.service", fails=False)
    wait_for(lambda: state() not in ("nothing", "running"), "the helper on the new bus")
    run("systemctl", "restart", "systemd-logind.service", fails=False)
    assert serves_anna() and ask(1) == INTERVAL


def written_down():
    """What the helper knows of the snapshots that it has made."""
    if not os.path.exists(MADE):
        return []
    with open(MADE, "rb") as file:
        return plistlib.load(file)["Snapshots"]


def snapshots_of_a_volume_are_made_and_the_old_ones_removed():
    if not os.path.isdir(VOLUME):
        print("SKIPPED: there is no btrfs volume")
        return
    ask(12, {"Program": "borg", "Fields": {"Folders": [VOLUME + "/data"], "Repository": "/srv/repository"}})
    ask(2, INTERVAL | {"Snapshots": True})
    wait_for(lambda: len(written_down()) == 1, "a snapshot")
    first, = os.listdir(SNAPSHOTS)
    assert os.listdir(f"{SNAPSHOTS}/{first}/data") == ["file"]
    run("systemctl", "stop", HELPER)
    made, = written_down()
    made["At"] -= datetime.timedelta(hours=25)
    with open(MADE, "wb") as file:
        plistlib.dump({"Snapshots": [made]}, file)
    ask(1)
    wait_for(lambda: len(os.listdir(SNAPSHOTS)) == 2, "the next snapshot")
    run("systemctl", "restart", HELPER, fails=False)
    wait_for(lambda: len(os.listdir(SNAPSHOTS)) == 1 and first not in os.listdir(SNAPSHOTS), "the end of the old one")
    ask(12, {"Program": "borg", "Fields": {"Folders": ["/srv/data"], "Repository": "/srv/repository"}})
    ask(2, INTERVAL)


def the_system_restarts_in_the_middle_of_a_backup():
    wait_for(lambda: state() == "waiting", "the backup before to end", 90)
    start_long_backup()
    return True


def that_backup_has_failed_and_the_next_one_is_made_with_nobody_logged_in():
    wait_for(lambda: state() != "nothing", "the helper")
    told = events()
    assert "end failure" in told, told
    assert run("loginctl", "list-sessions", "--no-legend") == ""
    ask(12, {"Program": "borg", "Fields": {"Folders": ["/srv/data"], "Repository": "/srv/repository"}})
    wait_for(lambda: events()[-1] == "end success" and len(events()) > len(told), "the backup that was due", 100)


CALENDAR = INTERVAL | {"BackupsMode": "CalendarIntervals"}
MOMENT = HERE + "/moment"


def the_system_is_off_at_a_moment_when_a_backup_is_due():
    wait_for(lambda: state() == "waiting", "the backup before to end", 90)
    due = (datetime.datetime.now() + datetime.timedelta(seconds=75)).replace(second=0, microsecond=0)
    ask(2, CALENDAR | {"CalendarIntervals": {"ASAP": True, "Intervals": [{"Hour": due.hour, "Minute": due.minute}]}})
    with open(MOMENT, "w", encoding="ascii") as file:
        file.write(f"{due.timestamp()} {len(events())}")
    return due.timestamp() - time.time() + 5


def soon_after_its_start_that_backup_is_made_once():
    with open(MOMENT, encoding="ascii") as file:
        due, count = file.read().split()
    wait_for(lambda: state() != "nothing", "the helper")
    wait_for(lambda: events()[int(count):] == ["start", "end success"], "the backup that was due", 60)
    start = ask(5)["Journal"][1]
    moment = datetime.datetime.fromtimestamp(float(due), datetime.timezone.utc).replace(tzinfo=None)
    assert start["Event"] == "start" and start["Due"] == moment, start
    assert start["At"] >= moment + datetime.timedelta(seconds=5), start
    time.sleep(3)
    assert events()[int(count):] == ["start", "end success"], events()
    ask(2, INTERVAL)


def a_new_version_comes_while_a_backup_runs_and_a_program_is_connected():
    wait_for(lambda: state() == "waiting", "the backup before to end", 90)
    start_long_backup()
    bus = dbus.SystemBus()
    helper = dbus.Interface(bus.get_object(SERVICE, "/" + SERVICE.replace(".", "/")), SERVICE)
    helper.Send(dbus.Dictionary({"message": dbus.Int64(1)}, signature="sv"))
    before = helper_process()
    backup = run("systemctl", "show", "--property=MainPID", "--value", BACKUP)
    install(PACKAGES[1])
    assert installed_version() == "99.0.0.1"
    wait_for(lambda: helper_process() not in ("0", before), "the new version")
    assert run("systemctl", "show", "--property=MainPID", "--value", BACKUP) == backup and is_active(BACKUP)
    wait_for(lambda: events()[-1] == "end success", "the end of the backup")
    assert ask(1) == INTERVAL


def the_version_before_can_be_installed_again():
    install(PACKAGES[0], "--allow-downgrades")
    assert installed_version() != "99.0.0.1"
    wait_for(lambda: state() != "nothing", "the helper")
    assert ask(1) == INTERVAL


def a_helper_that_hangs_is_started_again():
    folder = f"/run/systemd/system/{HELPER}.d"
    os.makedirs(folder)
    with open(folder + "/soon.conf", "w", encoding="ascii") as file:
        file.write("[Service]\nWatchdogSec=3\n")
    run("systemctl", "daemon-reload", fails=False)
    run("systemctl", "restart", HELPER, fails=False)
    wait_for(lambda: state() != "nothing", "the helper")
    time.sleep(4)
    before = helper_process()
    assert run("systemctl", "show", "--property=NRestarts", "--value", HELPER) == "0"
    os.kill(int(before), signal.SIGSTOP)
    wait_for(lambda: helper_process() not in ("0", before), "the next helper")
    os.remove(folder + "/soon.conf")
    run("systemctl", "daemon-reload", fails=False)
    run("systemctl", "restart", HELPER, fails=False)
    assert serves_anna()


def without_the_package_nothing_runs_and_settings_stay():
    ask(6, {"Allow": True})
    assert os.path.exists("/etc/polkit-1/rules.d/49-com.zerkolin.brevane.rules")
    run("apt-get", "-q", "-y", "remove", "brevane", fails=False)
    assert not is_active(HELPER) and not is_active(BACKUP)
    assert not run("sh", "-c", "ls -d /opt/brevane /usr/bin/brevane* /etc/xdg/autostart/com.zerkolin.brevane* 2>/dev/null")
    assert subprocess.run(["busctl", "call", SERVICE, "/", SERVICE, "Send", "a{sv}", "0"], capture_output=True, check=False).returncode != 0
    assert os.path.exists("/var/lib/brevane/Preferences/com.zerkolin.brevane.scheduler.plist")


def they_are_in_force_again_when_it_is_back():
    install(PACKAGES[0])
    wait_for(lambda: state() != "nothing", "the helper")
    assert ask(1) == INTERVAL
    reply, = as_user("admin", PASSWORD, [[2, INTERVAL]])
    assert reply["Authorized"] and reply["Asked"] == 0, reply


def purged_it_leaves_backups_and_nothing_else():
    run("apt-get", "-q", "-y", "purge", "brevane", fails=False)
    left = trees.differences()
    assert left == [], left
    assert run("borg", "list", "--short", "/srv/repository", fails=False)
    install(PACKAGES[0])  # for what comes next


SCENES = (
    the_log_is_for_root_and_the_journals_group_alone,
    the_helper_comes_back_after_a_kill,
    it_survives_restarts_of_the_bus_and_of_the_logins,
    snapshots_of_a_volume_are_made_and_the_old_ones_removed,
    the_system_restarts_in_the_middle_of_a_backup,
    that_backup_has_failed_and_the_next_one_is_made_with_nobody_logged_in,
    the_system_is_off_at_a_moment_when_a_backup_is_due,
    soon_after_its_start_that_backup_is_made_once,
    a_new_version_comes_while_a_backup_runs_and_a_program_is_connected,
    the_version_before_can_be_installed_again,
    a_helper_that_hangs_is_started_again,
    without_the_package_nothing_runs_and_settings_stay,
    they_are_in_force_again_when_it_is_back,
    purged_it_leaves_backups_and_nothing_else,
)
