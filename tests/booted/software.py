"""Messages 26 to 28 with the real PackageKit, a repository and locks. Runs inside, after installed.py."""
import fcntl
import os

import offers
from inside import HELPER, ask, error_of, helper_process, is_active, run, state, wait_for
from installed import INTERVAL, PACKAGES, PASSWORD, install, installed_version
from user import as_user

CHECK, UPDATE, REMOVE = 26, 27, 28
SETTINGS = INTERVAL | {"Backups": False}
UPDATER = "com.zerkolin.updater"
UP_TO_DATE, NOT_FETCHED, NOT_DOWNLOADED, UNTRUSTED, NOT_NOW = 0, 1, 4, 6, 8
LOCK = "/var/lib/dpkg/lock-frontend"


def see_error(number, code, text):
    # What a check was answered before is forgotten.
    run("systemctl", "reset-failed", HELPER)
    run("systemctl", "restart", HELPER, fails=False)
    wait_for(lambda: state() != "nothing", "the helper")
    told = error_of(number)
    assert told and told[:2] == (UPDATER, code) and text in told[2], told


def nothing_newer_is_up_to_date():
    wait_for(lambda: state() in ("waiting", "off"), "the backup before to end", 90)
    ask(2, SETTINGS)
    offers.offer(PACKAGES[0])
    see_error(CHECK, UP_TO_DATE, "")
    see_error(UPDATE, UP_TO_DATE, "")


def sources_that_cannot_be_reached_are_told():
    offers.listen_to("deb http://127.0.0.1:9/ ./")
    see_error(CHECK, NOT_FETCHED, "Connection refused")


def a_package_of_nobodys_is_refused():
    offers.offer(*PACKAGES, signed=False)
    see_error(UPDATE, UNTRUSTED, "")


def a_package_that_is_missing_or_damaged_is_not_taken():
    offers.offer(*PACKAGES)
    offered = os.path.join(offers.FOLDER, os.path.basename(PACKAGES[1]))
    with open(offered, "r+b") as file:
        file.seek(100000)
        file.write(b"damage")
    see_error(UPDATE, NOT_DOWNLOADED, "Hash Sum mismatch")
    os.remove(offered)
    see_error(UPDATE, NOT_DOWNLOADED, "File not found")


def while_another_program_changes_packages_it_cannot_be_done_now():
    offers.offer(*PACKAGES)
    with open(LOCK, "w", encoding="ascii") as file:
        fcntl.lockf(file, fcntl.LOCK_EX)
        see_error(UPDATE, NOT_NOW, "Could not get lock " + LOCK)
    assert installed_version() != "99.0.0.1"


def package_state():
    return run("dpkg-query", "--show", "--showformat", "${Version} ${db:Status-Status}", "brevane")


def a_user_finds_a_newer_version():
    run("systemctl", "restart", HELPER, fails=False)
    assert ask(CHECK) == {"Version": "99.0.0.1", "HumanVersion": "99.0.0.1"}


def it_is_installed_with_the_administrators_password_and_the_answer_comes_though_the_helper_ends():
    before = helper_process()
    reply, = as_user("anna", PASSWORD, [[UPDATE]])
    assert reply["Authorized"] and reply["Asked"] == 1 and not reply["Error"], reply
    wait_for(lambda: helper_process() not in ("0", before), "the new version")
    assert installed_version() == "99.0.0.1"
    wait_for(lambda: package_state() == "99.0.0.1 installed", "the rest of the installation")
    assert ask(1) == SETTINGS


def an_uninstallation_removes_the_package_and_no_setting():
    reply, = as_user("anna", PASSWORD, [[REMOVE]])
    assert reply["Authorized"] and not reply["Error"], reply
    wait_for(lambda: not is_active(HELPER), "the end of the helper")
    wait_for(lambda: package_state() == "99.0.0.1 config-files", "the rest of the removal")
    assert not os.path.exists("/opt/brevane")
    assert os.path.exists("/var/lib/brevane/Preferences/com.zerkolin.brevane.scheduler.plist")
    install(PACKAGES[0])
    wait_for(lambda: state() != "nothing", "the helper")
    assert ask(1) == SETTINGS


def without_packagekit_the_commands_are_named():
    run("systemctl", "mask", "--now", "packagekit.service", fails=False)
    see_error(CHECK, NOT_NOW, '"sudo apt install --only-upgrade brevane"')
    run("systemctl", "unmask", "packagekit.service", fails=False)
    run("dpkg", "--purge", "packagekit", fails=False)
    for number in (CHECK, UPDATE):
        see_error(number, NOT_NOW, '"sudo apt install --only-upgrade brevane"')
    assert '"sudo apt remove brevane"' in error_of(REMOVE)[2], error_of(REMOVE)
    assert is_active(HELPER) and ask(1) == SETTINGS


SCENES = (
    nothing_newer_is_up_to_date,
    sources_that_cannot_be_reached_are_told,
    a_package_of_nobodys_is_refused,
    a_package_that_is_missing_or_damaged_is_not_taken,
    while_another_program_changes_packages_it_cannot_be_done_now,
    a_user_finds_a_newer_version,
    it_is_installed_with_the_administrators_password_and_the_answer_comes_though_the_helper_ends,
    an_uninstallation_removes_the_package_and_no_setting,
    without_packagekit_the_commands_are_named,
)
