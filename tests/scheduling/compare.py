#!/usr/bin/python3
"""Plays random scenarios with the helper's --simulate and with the model beside this file, and compares every line.

    compare.py PROGRAM [COUNT [SEED]]     COUNT scenarios (300) from SEED (1) on; ends at the first difference
"""
import copy
import datetime
import json
import os
import plistlib
import random
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import model  # noqa: E402

DAY = 86400
# Days on which something happens to the clocks of a zone.
PLACES = [
    ("Europe/Berlin", "2021-03-28"), ("Europe/Berlin", "2021-10-31"), ("Europe/Dublin", "2022-03-27"),
    ("Europe/Dublin", "2021-10-31"), ("America/New_York", "2021-03-14"), ("America/New_York", "2021-11-07"),
    ("Australia/Lord_Howe", "2021-10-03"), ("Australia/Lord_Howe", "2022-04-03"), ("Pacific/Apia", "2011-12-30"),
    ("Pacific/Apia", "2012-04-01"), ("Pacific/Kwajalein", "1993-08-21"), ("Asia/Kathmandu", "2022-05-01"),
    ("Antarctica/Troll", "2022-03-27"), ("Antarctica/Troll", "2021-10-31"), ("UTC", "2021-06-30"),
    ("America/Sao_Paulo", "2018-11-04"), ("America/Sao_Paulo", "2018-02-18"), ("Asia/Beirut", "2021-03-28"),
    ("America/Havana", "2021-11-07"), ("America/St_Johns", "2006-10-29"), ("America/St_Johns", "2007-03-11"),
    ("Atlantic/Azores", "2021-10-31"), ("Pacific/Chatham", "2022-04-03"), ("Asia/Pyongyang", "2015-08-15"),
    ("Africa/Casablanca", "2022-03-27"), ("America/Caracas", "2016-05-01"), ("Europe/Moscow", "2014-10-26"),
    ("Asia/Kolkata", "2020-02-28"), ("Pacific/Honolulu", "2019-12-31"), ("Australia/Sydney", "2020-04-05"),
    ("Europe/Berlin", "2026-10-25"), ("Africa/Cairo", "2026-04-24"), ("America/Mexico_City", "2022-10-30"),
    ("America/Nuuk", "2024-03-31"),
]
ZONES = sorted({zone for zone, _ in PLACES})


def chance(source, probability):
    return source.random() < probability


def odd_value(source):
    return source.choice([True, False, -1, 0, 1, 7, 8, 24, 31, 32, 60, 2.9, 1.0, -0.5, "9", b"1", [], {}, 10 ** 12,
                          datetime.datetime(2020, 1, 1)])


def minute_near(source, minutes):
    """A minute of the day, often one of those at which something happens."""
    if minutes and chance(source, 0.6):
        return (source.choice(minutes) + source.choice([0, 0, 0, 1, -1, 5, 10, 11, 30, -10])) % 1440
    return source.randrange(1440)


def entry(source, minutes):
    minute = minute_near(source, minutes)
    made = {"Hour": minute // 60, "Minute": minute % 60}
    if chance(source, 0.3):
        made["Weekday"] = source.randrange(0, 8)
    if chance(source, 0.15):
        made["Day"] = source.choice([1, 28, 29, 30, 31, source.randrange(1, 32)])
    for key in list(made):
        if chance(source, 0.04):
            del made[key]
    if chance(source, 0.05):
        made[source.choice(["Hour", "Minute", "Weekday", "Day"])] = odd_value(source)
    return made


def record(source, minutes):
    mode = source.choice(["WhenInactive", "Interval", "CalendarIntervals", "CalendarIntervals", "CalendarIntervals"])
    made = {"Backups": True, "BackupsMode": mode}
    if mode == "Interval" or chance(source, 0.1):
        unit = source.choice(["Minutes", "Minutes", "Hours", "Days", "Days", "Weeks"])
        most = {"Minutes": 90, "Hours": 12, "Days": 3, "Weeks": 1}[unit]
        made["Interval"] = {unit: source.randint(1, most)}
        if chance(source, 0.1):
            made["Interval"][source.choice(["Minutes", "Hours", "Days", "Weeks"])] = odd_value(source)
    if mode == "CalendarIntervals" or chance(source, 0.1):
        entries = [entry(source, minutes) for _ in range(source.choice([0, 1, 1, 2, 3, 6, 20]))]
        if chance(source, 0.05):
            entries.append(odd_value(source))
        made["CalendarIntervals"] = {"Intervals": entries, "ASAP": chance(source, 0.5)}
        if chance(source, 0.05):
            made["CalendarIntervals"][source.choice(["ASAP", "Intervals"])] = odd_value(source)
    if chance(source, 0.35):
        start, end = minute_near(source, minutes), minute_near(source, minutes)
        made["Suspend"] = chance(source, 0.9)
        made["SuspendSettings"] = {"StartHour": start // 60, "StartMinute": start % 60,
                                   "EndHour": end // 60, "EndMinute": end % 60}
        if chance(source, 0.15):
            made["SuspendSettings"].pop(source.choice(list(made["SuspendSettings"])))
        if chance(source, 0.1):
            made["SuspendSettings"][source.choice(["StartHour", "EndMinute"])] = odd_value(source)
    for key in ("DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired", "AllowBattery"):
        if chance(source, 0.5):
            made[key] = chance(source, 0.4 if key == "AllowBattery" else 0.8)
    if chance(source, 0.06):
        made["Disabled"] = chance(source, 0.5)
    if chance(source, 0.05):
        made["Backups"] = False
    if chance(source, 0.06):
        made[source.choice(["Backups", "BackupsMode", "Interval", "CalendarIntervals", "Suspend", "SuspendSettings",
                            "Disabled", "AllowBattery", "WhenInactive"])] = odd_value(source)
    return made


def another_record(source, before, minutes):
    """One like the one before, or quite another."""
    if chance(source, 0.4):
        return record(source, minutes)
    made = copy.deepcopy(before)
    key = source.choice(["Suspend", "AllowBattery", "Disabled", "Backups", "BackupsMode", "WhenInactive", "ASAP", "none"])
    if key == "ASAP" and isinstance(made.get("CalendarIntervals"), dict):
        made["CalendarIntervals"]["ASAP"] = not made["CalendarIntervals"].get("ASAP")
    elif key == "BackupsMode":
        made[key] = source.choice(["WhenInactive", "Interval", "CalendarIntervals", "Other"])
    elif key == "WhenInactive":
        made[key] = source.choice([{}, {"A": 1}])
    elif key not in ("none", "ASAP"):
        made[key] = not made.get(key, False)
    return made


def conditions(source, share):
    likely = {"Battery": 0.6, "Passive": 0.5, "SleepPreventers": 0.5, "Wired": 0.5, "InUse": 0.5, "HasBattery": 0.9}
    return {key: chance(source, probability) for key, probability in likely.items() if chance(source, share)}


def duration(source):
    return source.choice([0, 0, 1, 30, 59, 60, 61, 299, 600, 601, 1800, 3600, 7200, source.randrange(1, 40000), 100000])


def events(source, scenario, length, minutes):
    made = []
    before = scenario["Record"]
    for _ in range(source.choice([0, 0, 1, 2, 3, 5, 8, 15])):
        at = source.randrange(0, length + 1)
        if chance(source, 0.5):
            at -= (scenario["From"].second + at) % 60  # a whole minute of the clock
            at = max(at, 0) + source.choice([0, 0, 1, -1 if at > 0 else 0])
        kind = source.choice(["Set", "Set", "Set", "Zone", "Asleep", "Asleep", "ClockBy", "ClockBy", "Apply"])
        if kind == "Set":
            what = conditions(source, 0.4)
        elif kind == "Zone":
            what = source.choice(ZONES)
        elif kind == "Asleep":
            what = chance(source, 0.5)
        elif kind == "ClockBy":
            what = source.choice([1, -1, 60, -60, 599, 600, 601, -600, -1800, 1800, 3600, -3600, -3601, 7200, -7200,
                                  DAY, -DAY, source.randrange(-5000, 5000), source.choice([1, -1]) * source.randrange(3 * DAY)])
            if chance(source, 0.03):
                what = source.randrange(20, 45) * DAY
        else:
            what = before = another_record(source, before, minutes)
        made.append({"At": min(max(at, 0), length), kind: what})
    asleep = False
    made.sort(key=lambda event: event["At"])
    for event in made:  # nobody sleeps for ever
        if "Asleep" in event:
            asleep = event["Asleep"] = not asleep if chance(source, 0.9) else asleep
    return made


def scenario_of(seed):
    source = random.Random(seed)
    zone, date = source.choice(PLACES)
    if chance(source, 0.25):
        zone = source.choice(ZONES)
    begin = datetime.datetime.fromisoformat(date) + datetime.timedelta(
        seconds=source.choice([0, 0, source.randrange(-DAY, DAY), source.randrange(-DAY, DAY) // 60 * 60]))
    length = source.choice([0, 60, source.randrange(7200), source.randrange(7200), source.randrange(DAY),
                            source.randrange(3 * DAY), source.randrange(3 * DAY), 2 * DAY])
    if chance(source, 0.03):
        length = source.randrange(20, 45) * DAY
    made = {"Zone": zone, "From": begin, "Until": begin + datetime.timedelta(seconds=length)}
    base = int((begin - datetime.datetime(1970, 1, 1)).total_seconds())
    wall = (base + model.offset(zone, base)) // 60 % 1440
    minutes = [(wall + source.randrange(0, max(1, length // 60 + 1))) % 1440 for _ in range(3)] + [60, 120, 150, 180, 0]
    made["Record"] = record(source, minutes)
    if chance(source, 0.4):
        made["LastStart"] = begin - datetime.timedelta(seconds=source.choice([0, 60, 3600, source.randrange(3 * DAY)]))
    if chance(source, 0.75):
        made["Conditions"] = conditions(source, 0.6)
    if chance(source, 0.7):
        made["Duration"] = duration(source)
    if chance(source, 0.5):
        made["Results"] = [chance(source, 0.5) for _ in range(source.choice([1, 2, 5, 12]))]
    made["Events"] = events(source, made, length, minutes)
    return made


def by_program(program, scenario, folder):
    path = os.path.join(folder, "scenario.plist")
    with open(path, "wb") as file:
        plistlib.dump(scenario, file, fmt=plistlib.FMT_BINARY)
    run = subprocess.run([program, "--simulate", path], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        return [{"exit": run.returncode, "error": run.stderr}]
    return [json.loads(line) for line in run.stdout.splitlines()]


def by_model(scenario):
    length = (scenario["Until"] - scenario["From"]).total_seconds()
    return model.Model(copy.deepcopy(scenario)).run(every_second=length < 3600)


def differs(program, scenario, folder):
    try:
        return by_program(program, scenario, folder) != by_model(scenario)
    except Exception:  # a scenario that shrinking has made senseless
        return False


def smaller(scenario):
    """Scenarios with something less."""
    for index in reversed(range(len(scenario.get("Events", [])))):
        yield {**scenario, "Events": scenario["Events"][:index] + scenario["Events"][index + 1:]}
    for key in ("LastStart", "Conditions", "Duration", "Results", "Events"):
        if key in scenario:
            yield {name: value for name, value in scenario.items() if name != key}
    for key in scenario["Record"]:
        yield {**scenario, "Record": {name: value for name, value in scenario["Record"].items() if name != key}}
    for place, event in enumerate(scenario.get("Events", [])):
        for kind in ("Apply", "Set"):
            for key in event.get(kind, {}):
                less = {**event, kind: {name: value for name, value in event[kind].items() if name != key}}
                yield {**scenario, "Events": scenario["Events"][:place] + [less] + scenario["Events"][place + 1:]}
    calendar = scenario["Record"].get("CalendarIntervals")
    if isinstance(calendar, dict) and isinstance(calendar.get("Intervals"), list):
        for index in range(len(calendar["Intervals"])):
            less = {**calendar, "Intervals": calendar["Intervals"][:index] + calendar["Intervals"][index + 1:]}
            yield {**scenario, "Record": {**scenario["Record"], "CalendarIntervals": less}}
    length = int((scenario["Until"] - scenario["From"]).total_seconds())
    for less in (length // 2, length - DAY, length - 3600, length - 60):
        if 0 <= less < length and all(event["At"] <= less for event in scenario.get("Events", [])):
            yield {**scenario, "Until": scenario["From"] + datetime.timedelta(seconds=less)}
    if scenario["Zone"] != "UTC":
        yield {**scenario, "Zone": "UTC"}


def shrunk(program, scenario, folder):
    progress = True
    while progress:
        progress = False
        for candidate in smaller(scenario):
            if differs(program, candidate, folder):
                scenario, progress = candidate, True
                break
    return scenario


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    program = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 300
    first = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    lines = 0
    kinds = {}
    with tempfile.TemporaryDirectory(prefix="brevane-scheduling-") as folder:
        for seed in range(first, first + count):
            scenario = scenario_of(seed)
            found, expected = by_program(program, scenario, folder), by_model(scenario)
            lines += len(found)
            for line in expected:
                kinds[line["event"]] = kinds.get(line["event"], 0) + 1
            if found == expected:
                continue
            small = shrunk(program, scenario, folder)
            found, expected = by_program(program, small, folder), by_model(small)
            print(f"Scenario {seed} differs. Made smaller:\n{small!r}")
            place = next((index for index, pair in enumerate(zip(found, expected)) if pair[0] != pair[1]),
                         min(len(found), len(expected)))
            print("both:", *found[max(0, place - 6):place], sep="\n    ")
            print("program:", *found[place:place + 4], sep="\n    ")
            print("model:", *expected[place:place + 4], sep="\n    ")
            return 1
    print(f"{count} scenarios from {first} on, {lines} lines alike: {kinds}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
