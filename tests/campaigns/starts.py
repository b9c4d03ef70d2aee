"""Kills the helper at random moments around the start and the end of a scheduled backup with a real program, again and
again: for one due moment there is one start and no second archive, the moment is told, and the state is whole."""
import datetime
import os
import plistlib
import random
import subprocess
import time

import machine
from wire import ask

DEFAULT_COUNT = 300
BORG = "/usr/bin/borg"
KILLS_OF_A_MOMENT = 2


class Story:
    def __init__(self, host):
        self.host = host
        self.state = os.path.join(host.root, "var/db/brevane/state.plist")
        self.repository = os.path.join(host.root, "repository")
        self.environment = dict(os.environ, BORG_BASE_DIR=os.path.join(host.folder, "borg"),
                                BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK="yes")
        data = os.path.join(host.root, "data")
        os.makedirs(data)
        with open(os.path.join(data, "file"), "w", encoding="ascii") as file:
            file.write("content\n")
        ask(12, {"Program": "borg", "Fields": {"Folders": [data], "Repository": self.repository}})
        ask(3)  # makes the repository
        machine.wait_for(lambda: "LastSucceeded" in ask(5), 60)
        record = {key: value for key, value in ask(1).items() if key != "Disabled"}
        minutes = [{"Hour": hour, "Minute": minute} for hour in range(24) for minute in range(60)]
        record.update(Backups=True, BackupsMode="CalendarIntervals", AllowBattery=True, Suspend=False,
                      DontRunWhenPassive=False, DontRunWithSleepPreventers=False, DontRunWhenNotNetworkWired=False,
                      CalendarIntervals={"ASAP": True, "Intervals": minutes})
        ask(2, record)
        ask(5)

    def begin_with_a_due_moment(self):
        """As if the helper had been away since before the last full minute, and nothing was told yet."""
        now = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None, microsecond=0)
        if now.second > 45:  # the next moment is no part of this one
            time.sleep(61 - now.second)
            return self.begin_with_a_due_moment()
        due = now.replace(second=0)
        before = due - datetime.timedelta(seconds=30)
        with open(self.state, "rb") as file:
            state = plistlib.load(file)
        state.update(Since=before, Settled=before, Written=before, LastStart=before, LastEnd=before, Failures=0, Journal=[])
        state.pop("Owed", None)
        with open(self.state, "wb") as file:
            plistlib.dump(state, file, fmt=plistlib.FMT_BINARY)
        return due

    def archives(self):
        listed = subprocess.run([BORG, "list", "--short", self.repository], env=self.environment, capture_output=True,
                                text=True, check=True)
        return set(listed.stdout.split())

    def spawn(self):
        self.host.helper = subprocess.Popen([machine.HELPER, "--root", self.host.root], stderr=subprocess.DEVNULL)

    def is_whole(self):
        try:
            with open(self.state, "rb") as file:
                return "Journal" in plistlib.load(file) and not os.path.exists(self.state + ".damaged")
        except (OSError, plistlib.InvalidFileException):
            return False


def run(count):
    if not os.path.exists(BORG):
        print("SKIPPED: borg is not installed")
        return 0
    machine.enter()
    host = machine.Machine()
    story = Story(host)
    chance = random.Random(20261122)
    kills = moments = doubled = lost = torn = unended = interrupted = 0
    while kills < count:
        machine.wait_for(lambda: ask(5)["State"] != "running", 60)
        host.kill()
        due = story.begin_with_a_due_moment()
        before = story.archives()
        for _ in range(min(chance.randint(1, KILLS_OF_A_MOMENT), count - kills)):
            story.spawn()
            time.sleep(chance.uniform(0, 2))
            host.kill()
            kills += 1
            torn += not story.is_whole()
        host.start()
        machine.wait_for(lambda: ask(5)["State"] != "running", 60)
        journal = ask(5)["Journal"]
        starts = [entry for entry in journal if entry["Event"] == "start"]
        ends = [entry for entry in journal if entry["Event"] == "end"]
        of_due = [entry for entry in starts if entry.get("Due") == due]
        moments += 1
        doubled += len(of_due) > 1 or len(story.archives() - before) > len(starts)
        lost += not of_due and not any(entry["Event"] == "missed" for entry in journal)
        unended += len(ends) != len(starts)
        interrupted += any(not entry["Succeeded"] for entry in ends)
    print(f"kills around a backup: {kills}, of {moments} due moments: started twice {doubled}, neither started nor told"
          f" {lost}, state torn {torn}, without an end {unended}; failed, as it did not come to life, {interrupted}")
    return 1 if doubled or lost or torn or unended else 0
