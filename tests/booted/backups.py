"""Backups as transient units of a booted system. Runs inside, as root; see boot.py."""
import os
import plistlib
import shutil
import subprocess

from inside import (BACKUP, HELPER, STATE, TOOL, ask, choose_borg, events, helper_process, is_active, lines, run, start_long_backup,
                    state, wait_for)


def see_it_end(before, outcome="end success"):
    wait_for(lambda: state() == "waiting" or state() == "off", "the end of the backup")
    assert events() == before + ["start", outcome], (before, events())
    wait_for(lambda: not is_active(BACKUP), "the end of the unit")


def a_backup_runs_as_a_unit_of_its_own_and_its_output_is_in_the_journal():
    choose_borg("/srv/data", "/srv/repository")
    ask(3)
    see_it_end([])
    assert any("Number of files: 1" in line for line in lines("com.apple.TimeMachine")), lines("com.apple.TimeMachine")
    told = lines("com.zerkolin.brevane")
    assert any(line.startswith("The backup succeeded; it took ") for line in told), told


def the_unit_comes_after_other_work_and_outlives_a_restart_of_the_helper():
    before = events()
    start_long_backup()
    values = run("systemctl", "show", "--property=CPUWeight,IOWeight,Type,Description", BACKUP).splitlines()
    assert sorted(values) == ["CPUWeight=10", "Description=Backup by Brevane", "IOWeight=10", "Type=exec"], values
    backup = run("systemctl", "show", "--property=MainPID", "--value", BACKUP)
    helper = helper_process()
    run("systemctl", "restart", HELPER)
    wait_for(lambda: state() == "running", "the helper to find the backup again")
    assert helper_process() != helper
    assert run("systemctl", "show", "--property=MainPID", "--value", BACKUP) == backup
    see_it_end(before)


def it_outlives_a_kill_of_the_helper():
    before = events()
    start_long_backup()
    helper = helper_process()
    run("systemctl", "kill", "--signal=KILL", HELPER)
    wait_for(lambda: helper_process() not in (helper, "0") and state() == "running", "the next helper to find the backup")
    see_it_end(before)


def it_outlives_a_new_version_of_the_helper():
    before = events()
    start_long_backup()
    shutil.copy(TOOL, TOOL + ".new")
    os.replace(TOOL + ".new", TOOL)
    run("systemctl", "restart", HELPER)
    wait_for(lambda: state() == "running", "the new version to find the backup")
    assert os.path.samefile(f"/proc/{helper_process()}/exe", TOOL)
    see_it_end(before)


def it_outlives_a_restart_of_the_bus():
    before = events()
    start_long_backup()
    run("systemctl", "restart", "dbus.service")
    wait_for(lambda: state() == "running", "the helper to find the backup on the new bus")
    see_it_end(before)


def a_backup_that_is_killed_has_failed_and_is_told():
    before = events()
    start_long_backup()
    run("systemctl", "kill", "--signal=KILL", BACKUP)
    see_it_end(before, "end failure")
    run("systemctl", "stop", "long-backup.service")
    assert any(line.startswith("The backup failed: it stopped before its end.") for line in lines("com.zerkolin.brevane"))


def a_second_helper_does_not_begin():
    helper = helper_process()
    second = subprocess.run([TOOL, "--root", "/opt/brevane"], capture_output=True, text=True, timeout=30, check=False)
    assert second.returncode == 69, second
    assert helper_process() == helper and state() in ("off", "waiting")


def everything_is_remembered_over_a_stop():
    before = events()
    run("systemctl", "stop", HELPER)
    with open(STATE, "rb") as file:
        assert len(plistlib.load(file)["Journal"]) == len(before)
    assert events() == before  # the bus has started it again


def on_a_full_disk_a_backup_runs_all_the_same_and_the_fault_is_told():
    folder = os.path.dirname(STATE)
    run("systemctl", "stop", HELPER)
    run("mount", "-t", "tmpfs", "-o", "size=4k", "tmpfs", folder)
    with open(folder + "/everything", "wb") as file:
        file.write(bytes(4096))
    start_long_backup()
    see_it_end([])
    assert not os.path.exists(STATE)
    told = lines("com.zerkolin.brevane")
    assert any(line.startswith("What was done about backups could not be written down") for line in told), told
    run("systemctl", "stop", HELPER)
    run("umount", folder)


SCENES = (
    a_backup_runs_as_a_unit_of_its_own_and_its_output_is_in_the_journal,
    the_unit_comes_after_other_work_and_outlives_a_restart_of_the_helper,
    it_outlives_a_kill_of_the_helper,
    it_outlives_a_new_version_of_the_helper,
    it_outlives_a_restart_of_the_bus,
    a_backup_that_is_killed_has_failed_and_is_told,
    a_second_helper_does_not_begin,
    everything_is_remembered_over_a_stop,
    on_a_full_disk_a_backup_runs_all_the_same_and_the_fault_is_told,
)
