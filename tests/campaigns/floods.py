"""Four users flood the helper at once, each in every way, for COUNT seconds. Another user's message 1 is answered within
100 ms (99 of 100), and the helper stays below 100 MB. How long the bus itself takes for an answer of its own is told
beside it: nothing that goes over the bus can be faster."""
import os
import plistlib
import select
import time

import machine
import wire

DEFAULT_COUNT = 60
PAUSE = 0.02


def bomb():
    """A small binary property list that unfolds into millions of values: arrays that hold the next one many times."""
    depth, width = 6, 16
    objects = [bytes([0xA0 | 15, 0x10, width]) + bytes([level + 1]) * width for level in range(depth)] + [b"\x09"]
    data, offsets = b"bplist00", []
    for each in objects:
        offsets.append(len(data))
        data += each
    table = len(data)
    data += b"".join(offset.to_bytes(2, "big") for offset in offsets)
    return data + bytes(6) + bytes([2, 1]) + len(objects).to_bytes(8, "big") + bytes(8) + table.to_bytes(8, "big")


def drain(client):
    """Reads what is there, unlooked at."""
    while select.select([client.socket], [], [], 0)[0]:
        if not client.socket.recv(1 << 20):
            raise ConnectionError


def unasked_changes(end):
    """Changes that nobody waits for, each of which asks for a right."""
    client = wire.Client()
    record = plistlib.dumps({"Enabled": True, "Filler": "x" * 900}, fmt=plistlib.FMT_BINARY)
    while time.monotonic() < end:
        for _ in range(100):
            client.request([("message", 21), ("auth", client.token()), ("payload", record)], wire.NO_REPLY)


def bombs(end):
    """Small payloads that unfold, for every number, one way by clients that leave at once."""
    payload = bomb()
    while time.monotonic() < end:
        client = wire.Client()
        for number in (1, 18, 5, 2, 21, 6, 27):
            client.request([("message", number), ("auth", client.token()), ("payload", payload)], wire.NO_REPLY)
        client.close()


def big_messages(end):
    """Payloads of nearly what the bus carries, and as many bytes under other keys."""
    client = wire.Client()
    block = bytes(31 << 20)
    while time.monotonic() < end:
        client.request([("message", 2), ("auth", client.token()), ("payload", block)], wire.NO_REPLY)
        client.request([("junk", block), ("message", 1)], wire.NO_REPLY)


def many_connections(end):
    """As many connections as the bus lets a user have here, all of which send and none of which reads."""
    clients = []
    try:
        while len(clients) < 200:
            clients.append(wire.Client())
    except (OSError, ConnectionError):
        pass
    for client in clients:
        client.socket.setblocking(False)
    while time.monotonic() < end:
        for client in clients:
            try:
                client.request([("message", 1)])
            except OSError:
                pass  # the bus takes no more from it
        time.sleep(0.001)


def questions(end):
    """Message 1 as fast as possible, read."""
    client = wire.Client()
    while time.monotonic() < end:
        for _ in range(50):
            client.request([("message", 1)])
        drain(client)


FLOODS = (unasked_changes, bombs, big_messages, many_connections, questions)


def attack(user, seconds, floods):
    """The floods of one user, side by side."""
    def task():
        end = time.monotonic() + seconds
        children = []
        for flood in floods:
            child = os.fork()
            if child == 0:
                try:
                    while time.monotonic() < end:
                        try:
                            flood(end)
                        except (OSError, ConnectionError):
                            time.sleep(0.01)
                finally:
                    os._exit(0)
            children.append(child)
        for child in children:
            os.waitpid(child, 0)
    return machine.as_user(user, task)


def measure(seconds, results):
    client = wire.Client()
    delays, bus = [], []
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        began = time.monotonic()
        answered = "payload" in (client.ask([("message", 1)]) or {})
        delays.append(time.monotonic() - began if answered else float("inf"))
        began = time.monotonic()
        client.wait(client.send(b"", destination="org.freedesktop.DBus", path="/org/freedesktop/DBus",
                                interface="org.freedesktop.DBus", member="GetId", kind=""))
        bus.append(time.monotonic() - began)
        time.sleep(PAUSE)
    for line in (delays, bus):
        os.write(results, (" ".join(map(str, line)) + "\n").encode())


def told(name, delays):
    within = sum(delay <= 0.1 for delay in delays) / max(1, len(delays))
    if delays:
        print(f"  {name}: {len(delays)} answers, median {1000 * delays[len(delays) // 2]:.1f} ms, 99 of 100 within "
              f"{1000 * delays[int(len(delays) * 0.99)]:.1f} ms, longest {1000 * delays[-1]:.1f} ms; "
              f"within 100 ms: {100 * within:.2f} %")
    return within


def delays_during(seconds, floods):
    """The helper's and the bus's own."""
    source, results = os.pipe()
    children = [attack(user, seconds, floods) for user in machine.USERS[:4]] if floods else []
    time.sleep(1)
    children.append(machine.as_user(machine.USERS[4], lambda: measure(seconds - 2, results)))
    os.close(results)
    with os.fdopen(source) as lines:
        delays = [sorted(map(float, line.split())) for line in lines]
    for child in children:
        os.waitpid(child, 0)
    return delays if len(delays) == 2 else ([], [])


def run(count, *names):
    machine.enter()
    floods = [flood for flood in FLOODS if not names or flood.__name__ in names]
    host = machine.Machine()
    print("quiet")
    for name, delays in zip(("message 1", "the bus itself"), delays_during(5, [])):
        told(name, delays)
    print(f"flooded for {count} s by 4 users at once: {', '.join(flood.__name__ for flood in floods)}")
    answers, bus = delays_during(max(count, 5), floods)
    within = told("message 1", answers)
    told("the bus itself", bus)
    # As root, who is granted everything: the change is made soon after.
    granted = wire.Client()
    began = time.monotonic()
    made = granted.ask([("message", 21), ("auth", granted.token()),
                        ("payload", plistlib.dumps({"Enabled": False}, fmt=plistlib.FMT_BINARY))])
    change = time.monotonic() - began
    if host.helper.poll() is not None:
        print(f"the helper has ended with {host.helper.returncode}")
        return 1
    now, most = host.memory()
    print(f"the helper's memory: {now:.1f} MB, at most {most:.1f} MB; a granted change right after: {1000 * change:.1f} ms")
    return 0 if within >= 0.99 and most < 100 and made and "payload" in made else 1
