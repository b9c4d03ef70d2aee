#!/usr/bin/python3
"""Makes random arrays of log records and, by a plain reading of the console's rules, what the console makes of them.

    second_reading.py COUNT FILE

Writes, for each array, its length and bytes and the length and bytes of the expected text, in which every stretch of one
style stands in brackets behind the style's letter.
"""
import datetime
import json
import random
import re
import sys

RANDOM = random.Random(20261120)
NBSP, NARROW = "\u00a0", "\u202f"
SUBSYSTEMS = ["com.zerkolin.brevane", "com.apple.TimeMachine", "com.zerkolin.Brevane", "", "com.zerkolin.brevane.x"]
TYPES = ["Error", "Default", "Debug", "Info", "Fault", "error", "", "DEFAULT"]
PATHS = ["/opt/brevane/brevane", "/Library/Brevane/com.zerkolin.brevane.scheduler", "/usr/libexec/backupd", "x", "", "/",
         "/a/b/", "com.zerkolin.brevane.scheduler/"]
PIECES = ["backup", " ", "Thermal Pressure Level", "thermal", "pressure level", "\u00e9", "\u20ac", "\U0001f600", "\n", "\t",
          "\\", '"', "{", "[", "]", ",", "v", "VOLUME", "\u00a0", "/", "\u007f", "THERMAL PRESSURE LEVEL 3", "\u2028"]
SCALARS = [None, True, False, 0, 12, -3, 1.5, 1e300, 18446744073709551615, 18446744073709551616, -(10 ** 30),
           [], {}]


def message():
    return "".join(RANDOM.choice(PIECES) for _ in range(RANDOM.randrange(12)))


def timestamp():
    if RANDOM.random() < 0.15:
        return RANDOM.choice(["", "yesterday", "2026-11-20", "2026-13-20 09:56:22.123456+0000",
                              "2026-11-31 09:56:22.123456+0000", "2026-11-20 09:56:22.123456+0000 x",
                              "2026/11/20 09:56:22.123456+0000"])
    date = datetime.datetime(2026, 1, 1) + datetime.timedelta(seconds=RANDOM.randrange(3 * 365 * 86400))
    if RANDOM.random() < 0.5:
        date = datetime.datetime(2026, 11, 20, 9, 56, RANDOM.randrange(3))
    pattern = RANDOM.choice(["%Y-%m-%d %H:%M:%S", "%Y.%m.%d %H:%M:%S"])
    zone = RANDOM.choice(["+0000", "+0100", "-0930", "+1400"])
    return f"{date.strftime(pattern)}.{RANDOM.randrange(1000000):06d}{zone}"


def value(make):
    return RANDOM.choice(SCALARS) if RANDOM.random() < 0.06 else make()


def element():
    if RANDOM.random() < 0.03:
        return RANDOM.choice(SCALARS + ["text", ["a"]])
    members = [("subsystem", lambda: RANDOM.choice(SUBSYSTEMS)), ("timestamp", timestamp),
               ("messageType", lambda: RANDOM.choice(TYPES)), ("eventMessage", message),
               ("processImagePath", lambda: RANDOM.choice(PATHS)), ("processID", lambda: RANDOM.randrange(99999)),
               ("traceID", lambda: RANDOM.randrange(1 << 63)), ("other", lambda: {"eventMessage": message(), "n": [None, 1.25]})]
    RANDOM.shuffle(members)
    return {key: value(make) for key, make in members if RANDOM.random() < 0.93}


def written(array):
    separators = RANDOM.choice([(",", ":"), (", ", ": "), (" ,\n ", "\t:\r\n")])
    text = json.dumps(array, ensure_ascii=RANDOM.random() < 0.5, separators=separators)
    return (RANDOM.choice(["", "\n", "  "]) + text + RANDOM.choice(["", "\n", " \t"])).encode()


def damaged(data):
    place = RANDOM.randrange(len(data) + 1)
    return RANDOM.choice([
        lambda: data[:place],
        lambda: data[:place] + bytes([RANDOM.randrange(256)]) + data[place:],
        lambda: data[:place] + data[place + 1:],
        lambda: data + RANDOM.choice([b"]", b"x", b"[]", b"\x00"]),
        lambda: data.replace(b'"', b'"\xff', 1),
        lambda: data.replace(b":", b":\"\\ud800\",\"k\":", 1),
        lambda: b"",
        lambda: b"{}",
        lambda: b"log: nothing",
    ])()


# The rules, read slowly.

def refuse(name):
    raise ValueError(name)


def parsed(data):
    """The elements, or None when the bytes are no JSON array."""
    try:
        text = data.decode("utf-8")
        array = json.loads(text, parse_constant=refuse)
        json.dumps(array, ensure_ascii=False).encode("utf-8")  # no halves of pairs
        if re.search(r"[\ud800-\udfff]", text):
            return None
    except (ValueError, RecursionError):
        return None
    return array if isinstance(array, list) else None


def printed(stamp):
    if not isinstance(stamp, str):
        return "???"
    match = re.fullmatch(r"(\d{4})[-.](\d\d)[-.](\d\d) (\d\d):(\d\d):(\d\d)\.\d{6}([+-]\d\d)(\d\d)", stamp)
    if not match:
        return "???"
    year, month, day, hour, minute, second, zone_hours, zone_minutes = map(int, match.groups())
    try:
        date = datetime.datetime(year, month, day, hour, minute, second)
    except ValueError:
        return "???"
    minutes = abs(zone_hours) * 60 + zone_minutes
    date -= datetime.timedelta(minutes=-minutes if match.group(7)[0] == "-" else minutes)
    return (f"{date.month}/{date.day}/{date.year % 100:02d}, {date.hour % 12 or 12}:{date.minute:02d}:{date.second:02d}"
            f"{NARROW}{'AM' if date.hour < 12 else 'PM'}")


def described(record, key):
    if key not in record:
        return "(null)"
    found = record[key]
    if isinstance(found, str):
        return found
    if found is None:
        return "<null>"
    if isinstance(found, bool):
        return "1" if found else "0"
    if isinstance(found, int) and not -2**63 <= found < 2**64:
        found = float(found)
    if isinstance(found, float):
        return next(text for digits in range(1, 18) for text in [f"%.{digits}g" % found] if float(text) == found)
    return {"[]": "(\n)", "{}": "{\n}"}.get(json.dumps(found), json.dumps(found))


def last_component(path):
    parts = [part for part in path.split("/") if part]
    return parts[-1] if parts else ("/" if path else "")


def lines(array):
    for record in array:
        record = record if isinstance(record, dict) else {}
        style = {"Error": "r", "Default": "g", "Debug": "o"}.get(record.get("messageType")
                                                                  if isinstance(record.get("messageType"), str) else None, "p")
        text = record.get("eventMessage")
        if record.get("subsystem") == "com.zerkolin.brevane":
            sender = last_component(described(record, "processImagePath")) if "processImagePath" in record else ""
            if sender == "com.zerkolin.brevane.scheduler":
                sender = "Brevane" + NBSP + "Scheduler"
        else:
            if isinstance(text, str) and "thermal pressure level" in text.lower():
                continue
            sender = "Time Machine"
        yield "p", printed(record.get("timestamp")) + " "
        yield "b", sender
        yield style, " " + described(record, "eventMessage") + "\n"


def styled(array):
    stretches = []
    for style, text in lines(array):
        if not text:
            continue
        if stretches and stretches[-1][0] == style:
            stretches[-1][1] += text
        else:
            stretches.append([style, text])
    return "".join(f"{style}[{text}]" for style, text in stretches)


def stamps(array):
    return {json.dumps(record.get("timestamp")) for record in array if isinstance(record, dict)} - {"null"}


def main():
    count, path = int(sys.argv[1]), sys.argv[2]
    with open(path, "wb") as file:
        for _ in range(count):
            whole = [element() for _ in range(RANDOM.randrange(7))]
            data = written(whole)
            if RANDOM.random() < 0.25:
                data = damaged(data)
            array = parsed(data)
            # How many digits a date may lack is the date parser's own affair.
            if array is not None and not stamps(array) <= stamps(whole):
                data, array = written(whole), whole
            expected = styled(array).encode() if array is not None else b""
            for text in (data, expected):
                file.write(b"%d\n" % len(text) + text)


if __name__ == "__main__":
    main()
