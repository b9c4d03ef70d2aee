"""What a person does with Brevane, done with real clicks and keys in a real window.

    stories.py BUILD-FOLDER STORY
"""
import contextlib
import os
import plistlib
import signal
import subprocess
import sys
import tempfile
import time

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(SOURCE, "sandbox"))
sys.dont_write_bytecode = True

from desktop import Desktop, Failure, wait_for  # noqa: E402
from sandbox import BORG, DEFAULTS, PROGRAM, SETTINGS, TOOL, Sandbox  # noqa: E402

APPLIED = "Settings applied successfully."
ENFORCED = "Brevane will now enforce the new scheduling."
NO_PROGRAM = "No backup program is chosen."
ALREADY = "Settings already applied."
FAILED = "Failed to apply settings."
NOT_FETCHED = "Could not get settings."
WELCOME = "Welcome to Brevane"
PASSING = ("run", "var/log", "home/Library/Logs", "home/.cache")  # logs, sockets and what can be made anew
UNREACHABLE = ("The background scheduler appears to be disabled. This is usually fixed by reinstalling the latest version "
               "available from the web site.")


class Skipped(Exception):
    pass


def expect(condition, what):
    if not condition:
        raise Failure(what)


class Story:
    """A sandbox, a desktop and the application in it."""

    def __init__(self, build, folder):
        self.sandbox = Sandbox(os.path.join(folder, "root"), build)
        self.sandbox.start_bus()
        os.environ.update(self.sandbox.variables)
        self.desktop = Desktop()
        self.application = None
        # The first end of the application shall ask nothing, and its start show the main window.
        self.sandbox.settle(DidAskAboutAutoUpdates=True, DidDismissFirstStart=True)

    def close(self):
        self.sandbox.end(self.application)
        self.desktop.close()
        self.sandbox.close()

    # The programs

    def start_all(self, window="Brevane"):
        self.sandbox.start_helper()
        self.sandbox.start_authority(self.desktop.environment)
        self.start_application()
        self.desktop.find("frame", window)

    def start_application(self):
        self.application = self.sandbox.start_application(self.desktop.environment)

    def quit_application(self):
        self.desktop.key("ctrl+q")
        wait_for("the application to end", lambda: self.application.poll() is not None)
        expect(self.application.returncode == 0, f"the application ended with {self.application.returncode}")

    def kill_helper(self):
        self.sandbox.helper.send_signal(signal.SIGKILL)
        self.sandbox.helper.wait()

    def give_battery(self):
        battery = self.sandbox.path("sys/class/power_supply/BAT0")
        os.makedirs(battery)
        with open(os.path.join(battery, "type"), "w", encoding="utf-8") as file:
            file.write("Battery\n")

    # The window

    def check(self, name):
        box = self.desktop.find("check box", name)
        if not box.checked:
            box.click()
            wait_for("the check mark", lambda: box.checked)

    def choose(self, current, index):
        """An item of the pop-up that shows one of the texts."""
        self.desktop.find("combo box", current).click()
        self.desktop.key("Home", *["Down"] * index, "Return")

    def enter_text(self, name, text):
        field = self.desktop.find("text", name)
        field.click()
        self.desktop.key("ctrl+a")
        self.desktop.type(text)
        wait_for(f"the text {text}", lambda: field.text == text)

    def enter_interval(self, count, unit=0):
        self.check("Back up automatically:?")
        self.choose("When Inactive|Interval|Times of Day", 1)
        self.enter_text("Interval", str(count))
        self.choose("minutes?|hours?|days?|weeks?", unit)

    def choose_calendar(self):
        self.check("Back up automatically:?")
        self.choose("When Inactive|Interval|Times of Day", 2)
        self.desktop.find("combo box", "Row 1, weekday")

    def enter_time(self, field, time):
        """With the keyboard already on the field's hour."""
        self.desktop.type(time.replace(":", ""))
        wait_for(f"the time {time}", lambda: field.text == time)

    def enter_row(self, number, weekday, time):
        """The weekday counts from 1 for Monday; 0 is every day."""
        self.choose(f"Row {number}, weekday", weekday)
        self.desktop.key("Tab")
        field = self.desktop.find("spin button", f"Row {number}, time")
        wait_for("the keyboard in the time", lambda: field.focused)
        self.enter_time(field, time)

    def enter_rows(self, rows):
        for number, (weekday, time) in enumerate(rows, 1):
            if number > 1:
                self.desktop.find("push button", f"Row {number - 1}, add a row below").click()
                self.desktop.find("combo box", f"Row {number}, weekday")
            self.enter_row(number, weekday, time)

    def suspend(self, start, end):
        self.check("Suspend backups from")
        for name, time in (("from", start), ("until", end)):
            self.desktop.key("Tab")
            field = self.desktop.find("spin button", f"Suspend backups {name}")
            wait_for("the keyboard in the time", lambda shown=field: shown.focused)
            self.enter_time(field, time)

    def press_apply(self):
        self.desktop.find("push button", "Apply").click()

    def answer_prompt(self, button):
        prompt = self.desktop.find("dialog", "Authenticate")
        expect("You must authenticate to change the product settings." in prompt.texts(), "the prompt's text is missing")
        prompt.button(button).click()
        self.desktop.wait_gone("dialog", "Authenticate")

    def answer_alert(self, message, informative, button, buttons):
        """The alert has exactly these texts and buttons; the button is pressed."""
        alert = self.desktop.dialog(message)
        texts = alert.texts()
        expect(any(informative in text for text in texts), f"{informative!r} is not among {texts}")
        shown = [node.name for node in alert.nodes() if node.role == "push button" and node.showing]
        expect(sorted(shown) == sorted(buttons), f"the buttons are {shown}")
        alert.button(button).click()
        wait_for("the alert to close", lambda: not self.is_alert_shown(message))

    def answer_applied(self):
        self.answer_alert(APPLIED, ENFORCED, "OK", ["OK"])
        self.answer_missing_program()

    def answer_missing_program(self):
        """The second sheet, which comes as long as nothing can make a backup."""
        if not os.path.exists(self.sandbox.path(PROGRAM)):
            self.answer_alert(NO_PROGRAM, "No backups are made while no backup program is chosen.", "Later",
                              ["Choose…", "Later"])

    def is_alert_shown(self, message):
        return any(message in node.texts() for role in ("alert", "dialog") for node in self.desktop.matching(role))

    def expect_no_prompt(self):
        time.sleep(0.5)
        expect(not self.desktop.is_shown("dialog", "Authenticate"), "the prompt came again")

    def expect_no_alert(self):
        time.sleep(0.5)
        shown = [node.texts() for role in ("alert", "dialog") for node in self.desktop.matching(role)]
        expect(not shown, f"an alert is shown: {shown}")

    # What is stored and logged

    def stored(self):
        return self.sandbox.stored_settings()

    def files(self):
        """The content of every file below the root that tells how the machine is set up."""
        content = {}
        for folder, folders, names in os.walk(self.sandbox.root):
            inside = os.path.relpath(folder, self.sandbox.root)
            folders[:] = [name for name in folders if os.path.normpath(os.path.join(inside, name)) not in PASSING]
            for name in names:
                with contextlib.suppress(FileNotFoundError), open(os.path.join(folder, name), "rb") as file:
                    content[os.path.normpath(os.path.join(inside, name))] = file.read()
        return content

    def helper_log(self):
        path = self.sandbox.path("var/log/system.jsonl")
        if not os.path.exists(path):
            return ""
        with open(path, encoding="utf-8") as file:
            return file.read()

    # The stories

    def a_schedule_is_fetched_edited_and_applied_for_real(self):
        self.start_all()
        self.enter_interval(90)
        self.press_apply()
        self.answer_prompt("Authenticate")
        self.answer_applied()
        expect(self.stored()["BackupsMode"] == "Interval" and self.stored()["Interval"] == {"Minutes": 90},
               f"stored is {self.stored()}")

        before = os.stat(self.sandbox.path(SETTINGS))
        self.press_apply()
        self.answer_alert(ALREADY, "already the ones installed in your system", "OK", ["OK"])
        after = os.stat(self.sandbox.path(SETTINGS))
        expect((before.st_ino, before.st_mtime_ns) == (after.st_ino, after.st_mtime_ns), "the file was written again")

        # The grant is kept: a second change does not ask.
        self.enter_interval(48, unit=1)
        self.press_apply()
        self.expect_no_prompt()
        self.answer_applied()
        expect(self.stored()["Interval"] == {"Days": 2}, f"stored is {self.stored()}")
        self.quit_application()

    def the_prompt_that_is_dismissed_changes_nothing_and_says_nothing(self):
        self.start_all()
        self.enter_interval(45)
        self.press_apply()
        self.answer_prompt("Cancel")
        self.expect_no_alert()
        expect(self.stored() is None, "something was stored")
        expect(self.desktop.find("text", "Interval").text == "45", "the edit was lost")
        self.quit_application()

    def a_helper_that_was_killed_is_told_and_reached_again_when_it_is_back(self):
        self.start_all()
        self.kill_helper()
        self.enter_interval(30)
        self.press_apply()
        self.answer_prompt("Authenticate")
        self.answer_alert(FAILED, UNREACHABLE, "OK", ["Go to Web Site", "Ask for Support", "OK"])
        expect(self.stored() is None, "something was stored")

        self.sandbox.start_helper()
        self.press_apply()
        self.expect_no_prompt()
        self.answer_applied()
        expect(self.stored()["Interval"] == {"Minutes": 30}, f"stored is {self.stored()}")
        self.quit_application()

    def without_a_helper_the_launch_says_what_is_wrong_and_ends(self):
        self.start_application()
        self.answer_alert(NOT_FETCHED, UNREACHABLE, "OK", ["Go to Web Site", "Ask for Support", "OK"])
        wait_for("the application to end", lambda: self.application.poll() is not None)

        os.remove(self.sandbox.path(TOOL))
        self.start_application()
        self.answer_alert(NOT_FETCHED, "The background scheduler is not installed.", "OK", ["Go to Web Site", "OK"])
        wait_for("the application to end", lambda: self.application.poll() is not None)
        expect(not self.desktop.is_shown("frame", "Brevane"), "the main window is shown")

    def the_schedule_is_still_there_after_a_restart(self):
        self.start_all()
        self.enter_interval(3, unit=3)
        self.press_apply()
        self.answer_prompt("Authenticate")
        self.answer_applied()
        self.quit_application()
        self.kill_helper()
        self.sandbox.start_helper()

        self.start_application()
        self.desktop.find("frame", "Brevane")
        expect(self.desktop.find("check box", "Back up automatically:?").checked, "backups are shown as off")
        self.desktop.find("combo box", "Interval")
        self.desktop.find("combo box", "weeks")
        expect(self.desktop.find("text", "Interval").text == "3", "the interval is another")
        self.press_apply()
        self.answer_alert(ALREADY, "already the ones installed in your system", "OK", ["OK"])
        self.quit_application()

    def the_schedule_of_a_week_is_applied_and_seen_again(self):
        self.give_battery()
        week = [(day, time) for day in range(1, 6) for time in ("09:00", "17:30")] + [(7, "03:00")]
        self.start_all()
        self.choose_calendar()
        self.enter_rows(week)
        self.check("Back up as soon as possible after a missed time")
        self.suspend("22:00", "06:00")
        expect(not self.desktop.find("check box", "Back up on battery power").checked, "backups on battery are on")
        self.press_apply()
        self.answer_prompt("Authenticate")
        self.answer_applied()
        stored = self.stored()
        entries = [{"Weekday": day, "Hour": int(time[:2]), "Minute": int(time[3:])} for day, time in week]
        expect(stored["BackupsMode"] == "CalendarIntervals", f"stored is {stored}")
        expect(stored["CalendarIntervals"] == {"Intervals": entries, "ASAP": True}, f"stored is {stored}")
        expect(stored["Suspend"] is True and stored["SuspendSettings"]
               == {"StartHour": 22, "StartMinute": 0, "EndHour": 6, "EndMinute": 0}, f"stored is {stored}")
        expect(stored["AllowBattery"] is False, f"stored is {stored}")
        self.quit_application()
        self.kill_helper()
        self.sandbox.start_helper()

        self.start_application()
        self.desktop.find("frame", "Brevane")
        desktop = self.desktop
        names = ["", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"]
        wait_for("the keyboard on the first check box",
                 lambda: desktop.find("check box", "Back up automatically:?").focused)
        desktop.key("Tab")  # to the mode; the rows follow
        for number, (day, time) in enumerate(week, 1):
            desktop.key("Tab")
            pop_up = desktop.find("combo box", f"Row {number}, weekday")
            wait_for(f"the keyboard in row {number}", lambda shown=pop_up: shown.focused)
            expect(pop_up.name == names[day], f"row {number} shows {pop_up.name}")
            shown = desktop.find("spin button", f"Row {number}, time").text
            expect(shown == time, f"row {number} shows {shown}")
            desktop.key("Tab", "Tab", "Tab", "Tab")  # hour, minute, the two buttons
        asap = desktop.find("check box", "Back up as soon as possible after a missed time")
        expect(asap.checked, "not as soon as possible")
        expect(desktop.find("spin button", "Suspend backups from").text == "22:00", "another start")
        expect(desktop.find("spin button", "Suspend backups until").text == "06:00", "another end")
        self.press_apply()
        self.answer_alert(ALREADY, "already the ones installed in your system", "OK", ["OK"])
        self.quit_application()

    def rows_come_and_go_and_the_last_one_stays(self):
        self.start_all()
        self.choose_calendar()
        self.enter_rows([(0, "08:15"), (6, "12:00"), (7, "23:59")])
        self.desktop.find("push button", "Row 2, remove this row").click()
        wait_for("two rows", lambda: not self.desktop.is_shown("combo box", "Row 3, weekday"))
        self.press_apply()
        self.answer_prompt("Authenticate")
        self.answer_applied()
        expect(self.stored()["CalendarIntervals"]["Intervals"]
               == [{"Hour": 8, "Minute": 15}, {"Weekday": 7, "Hour": 23, "Minute": 59}], f"stored is {self.stored()}")
        self.desktop.find("push button", "Row 1, remove this row").click()
        wait_for("one row", lambda: not self.desktop.is_shown("combo box", "Row 2, weekday"))
        expect(not self.desktop.find("push button", "Row 1, remove this row").enabled, "the last row can be removed")
        self.quit_application()

    def the_keyboard_alone_is_enough(self):
        self.start_all()
        desktop = self.desktop
        wait_for("the keyboard on the first check box",
                 lambda: desktop.find("check box", "Back up automatically:?").focused)
        desktop.key("space", "Tab", "Down")
        desktop.find("combo box", "Interval")
        desktop.key("Tab")
        field = desktop.find("text", "Interval")
        wait_for("the keyboard in the field", lambda: field.focused)
        desktop.key("ctrl+a")
        desktop.type("59")
        desktop.key("Up")
        wait_for("one more", lambda: field.text == "60")
        desktop.key("BackSpace", "BackSpace", "BackSpace")
        wait_for("the last digit to stay", lambda: field.text == "6")
        desktop.type("0x")
        wait_for("only digits", lambda: field.text == "60")
        desktop.key("alt+a")
        self.answer_prompt("Authenticate")
        desktop.dialog(APPLIED)
        desktop.key("Return")
        wait_for("the alert to close", lambda: not self.is_alert_shown(APPLIED))
        self.answer_missing_program()
        expect(self.stored()["Interval"] == {"Hours": 60}, f"stored is {self.stored()}")
        self.quit_application()

    def backups_are_followed_in_the_window_activity(self):
        if not os.path.exists(BORG):
            raise Skipped("borg is not installed")
        self.sandbox.choose_borg()
        self.start_all()
        self.desktop.key("ctrl+3")
        self.desktop.find("frame", "Activity")
        self.desktop.find("label", "Backups are off\\.")
        self.desktop.find("label", "No backup yet\\.")

        self.desktop.find("push button", "Back Up Now").click()
        self.answer_prompt("Authenticate")
        self.desktop.find("label", "Last backup: (Yesterday|Today), .*, successful\\.", seconds=60)
        archives = subprocess.run([BORG, "list", "--short", self.sandbox.path("repository")], capture_output=True, text=True,
                                  env={**self.sandbox.environment, "BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK": "yes"},
                                  check=True).stdout.split()
        expect(len(archives) == 1, f"the archives are {archives}")

        # The edits are told at once, and what comes of them when they are applied.
        self.desktop.key("ctrl+0")
        self.enter_interval(90)
        self.desktop.find("label", "The edited settings are not applied yet\\.")
        self.press_apply()
        self.expect_no_prompt()
        self.answer_applied()
        self.desktop.find("label", "Next backup: (Today|Tomorrow), .*")
        self.desktop.wait_gone("label", "The edited settings are not applied yet\\.")

        self.kill_helper()
        self.sandbox.start_helper()
        self.desktop.find("label", "Next backup: (Today|Tomorrow), .*")
        self.quit_application()

    def the_first_start_leads_to_a_chosen_program_and_an_applied_schedule(self):
        if not os.path.exists(BORG):
            raise Skipped("borg is not installed")
        self.sandbox.settle(DidDismissFirstStart=False)
        self.start_all(WELCOME)
        expect(not self.desktop.is_shown("frame", "Brevane"), "the main window is there already")
        expect(self.desktop.find("text", "Folder to back up").text == self.sandbox.path("home"), "another folder")
        repository = self.sandbox.path("repository")
        self.enter_text("Folder that the backups go to", "/etc/backups")
        self.choose("When Inactive|Every Day", 1)
        self.desktop.key("Tab")
        time_field = self.desktop.find("spin button", "Time of the backup")
        wait_for("the keyboard in the time", lambda: time_field.focused)
        self.enter_time(time_field, "21:30")
        self.desktop.find("push button", "Start Backups").click()
        self.answer_prompt("Authenticate")
        self.desktop.find("label", "Backups cannot go to a folder of the system's own\\..*")
        expect(self.stored() is None and not os.path.exists(self.sandbox.path(PROGRAM)), "something was stored")

        self.enter_text("Folder that the backups go to", repository)
        self.desktop.key("Return")
        self.expect_no_prompt()
        self.answer_alert(APPLIED, ENFORCED, "OK", ["OK"])
        self.desktop.find("frame", "Brevane")
        expect(not self.desktop.is_shown("frame", WELCOME), "the page is still there")
        expect(self.desktop.find("check box", "Back up automatically:?").checked, "backups are shown as off")
        stored = self.stored()
        expect(stored["Backups"] is True and stored["BackupsMode"] == "CalendarIntervals", f"stored is {stored}")
        expect(stored["CalendarIntervals"] == {"Intervals": [{"Hour": 21, "Minute": 30}], "ASAP": True},
               f"stored is {stored}")
        with open(self.sandbox.path(PROGRAM), "rb") as file:
            chosen = plistlib.load(file)
        fields = {"Folders": [self.sandbox.path("home")], "Repository": repository}
        expect(chosen == {"Program": "borg", "Fields": fields, "PreventSleep": False}, f"chosen is {chosen}")
        self.quit_application()
        self.start_application()
        self.desktop.find("frame", "Brevane")
        expect(not self.desktop.is_shown("frame", WELCOME), "the page came again")
        self.quit_application()

    def escape_leaves_the_first_start_and_everything_as_it_was(self):
        self.sandbox.settle(DidDismissFirstStart=False)
        self.start_all(WELCOME)
        self.choose("When Inactive|Every Day", 1)
        before = self.files()
        expect(len(before) > 20, f"only {sorted(before)} are compared")
        self.desktop.key("Escape")
        self.desktop.find("frame", "Brevane")
        self.desktop.wait_gone("frame", WELCOME)
        expect(not self.desktop.find("check box", "Back up automatically:?").checked, "backups are shown as on")
        expect(self.sandbox.defaults() == {"DidAskAboutAutoUpdates": True, "DidDismissFirstStart": True},
               f"the defaults are {self.sandbox.defaults()}")
        after = self.files()
        del before[DEFAULTS], after[DEFAULTS]  # which remembers that the page is not wanted
        changed = [name for name in before.keys() | after.keys() if before.get(name) != after.get(name)]
        expect(not changed, f"changed: {changed}")
        self.quit_application()
        self.start_application()
        self.desktop.find("frame", "Brevane")
        expect(not self.desktop.is_shown("frame", WELCOME), "the page came again")
        self.quit_application()

    def a_disk_that_is_full_keeps_the_old_schedule(self):
        preferences = self.sandbox.path("Library/Preferences")
        if os.geteuid() != 0 or subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "brevane", preferences],
                                               stderr=subprocess.DEVNULL, check=False).returncode != 0:
            raise Skipped("a small file system cannot be mounted here")
        try:
            self.start_all()
            self.enter_interval(20)
            self.press_apply()
            self.answer_prompt("Authenticate")
            self.answer_applied()
            with contextlib.suppress(OSError), open(os.path.join(preferences, "filler"), "wb", buffering=0) as file:
                while True:
                    file.write(b"x" * 512)
            self.enter_interval(21)
            self.press_apply()
            self.answer_alert(FAILED, "You should try installing the latest version available from the web site.", "OK",
                              ["Go to Web Site", "Ask for Support", "OK"])
            expect(self.stored()["Interval"] == {"Minutes": 20}, f"stored is {self.stored()}")
            self.quit_application()
        finally:
            self.sandbox.end(self.application)
            self.sandbox.end(self.sandbox.helper)
            subprocess.run(["umount", "-l", preferences], check=False)


def run(kind, build, name):
    """Plays a story of this class; the exit status."""
    with tempfile.TemporaryDirectory(prefix="brevane-story-") as folder:
        story = kind(build, folder)
        try:
            getattr(story, name)()
        except Skipped as reason:
            print(f"SKIPPED: {reason}")
        except (Failure, plistlib.InvalidFileException) as failure:
            print(f"FAILED: {failure}")
            for node in story.desktop.nodes():
                if node.showing and node.name:
                    print(f"  {node.role}: {node.name}")
            return 1
        finally:
            story.close()
    return 0


if __name__ == "__main__":
    sys.exit(run(Story, *sys.argv[1:]))
