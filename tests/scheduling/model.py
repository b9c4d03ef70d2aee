"""When a backup starts, a second time and as plainly as it can be said: second after second, with Python's own time
zones. It shares no idea and no line with the program that it is compared with."""
import bisect
import datetime
import functools
import zoneinfo

MINUTE, HOUR, DAY = 60, 3600, 86400
UTC = datetime.timezone.utc
EPOCH = datetime.datetime(1970, 1, 1)
RETRIES = (300, 900, 2700, 21600)
ORDER = ("suspended", "battery", "passive", "sleepPreventers", "notWired", "running")


# Reading a record: a missing key, or a value of another type, is false, 0 or absent.

def is_number(value):
    return isinstance(value, (bool, int, float))


def truth(dictionary, key):
    value = dictionary.get(key)
    return bool(value) if is_number(value) else False


def dictionary_of(dictionary, key):
    value = dictionary.get(key)
    return value if isinstance(value, dict) else {}


def whole(dictionary, key):
    value = dictionary.get(key)
    return int(value) if is_number(value) else 0


def mode_of(record):
    mode = record.get("BackupsMode")
    return mode if mode in ("Interval", "CalendarIntervals") else "WhenInactive"


def is_on(record):
    return truth(record, "Backups") and not truth(record, "Disabled")


def same_schedule(one, other):
    return (truth(one, "Disabled") == truth(other, "Disabled") and truth(one, "Backups") == truth(other, "Backups")
            and mode_of(one) == mode_of(other)
            and dictionary_of(one, mode_of(one)) == dictionary_of(other, mode_of(other)))


def interval_of(record):
    """The count and the unit."""
    settings = dictionary_of(record, "Interval")
    for unit in ("Weeks", "Days", "Hours", "Minutes"):
        if is_number(settings.get(unit)):
            return min(max(int(settings[unit]), 1), 999), unit
    return 1, "Minutes"


def entries_of(record):
    """(weekday or None, day or None, hour, minute) of each entry that counts."""
    found = []
    entries = dictionary_of(record, "CalendarIntervals").get("Intervals")
    for entry in entries if isinstance(entries, list) else []:
        if not isinstance(entry, dict):
            continue
        values = [entry.get(key) for key in ("Weekday", "Day", "Hour", "Minute")]
        if any(value is not None and not isinstance(value, (bool, int)) for value in values):
            continue
        if all(value is None for value in values[:3]):
            continue
        ranges = (range(0, 8), range(1, 32), range(0, 24), range(0, 60))
        if any(value is not None and int(value) not in allowed for value, allowed in zip(values, ranges)):
            continue
        weekday, day, hour, minute = (None if value is None else int(value) for value in values)
        found.append((7 if weekday == 0 else weekday, day, hour or 0, minute or 0))
    return found


# Local time.

@functools.lru_cache(maxsize=None)
def zone_named(name):
    return zoneinfo.ZoneInfo(name)


@functools.lru_cache(maxsize=1 << 18)
def offset(zone, instant):
    there = datetime.datetime.fromtimestamp(instant, UTC).astimezone(zone_named(zone))
    return int(there.utcoffset().total_seconds())


def wall(zone, instant):
    return EPOCH + datetime.timedelta(seconds=instant + offset(zone, instant))


def time_of_day(zone, instant):
    return (instant + offset(zone, instant)) % DAY


def instant_of(zone, naive):
    """The instant that a local date and time stands for."""
    first, second = (int(naive.replace(tzinfo=zone_named(zone), fold=fold).timestamp()) for fold in (0, 1))
    if wall(zone, first) == naive:
        return first
    # A gap: the second reading lies before it, the first one behind.
    before = offset(zone, second)
    while first - second > 1:
        middle = (first + second) // 2
        if offset(zone, middle) == before:
            second = middle
        else:
            first = middle
    return first


@functools.lru_cache(maxsize=64)
def moments_between(zone, entries, begin, end):
    """All moments of calendar entries, sorted, each once."""
    moments = set()
    day = wall(zone, begin).date() - datetime.timedelta(days=2)
    last = wall(zone, end).date() + datetime.timedelta(days=2)
    while day <= last:
        for weekday, number, hour, minute in entries:
            if weekday in (None, day.isoweekday()) and number in (None, day.day):
                moments.add(instant_of(zone, datetime.datetime.combine(day, datetime.time(hour, minute))))
        day += datetime.timedelta(days=1)
    return sorted(moments)


def seconds_since_1970(date):
    return int((date - EPOCH).total_seconds())


def text_of(instant):
    return (EPOCH + datetime.timedelta(seconds=instant)).strftime("%Y-%m-%dT%H:%M:%SZ")


class Model:
    def __init__(self, script):
        self.script = script
        self.record = script["Record"]
        self.zone = script["Zone"]
        self.begin = seconds_since_1970(script["From"])
        self.length = seconds_since_1970(script["Until"]) - self.begin
        self.events = list(script.get("Events", []))
        self.results = list(script.get("Results", []))
        self.conditions = {"Battery": False, "Passive": False, "SleepPreventers": False, "Wired": True,
                           "InUse": False, "HasBattery": True, **script.get("Conditions", {})}
        self.elapsed = 0
        self.steps = 0
        self.since = self.settled = self.begin
        self.last_start = self.last_end = None
        if "LastStart" in script:
            self.last_start = self.last_end = seconds_since_1970(script["LastStart"])
        self.owed = self.kept = None
        self.failures = 0
        self.unused = None if self.conditions["InUse"] else 0
        self.asleep = False
        self.left = None        # seconds that the running backup still needs
        self.told = []          # reasons at the look before
        self.held = {}          # reasons at instants of the clock
        self.lines = []
        self.known = None       # the record and zone of which the moments are known, and they
        steps = [event["ClockBy"] for event in self.events if "ClockBy" in event]
        self.reach = (self.begin - sum(-step for step in steps if step < 0) - 3 * DAY,
                      self.begin + self.length + sum(step for step in steps if step > 0) + 40 * DAY)

    @property
    def clock(self):
        return self.begin + self.steps + self.elapsed

    def is_calendar(self, asap):
        return (is_on(self.record) and mode_of(self.record) == "CalendarIntervals"
                and truth(dictionary_of(self.record, "CalendarIntervals"), "ASAP") == asap)

    def is_daily(self):
        return is_on(self.record) and mode_of(self.record) == "Interval" and interval_of(self.record)[1] in ("Days", "Weeks")

    # Moments

    def calendar(self):
        if self.known is None or self.known[0] is not self.record or self.known[1] != self.zone:
            moments = moments_between(self.zone, tuple(entries_of(self.record)), *self.reach)
            self.known = self.record, self.zone, moments
        return self.known[2]

    def unsettled(self):
        moments = self.calendar()
        return moments[bisect.bisect_right(moments, self.settled):]

    def first_after(self, instant):
        moments = self.calendar()
        place = bisect.bisect_right(moments, instant)
        return moments[place] if place < len(moments) else None

    def interval_moment(self):
        count, unit = interval_of(self.record)
        base = self.since if self.last_start is None else self.last_start
        made_from = None
        if unit in ("Minutes", "Hours"):
            due = base + count * {"Minutes": MINUTE, "Hours": HOUR}[unit]
        else:
            made_from = time_of_day(self.zone, base) if self.kept is None else self.kept
            date = wall(self.zone, base).date() + datetime.timedelta(days=count * {"Days": 1, "Weeks": 7}[unit])
            due = instant_of(self.zone, datetime.datetime.combine(date, datetime.time())
                             + datetime.timedelta(seconds=made_from))
        if self.last_end is not None:
            due = max(due, self.last_end + 60)
        return due, made_from

    def unused_moment(self):
        """None while somebody uses the computer."""
        if self.unused is None:
            return None
        return self.clock - ((self.elapsed - self.unused) - 300)

    def schedule_moment(self):
        """What the schedule itself makes due at this second, or None."""
        mode = mode_of(self.record)
        due = None
        if mode == "Interval":
            due = self.interval_moment()[0]
        elif mode == "WhenInactive":
            unused = self.unused_moment()
            running = self.last_start is not None and self.last_end is None
            if unused is not None and not running:
                due = max(unused, self.since if self.last_start is None else self.last_end + 3600)
        elif truth(dictionary_of(self.record, "CalendarIntervals"), "ASAP"):
            due = self.first_after(self.settled)
            old = self.too_old()
            if old:
                due = old[-1]
            if self.owed is not None and (due is None or self.owed < due):
                due = self.owed
        else:
            due = self.first_after(max(self.settled, self.clock - 601))
        return due if due is not None and due <= self.clock else None

    def retry(self):
        if not self.failures or self.last_end is None:
            return None
        due = self.last_end + RETRIES[min(self.failures, 4) - 1]
        if mode_of(self.record) == "WhenInactive":
            unused = self.unused_moment()
            if unused is None:
                return None
            due = max(due, unused)
        return due if due <= self.clock else None

    def due(self):
        if not is_on(self.record):
            return None
        return min((moment for moment in (self.schedule_moment(), self.retry()) if moment is not None), default=None)

    def too_old(self):
        """Moments that are not settled and older than 31 days."""
        moments = self.calendar()
        return moments[bisect.bisect_right(moments, self.settled):bisect.bisect_left(moments, self.clock - 31 * DAY)]

    # What stands in the way

    def suspended(self):
        if not truth(self.record, "Suspend"):
            return False
        times = dictionary_of(self.record, "SuspendSettings")
        start_hour, start_minute, end_hour, end_minute = (
            whole(times, key) for key in ("StartHour", "StartMinute", "EndHour", "EndMinute"))
        if not (0 <= start_hour < 24 and 0 <= end_hour < 24 and 0 <= start_minute < 60 and 0 <= end_minute < 60):
            return False
        start, end = start_hour * HOUR + start_minute * MINUTE, end_hour * HOUR + end_minute * MINUTE
        now = time_of_day(self.zone, self.clock)
        if start < end:
            return start <= now < end
        return start != end and (now >= start or now < end)

    def reasons(self):
        holds = {
            "suspended": self.suspended(),
            "battery": self.conditions["Battery"] and self.conditions["HasBattery"] and not truth(self.record, "AllowBattery"),
            "passive": self.conditions["Passive"] and truth(self.record, "DontRunWhenPassive"),
            "sleepPreventers": self.conditions["SleepPreventers"] and truth(self.record, "DontRunWithSleepPreventers"),
            "notWired": not self.conditions["Wired"] and truth(self.record, "DontRunWhenNotNetworkWired"),
            "running": self.left is not None,
        }
        return [name for name in ORDER if holds[name]]

    # What happens

    def say(self, event, **more):
        seconds = offset(self.zone, self.clock)
        sign, size = "-" if seconds < 0 else "+", abs(seconds)
        zone = f"{sign}{size // HOUR:02}:{size // MINUTE % 60:02}"
        self.lines.append({"elapsed": self.elapsed, "clock": text_of(self.clock),
                           "local": wall(self.zone, self.clock).strftime("%Y-%m-%dT%H:%M:%S") + zone,
                           "event": event, **more})

    def owed_before(self):
        """What would be owed if the schedule or the zone changed at this instant."""
        due = self.due()
        if due is None and is_on(self.record) and self.failures:
            due = self.last_end
        return due

    def remember_owed(self, owed):
        if not self.is_calendar(asap=True):
            self.owed = None
        elif owed is not None:
            self.owed = owed

    def happen(self, event):
        if "Set" in event:
            known = {key: value for key, value in event["Set"].items() if key in self.conditions}
            was_used = self.conditions["InUse"]
            self.conditions.update(known)
            if self.conditions["InUse"]:
                self.unused = None
            elif was_used:
                self.unused = self.elapsed
        elif "Asleep" in event:
            self.asleep = event["Asleep"]
        elif "ClockBy" in event:
            self.set_clock(event["ClockBy"])
        elif "Zone" in event:
            if event["Zone"] != self.zone:
                owed = self.owed_before()
                self.zone = event["Zone"]
                self.remember_owed(owed)
                if self.is_calendar(asap=False):
                    for moment in self.unsettled():
                        if moment < self.clock - 600:
                            self.settled = moment
        else:
            before, self_owed = self.record, self.owed_before()
            self.record = event["Apply"]
            if not same_schedule(before, self.record):
                self.remember_owed(self_owed)
                self.since = self.settled = self.clock
                self.kept = None
                self.failures = 0

    def set_clock(self, step):
        self.steps += step
        for instant in [instant for instant in self.held if instant >= self.clock]:
            del self.held[instant]
        if step < -3600:
            for name in ("last_start", "last_end", "settled", "owed", "since"):
                value = getattr(self, name)
                if value is not None and value > self.clock:
                    setattr(self, name, self.clock)

    def end(self):
        succeeded = self.results.pop(0) if self.results else True
        self.left = None
        self.last_end = self.clock
        if succeeded:
            self.failures = 0
            self.settled = max(self.settled, self.clock)
            self.owed = None
        else:
            self.failures += 1
        self.say("end", succeeded=succeeded)

    def start(self, due):
        self.say("start", due=text_of(due))
        if self.is_daily():
            moment, made_from = self.interval_moment()
            today = wall(self.zone, self.clock).date()
            if moment <= self.clock:
                on_its_day = wall(self.zone, moment).date() == today
                self.kept = made_from if on_its_day else time_of_day(self.zone, self.clock)
            elif self.last_start is None or wall(self.zone, self.last_start).date() != today:
                self.kept = time_of_day(self.zone, self.clock)
        self.last_start, self.last_end = self.clock, None
        self.settled = max(self.settled, self.clock)
        self.owed = None
        self.left = self.script.get("Duration", 0)

    def miss(self):
        if self.left is not None or not self.is_calendar(asap=False):
            return
        over = [moment for moment in self.unsettled() if moment + 600 < self.clock]
        if not over:
            return
        self.settled = over[-1]
        told = [(moment, {}) for moment in over] if len(over) <= 5 else [(over[-1], {"count": len(over)})]
        for moment, more in told:
            self.say("missed", due=text_of(moment), **more, reasons=self.held.get(moment + 600, ["asleep"]))

    def look(self):
        """Whether a backup was started."""
        if is_on(self.record) and mode_of(self.record) == "CalendarIntervals":
            old = self.too_old()
            if old and self.is_calendar(asap=False):
                self.settled = old[-1]
            elif len(old) > 1:
                self.settled = old[-2]
        self.miss()
        due = self.due()
        reasons = self.reasons() if due is not None else []
        if due is not None and not reasons:
            self.told = []
            self.start(due)
            return True
        if reasons and reasons != self.told:
            self.say("blocked", due=text_of(due), reasons=reasons)
        self.told = reasons
        return False

    def second(self):
        while self.events and self.events[0]["At"] == self.elapsed:
            self.happen(self.events.pop(0))
        if self.asleep:
            return
        changed = True
        while changed:
            changed = False
            if self.left == 0:
                self.end()
                changed = True
            if self.look():
                changed = True
        self.held[self.clock] = self.reasons()

    def seconds_of_the_minute(self):
        """Those at which something may happen without an event, as the clock counts them."""
        unused = None if self.unused is None else self.unused_moment()
        known = (self.since, self.last_start, self.last_end, self.kept, self.owed, unused)
        return {0, 1} | {moment % 60 for moment in known if moment is not None}

    def run(self, every_second=False):
        """The lines. Seconds at which nothing can happen are left out, unless every second is wanted."""
        phases = set()
        stops = {0, self.length} | {event["At"] for event in self.script.get("Events", [])}
        while self.elapsed <= self.length:
            if every_second or self.elapsed in stops or self.left == 0 or self.clock % 60 in phases:
                self.second()
                phases = self.seconds_of_the_minute()
            self.elapsed += 1
            if self.left and not self.asleep:
                self.left -= 1
        return self.lines
