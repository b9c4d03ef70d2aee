"""Kills the helper at a random moment of an apply, again and again: what it serves afterwards is the record before or
the new one, the new one when it had said so, and whole."""
import plistlib
import random
import time

import machine
import wire

DEFAULT_COUNT = 1000


def served(client):
    return plistlib.loads(client.ask([("message", 1)])["payload"])


def run(count):
    machine.enter()
    host = machine.Machine()
    chance = random.Random(20261122)
    client = wire.Client()
    before = served(client)
    record = {key: value for key, value in before.items() if key != "Disabled"}
    accepted = torn = lost = made = 0
    longest = 0.004
    for number in range(count):
        after = dict(record, Backups=True, BackupsMode="Interval", Interval={"Minutes": 1 + number % 999},
                     SuspendSettings=dict(record["SuspendSettings"], StartMinute=number // 999 % 60))
        client = wire.Client()
        began = time.monotonic()
        serial = client.request([("message", 2), ("auth", client.token()),
                                 ("payload", plistlib.dumps(after, fmt=plistlib.FMT_BINARY))])
        time.sleep(chance.uniform(0, 2 * longest))
        host.kill()
        kind, body = client.wait(serial)
        said = kind == wire.REPLY and "payload" in wire.entries_in(body)
        if said:
            longest = 0.9 * longest + 0.1 * min(longest, (time.monotonic() - began) / 2)
        else:
            longest = min(0.05, longest * 1.02)
        client.close()
        host.start()
        client = wire.Client()
        now = served(client)
        client.close()
        accepted += said
        made += now == after
        torn += now not in (before, after)
        lost += said and now != after
        before = now
    print(f"kills of an apply: {count}, accepted before: {accepted}, made: {made}, torn: {torn}, lost: {lost}")
    return 1 if torn or lost else 0
