"""Four users flood the helper at once, each in every way, for COUNT seconds. Another user's message 1 is answered within
100 ms (99 of 100), and the helper stays below 100 MB. Told beside it: how long the bus itself takes for an answer of its
own, and what a service that does nothing but answer makes of the same floods in the helper's place."""
import os
import plistlib
import select
import time

import machine
import wire

DEFAULT_COUNT = 60
ASKER = os.path.join(machine.BUILD, "benchmarks", "floods", "bench_floods")


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
    os.dup2(results, 1)
    os.execv(ASKER, [ASKER, "ask", str(1000 * seconds)])


def told(name, delays):
    """Prints what the answers took, and returns which part of them came within 100 ms."""
    within = sum(0 <= delay <= 100 for delay in delays) / max(1, len(delays))
    refused = sum(delay < 0 for delay in delays)
    answers = sorted(delay for delay in delays if delay >= 0)
    if answers:
        print(f"  {name}: {len(answers)} answers and {refused} refusals, median {answers[len(answers) // 2]:.1f} ms, 99 of 100 "
              f"within {answers[int(len(answers) * 0.99)]:.1f} ms, longest {answers[-1]:.1f} ms; "
              f"within 100 ms: {100 * within:.2f} %", flush=True)
    else:
        print(f"  {name}: no answer", flush=True)
    return within


def delays_during(seconds, floods):
    """The service's and the bus's own, in milliseconds."""
    source, results = os.pipe()
    children = [attack(user, seconds, floods) for user in machine.USERS[:4]] if floods else []
    time.sleep(1)
    children.append(machine.as_user(machine.USERS[4], lambda: measure(seconds - 2, results)))
    os.close(results)
    with os.fdopen(source) as lines:
        delays = [list(map(float, line.split())) for line in lines]
    for child in children:
        os.waitpid(child, 0)
    return delays if len(delays) == 2 else ([], [])


def processor_seconds(pid):
    fields = machine.read(f"/proc/{pid}/stat").rsplit(b")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def flood(host, name, seconds, floods):
    """Prints what the floods make of a service, and returns which part of its answers came within 100 ms."""
    processes = {name: host.helper.pid, "the bus": host.bus.pid}
    before = {each: processor_seconds(pid) for each, pid in processes.items()}
    answers, bus = delays_during(seconds, floods)
    within = told(name, answers)
    told("the bus itself", bus)
    for each, pid in processes.items():
        if os.path.exists(f"/proc/{pid}"):
            print(f"  {each}: {processor_seconds(pid) - before[each]:.1f} s of processor time")
    return within


def run(count, *names):
    machine.enter()
    floods = [each for each in FLOODS if not names or each.__name__ in names]
    count = max(count, 5)
    host = machine.Machine()
    print("quiet")
    for name, delays in zip(("message 1", "the bus itself"), delays_during(5, [])):
        told(name, delays)
    print(f"flooded for {count} s by 4 users at once: {', '.join(each.__name__ for each in floods)}")
    within = flood(host, "message 1", count, floods)
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
    print(f"  the helper's memory: {now:.1f} MB, at most {most:.1f} MB; a granted change right after: {1000 * change:.1f} ms")
    print("a service that only answers, in its place")
    host.replace([ASKER, "serve"])
    flood(host, "its answers", count, floods)
    return 0 if within >= 0.99 and most < 100 and made and "payload" in made else 1
