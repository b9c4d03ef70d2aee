"""A day that the sandbox's system log remembers, so that the console has something to show."""
import datetime
import json
import os

STORE = "var/log/system.jsonl"
LEGACY_STORE = "var/log/asl.jsonl"
PRODUCT, TIME_MACHINE = "com.zerkolin.brevane", "com.apple.TimeMachine"
APPLICATION = "/opt/brevane/Library/Brevane/bin/brevane"
SCHEDULER = "/Library/Brevane/com.zerkolin.brevane.scheduler"
BACKUPD = "/System/Library/CoreServices/backupd.bundle/Contents/Resources/backupd"


def backup(number):
    """What one backup logs: seconds after its beginning, type, text."""
    yield 0, "Default", "Starting automatic backup" if number % 6 else "Starting manual backup"
    yield 1, "Debug", "Mounting the backup volume"
    yield 2, "Default", "Thermal pressure level 0"
    yield 3, "Default", "Backing up to Backup: /Volumes/Backup/Backups.backupdb"
    yield 44, "Info", f"Found {1200 + 37 * number} changed items"
    if number % 7 == 5:
        yield 51, "Error", "Could not copy /Users/Shared/locked: permission denied"
    yield 95, "Default", f"Copied {118 + 13 * number} files"
    yield 97, "Default", "Backup completed successfully."


def records(now):
    """One backup an hour, the scheduler that starts it, and the application that was opened twice."""
    for number in range(24):
        start = now - datetime.timedelta(hours=24 - number, minutes=-7)
        yield start - datetime.timedelta(seconds=2), PRODUCT, "Default", "The interval is over: a backup is started.", SCHEDULER
        for seconds, kind, text in backup(number):
            yield start + datetime.timedelta(seconds=seconds, microseconds=1234 * number), TIME_MACHINE, kind, text, BACKUPD
        if number % 8 == 3:
            yield start + datetime.timedelta(minutes=5), PRODUCT, "Error", "No wired network: the backup was put off.", SCHEDULER
        if number in (2, 15):
            yield start + datetime.timedelta(minutes=12), PRODUCT, "Info", "Running version 1.0.0.1.", APPLICATION
            yield start + datetime.timedelta(minutes=19), PRODUCT, "Debug", "Connection interrupted with server.", APPLICATION


def line(date, subsystem, kind, text, path):
    return json.dumps({"timestamp": date.astimezone().strftime("%Y-%m-%d %H:%M:%S.%f%z"), "messageType": kind,
                       "subsystem": subsystem, "category": "General" if subsystem == TIME_MACHINE else "application",
                       "eventMessage": text, "processImagePath": path, "processID": 300})


def legacy_line(date, text):
    return json.dumps({"Time": str(int(date.timestamp())), "Sender": "com.apple.backupd", "Facility": "com.apple.backupd",
                       "Level": "Warning", "Message": text})


def seed(root):
    """Only where nothing has been logged yet."""
    store, legacy = os.path.join(root, STORE), os.path.join(root, LEGACY_STORE)
    if os.path.exists(store):
        return
    os.makedirs(os.path.dirname(store), exist_ok=True)
    day = sorted(records(datetime.datetime.now()), key=lambda record: record[0])
    with open(store, "w", encoding="utf-8") as file:
        file.writelines(line(*record) + "\n" for record in day)
    with open(legacy, "w", encoding="utf-8") as file:
        file.writelines(legacy_line(record[0], record[3]) + "\n" for record in day
                        if record[1] == TIME_MACHINE and record[2] != "Debug")
