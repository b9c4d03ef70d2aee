"""What a person does with Brevane's windows, preferences, updates and its end, done with real clicks and keys.

    lifecycle.py BUILD-FOLDER STORY
"""
import os
import plistlib
import signal
import subprocess
import sys
import threading
import time

from stories import Story, expect, run, wait_for  # and where the sandbox is

import feed
from desktop import Failure
from sandbox import RULES
from session import use

MANIFEST = "Library/Brevane/installation.plist"
UPDATES = "Library/Preferences/com.zerkolin.brevane.updates.plist"
QUESTION = "Do you want to enable automatic updates?"
ANSWERS = ["Enable", "Maybe Later"]
AUTOMATIC = "Install updates automatically"
PASSWORD = "Require a password to change the schedule"
UP_TO_DATE = "You are up to date."
LATEST = "You are currently using the latest version of Brevane."
BACKUP_RUNS = "A backup operation is currently running."
NEW_VERSION = "New version available."
UNINSTALL = "Are you sure you want to uninstall Brevane?"
NOT_CHECKED = "Brevane was unable to check for updates."


class Lifecycle(Story):
    # What is kept

    def installs_updates(self):
        return self._read(UPDATES).get("Enabled", False)

    def installed_version(self):
        return self._read(MANIFEST).get("HumanVersion")

    def _read(self, name):
        try:
            with open(self.sandbox.path(name), "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return {}

    def product_files(self):
        """Everything of the product's below the root, but for what makes it a sandbox."""
        found = []
        for top in ("Library", "usr", "home/Library", RULES):
            for folder, _, names in os.walk(self.sandbox.path(top)):
                found += [os.path.join(folder, name) for name in names]
        return found

    def forget_question(self):
        self.sandbox.settle(DidAskAboutAutoUpdates=False)

    # The windows

    def active_window(self):
        shown = subprocess.run(["xdotool", "getactivewindow", "getwindowname"], env=self.desktop.environment,
                               capture_output=True, text=True, check=False)
        return shown.stdout.strip()

    def is_active(self, name):
        return self.active_window() in (name, f"{name} \N{EM DASH} Brevane")

    def wait_active(self, name):
        wait_for(f"the keyboard in {name}", lambda: self.is_active(name))

    def choose_from_menu(self, menu, item):
        """By the letters that the menus show."""
        self.desktop.key(f"alt+{menu}")
        self.desktop.find("menu item", item)
        self.desktop.find("menu item", item).click()

    def ask_to_quit(self):
        self.desktop.key("ctrl+q")

    def close_main_window(self):
        """By the window manager's key. Its first press was seen to be lost once, on a slow machine: nothing had closed."""
        for press in range(1, 4):
            self.desktop.key("alt+F4")
            try:
                self.desktop.wait_gone("frame", "Brevane", 5)
                return
            except Failure:
                print(f"NOTE: press {press} of the closing key closed nothing", flush=True)
        raise Failure("the main window does not close")

    def wait_for_end(self):
        wait_for("the application to end", lambda: self.application.poll() is not None)
        expect(self.application.returncode == 0, f"the application ended with {self.application.returncode}")

    def is_checked(self, name):
        return self.desktop.find("check box", name).checked

    def switch(self, name):
        """A check box whose change the user allows."""
        before = self.is_checked(name)
        self.desktop.find("check box", name).click()
        self.answer_prompt("Authenticate")
        wait_for(f"{name} to change", lambda: self.is_checked(name) != before)

    def open_preferences(self):
        self.desktop.key("ctrl+comma")
        self.desktop.find("frame", "Preferences")
        self.wait_active("Preferences")

    def expect_about(self, version):
        self.choose_from_menu("r", "About Brevane")
        about = self.desktop.find("dialog", "About Brevane")
        expect(f"Version {version}" in about.texts(), f"the panel says {about.texts()}")
        about.button("OK").click()
        self.desktop.wait_gone("dialog", "About Brevane")

    # The stories

    def every_window_opens_from_the_menus_and_by_its_key(self):
        self.start_all()
        self.wait_active("Brevane")
        for key, name in (("ctrl+comma", "Preferences"), ("ctrl+1", "Local Snapshots"), ("ctrl+2", "Console"),
                          ("ctrl+3", "Activity")):
            self.desktop.key(key)
            self.desktop.find("frame", name)
            self.wait_active(name)
            # From there back to the main window, and again to the same one.
            self.desktop.key("ctrl+0")
            self.wait_active("Brevane")
            self.desktop.key(key)
            self.wait_active(name)
            expect(len(self.desktop.matching("frame", name)) == 1, f"there is more than one {name}")
            self.desktop.key("ctrl+w")
            self.desktop.wait_gone("frame", name)
            self.wait_active("Brevane")
        for menu, item, name in (("r", "Preferences.*", "Preferences"), ("d", "Local Snapshots", "Local Snapshots"),
                                 ("d", "Console", "Console"), ("d", "Activity", "Activity")):
            self.choose_from_menu(menu, item)
            self.wait_active(name)
            self.desktop.key("ctrl+0")
            self.wait_active("Brevane")
        self.expect_about(self._read(MANIFEST)["Version"])
        expect(self.application.poll() is None, "the application ended")
        self.quit_application()

    def quitting_asks_once_about_automatic_updates(self):
        self.forget_question()
        self.start_all()
        self.ask_to_quit()
        self.answer_alert(QUESTION, "You can change this setting at any time from the preferences.", "Maybe Later",
                          ANSWERS)
        self.wait_for_end()
        expect(self.sandbox.defaults() == {"DidAskAboutAutoUpdates": True, "DidDismissFirstStart": True},
               f"the defaults are {self.sandbox.defaults()}")
        expect(not self.installs_updates(), "automatic updates are on")
        self.start_application()
        self.desktop.find("frame", "Brevane")
        self.quit_application()

    def enabling_automatic_updates_when_quitting_asks_for_the_password(self):
        self.forget_question()
        self.start_all()
        self.wait_active("Brevane")
        self.close_main_window()
        self.answer_alert(QUESTION, "Updates are downloaded securely", "Enable", ANSWERS)
        self.answer_prompt("Authenticate")
        self.wait_for_end()
        expect(self.installs_updates(), "automatic updates are off")

    def the_preferences_hold_after_a_restart(self):
        self.start_all()
        self.open_preferences()
        expect(not self.is_checked(AUTOMATIC) and self.is_checked(PASSWORD), "the boxes do not show the defaults")
        self.switch(AUTOMATIC)
        wait_for("automatic updates to be on", self.installs_updates)
        self.quit_application()
        self.kill_helper()
        self.sandbox.start_helper()
        self.start_application()
        self.desktop.find("frame", "Brevane")
        self.open_preferences()
        expect(self.is_checked(AUTOMATIC), "automatic updates are shown as off")
        self.quit_application()

    def a_refused_preference_goes_back(self):
        self.start_all()
        self.open_preferences()
        for name in (AUTOMATIC, PASSWORD):
            before = self.is_checked(name)
            self.desktop.find("check box", name).click()
            self.answer_prompt("Cancel")
            wait_for(f"{name} to go back", lambda shown=name, was=before: self.is_checked(shown) == was)
        self.expect_no_alert()
        expect(not self.installs_updates(), "automatic updates are on")
        self.quit_application()

    def without_a_password_the_schedule_changes_without_a_question(self):
        self.start_all()
        self.open_preferences()
        self.switch(PASSWORD)
        expect(not self.is_checked(PASSWORD), "the password is still required")
        self.desktop.key("ctrl+0")
        self.wait_active("Brevane")
        self.enter_interval(75)
        self.press_apply()
        self.expect_no_prompt()
        self.answer_applied()
        self.quit_application()
        self.start_application()
        self.desktop.find("frame", "Brevane")
        self.open_preferences()
        expect(not self.is_checked(PASSWORD), "the password is required again")
        self.quit_application()

    def a_second_start_brings_the_first_ones_window_forward(self):
        self.start_all()
        self.open_preferences()
        second = self.sandbox.start_application(self.desktop.environment)
        wait_for("the second start to end", lambda: second.poll() is not None)
        expect(second.returncode == 0, f"the second start ended with {second.returncode}")
        self.wait_active("Brevane")
        expect(self.application.poll() is None, "the first one ended")
        expect(len(self.desktop.matching("frame", "Brevane")) == 1, "there are two main windows")

        self.desktop.key("ctrl+m")
        wait_for("the window to be minimised", lambda: not self.is_active("Brevane"))
        second = self.sandbox.start_application(self.desktop.environment)
        wait_for("the second start to end", lambda: second.poll() is not None)
        self.wait_active("Brevane")

        # One that was killed is no obstacle.
        self.application.kill()
        self.application.wait()
        self.start_application()
        self.desktop.find("frame", "Brevane")
        self.quit_application()

    def a_second_start_comes_from_another_virtual_desktop_and_ends_the_launchers_busy_cursor(self):
        self.start_all()
        self.wait_active("Brevane")
        environment = self.desktop.environment
        for command in (["set_num_desktops", "2"], ["set_desktop", "1"]):
            subprocess.run(["xdotool", *command], env=environment, check=True)
        wait_for("another desktop", lambda: not self.is_active("Brevane"))
        with subprocess.Popen(["stdbuf", "-oL", "xev", "-root", "-event", "property"], env=environment,
                              stdout=subprocess.PIPE, text=True) as watch:
            try:
                time.sleep(1)  # it says nothing when it begins
                second = self.sandbox.start_application(dict(environment, DESKTOP_STARTUP_ID="launcher-1-play"))
                wait_for("the second start to end", lambda: second.poll() is not None)
                self.wait_active("Brevane")
            finally:
                watch.terminate()
            told = watch.stdout.read()
        expect("_NET_STARTUP_INFO_BEGIN" in told, "the launcher was not told")
        self.quit_application()

    def a_helper_that_hangs_is_named_and_holds_nobody_up(self):
        self.sandbox.start_helper()
        self.sandbox.helper.send_signal(signal.SIGSTOP)
        self.start_application()
        waiting = self.desktop.dialog("Waiting for the background scheduler…")
        waiting.button("Cancel").click()
        self.wait_for_end()

        self.sandbox.helper.send_signal(signal.SIGCONT)
        self.start_application()
        self.desktop.find("frame", "Brevane")
        self.sandbox.helper.send_signal(signal.SIGSTOP)
        self.desktop.key("ctrl+comma")  # asks the helper before anything shows
        time.sleep(1)
        self.application.send_signal(signal.SIGTERM)
        self.application.wait(3)  # it takes one at most, where nothing else runs
        expect(self.application.returncode == -signal.SIGTERM, f"it ended with {self.application.returncode}")
        self.sandbox.helper.send_signal(signal.SIGCONT)

    def the_end_of_the_display_ends_the_application_also_while_the_helper_hangs(self):
        self.start_all()
        self.sandbox.helper.send_signal(signal.SIGSTOP)
        self.desktop.key("ctrl+comma")
        time.sleep(1)
        expect(self.application.poll() is None, "the application ended by itself")
        self.desktop.children[0].terminate()  # the display
        self.application.wait(2)
        self.sandbox.helper.send_signal(signal.SIGCONT)

    def a_signal_ends_the_application_while_it_asks_and_the_question_comes_again(self):
        self.forget_question()
        self.start_all()
        self.ask_to_quit()
        self.desktop.dialog(QUESTION)
        self.application.send_signal(signal.SIGTERM)
        self.application.wait(3)  # it takes one at most, where nothing else runs
        expect(self.application.returncode == 0, f"it ended with {self.application.returncode}")
        expect(not self.installs_updates(), "automatic updates are on")
        expect(not self.sandbox.defaults().get("DidAskAboutAutoUpdates"), "the question counts as answered")

    def help_opens_in_the_users_language(self):
        programs, opened = self.sandbox.path("programs"), self.sandbox.path("opened")
        os.makedirs(programs)
        with open(os.path.join(programs, "xdg-open"), "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\necho \"$1\" >'{opened}.new'\nmv '{opened}.new' '{opened}'\n")
        os.chmod(file.name, 0o755)
        self.desktop.environment["PATH"] = programs + ":" + os.environ["PATH"]
        self.sandbox.start_helper()
        for locale, language in (("C", "en"), ("de_CH.UTF-8", "de"), ("fr_FR.UTF-8", "fr"),
                                 ("pl_PL.UTF-8", "en")):  # what has no help of its own
            self.desktop.environment["LC_ALL"] = locale
            self.start_application()
            self.desktop.find("frame", "Brevane")
            self.wait_active("Brevane")
            self.desktop.key("F1")
            wait_for("the help", lambda: os.path.exists(opened))
            with open(opened, encoding="utf-8") as file:
                page = os.path.realpath(file.read().strip())
            expected = self.sandbox.path(f"Library/Brevane/share/brevane/resources/help/{language}/index.html")
            expect(page == os.path.realpath(expected), f"{page} was opened")
            expect(os.path.isfile(page), f"there is no {page}")
            os.remove(opened)
            self.quit_application()

    def a_check_without_a_feed_says_why(self):
        self.start_all()
        self.choose_from_menu("r", "Check for Updates.*")
        alert = self.desktop.dialog(NOT_CHECKED)
        alert.button("OK").click()
        wait_for("the alert to close", lambda: not self.is_alert_shown(NOT_CHECKED))
        self.quit_application()

    def whoever_is_up_to_date_can_have_updates_installed_automatically(self):
        self.sandbox.offer_update()
        package, address = (self.sandbox.path("feed/" + name) for name in ("Brevane.pkg", "update.plist"))
        installed = self._read(MANIFEST)
        feed.make_feed(package, installed["Version"], installed["HumanVersion"], address)
        self.start_all()
        self.choose_from_menu("r", "Check for Updates.*")
        self.desktop.dialog(UP_TO_DATE)
        self.desktop.find("check box", AUTOMATIC).click()
        self.answer_alert(UP_TO_DATE, LATEST, "OK", ["OK"])
        self.answer_prompt("Authenticate")
        wait_for("automatic updates to be on", self.installs_updates)
        self.choose_from_menu("r", "Check for Updates.*")
        self.desktop.dialog(UP_TO_DATE)
        expect(not self.desktop.is_shown("check box", AUTOMATIC), "the check box is there again")
        self.answer_alert(UP_TO_DATE, LATEST, "OK", ["OK"])
        self.quit_application()

    def while_a_backup_runs_nothing_is_installed_or_removed(self):
        self.sandbox.offer_update()
        installed = self.installed_version()
        self.start_all()
        self.sandbox.start_other_backup()
        self.choose_from_menu("r", "Check for Updates.*")
        self.answer_alert(NEW_VERSION, "is available.", "Update", ["Update", "Download", "Later"])
        self.answer_prompt("Authenticate")
        self.answer_alert("Brevane was unable to update.", BACKUP_RUNS, "OK", ["OK"])
        self.choose_from_menu("r", "Uninstall Brevane.*")
        self.answer_alert(UNINSTALL, "You can't undo this action.", "Uninstall", ["Uninstall", "Cancel"])
        self.answer_prompt("Authenticate")
        self.answer_alert("Could not uninstall.", BACKUP_RUNS, "OK", ["OK"])
        expect(self.sandbox.applications() == [self.application.pid], "the post-update tool is still there")
        expect(self.installed_version() == installed, f"version {self.installed_version()} is installed")
        self.sandbox.end(self.sandbox.other_backup)
        self.choose_from_menu("r", "Uninstall Brevane.*")
        self.answer_alert(UNINSTALL, "You can't undo this action.", "Uninstall", ["Uninstall", "Cancel"])
        wait_for("the product's folder to go", lambda: not os.path.exists(self.sandbox.path("Library/Brevane")))
        self.quit_application()

    def a_new_version_can_wait(self):
        version = self.sandbox.offer_update()
        self.start_all()
        for _ in range(2):
            self.choose_from_menu("r", "Check for Updates.*")
            self.answer_alert(NEW_VERSION, f"Brevane {version} is available. Would you like to update now?", "Later",
                              ["Update", "Download", "Later"])
        self.quit_application()

    def an_update_whose_prompt_is_dismissed_leaves_everything_as_it_is(self):
        self.sandbox.offer_update()
        self.start_all()
        self.choose_from_menu("r", "Check for Updates.*")
        self.answer_alert(NEW_VERSION, "is available.", "Update", ["Update", "Download", "Later"])
        self.answer_prompt("Cancel")
        self.expect_no_alert()
        self.choose_from_menu("r", "Check for Updates.*")
        self.answer_alert(NEW_VERSION, "is available.", "Later", ["Update", "Download", "Later"])
        self.quit_application()

    def an_update_is_installed_and_the_new_version_starts(self):
        version = self.sandbox.offer_update()
        self.sandbox.start_helper()
        session = threading.Thread(target=use, args=(self.sandbox, self.desktop.environment))
        session.start()
        self.desktop.find("frame", "Brevane")
        old = self.sandbox.applications()
        self.choose_from_menu("r", "Check for Updates.*")
        self.answer_alert(NEW_VERSION, f"Brevane {version} is available.", "Update", ["Update", "Download", "Later"])
        self.answer_prompt("Authenticate")
        wait_for("the old version to end", lambda: not set(old) & set(self.sandbox.applications()), 40)
        expect(self.installed_version() == version, f"version {self.installed_version()} is installed")
        self.desktop.find("frame", "Brevane", seconds=40)
        self.wait_active("Brevane")
        self.expect_about(version)
        self.choose_from_menu("r", "Check for Updates.*")
        self.answer_alert(UP_TO_DATE, LATEST, "OK", ["OK"])
        expect(session.is_alive(), "the session ended with the old version")
        self.ask_to_quit()
        session.join(20)
        expect(not session.is_alive() and not self.sandbox.applications(), "the session goes on without a window")

    def an_uninstallation_leaves_nothing_behind(self):
        self.start_all()
        logs = self.sandbox.path("home/Library/Logs/Brevane")
        os.makedirs(logs, exist_ok=True)  # there is none when root plays this
        with open(os.path.join(logs, "application.1.log"), "w", encoding="utf-8") as file:
            file.write("a line\n")
        self.choose_from_menu("r", "Uninstall Brevane.*")
        self.answer_alert(UNINSTALL, "You can't undo this action.", "Cancel", ["Uninstall", "Cancel"])
        expect(os.path.exists(logs) and self.sandbox.defaults(), "something is gone already")

        self.choose_from_menu("r", "Uninstall Brevane.*")
        self.answer_alert(UNINSTALL, "You can't undo this action.", "Uninstall", ["Uninstall", "Cancel"])
        self.answer_prompt("Authenticate")
        wait_for("the product's folder to go", lambda: not os.path.exists(self.sandbox.path("Library/Brevane")))
        expect(not os.path.exists(logs), "the log is still there")
        expect(not self.sandbox.defaults(), "the defaults are still there")
        self.expect_no_alert()

        # The application goes on until it is quit, and brings nothing back.
        for key, name in (("ctrl+comma", "Preferences"), ("ctrl+1", "Local Snapshots"), ("ctrl+2", "Console"),
                          ("ctrl+3", "Activity")):
            self.desktop.key(key)
            self.desktop.find("frame", name)
            self.wait_active(name)
            self.desktop.key("ctrl+w")
            self.desktop.wait_gone("frame", name)
            self.wait_active("Brevane")
        self.quit_application()
        expect(not self.sandbox.defaults(), "the defaults are there again")
        left = self.product_files()
        expect(not left, f"{left} are still there, or again")


if __name__ == "__main__":
    sys.exit(run(Lifecycle, *sys.argv[1:]))
