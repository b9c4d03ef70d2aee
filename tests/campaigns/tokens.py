"""Sends changes with forged, foreign and replayed tokens: none is accepted."""
import os
import plistlib
import random

import machine
import wire

DEFAULT_COUNT = 10000


def forged(chance, client, foreign, gone):
    own = client.token()
    kind = chance.randrange(12)
    if kind == 0:
        return client.token(chance.choice(foreign))
    if kind == 1:
        return client.token(chance.choice(gone))
    if kind == 2:
        return chance.randbytes(32)
    if kind == 3:
        return chance.randbytes(chance.randrange(200))
    if kind == 4:
        return client.token(f":1.{chance.randrange(100000)}")
    if kind == 5:
        return client.token(chance.choice([wire.SERVICE, "org.freedesktop.DBus", "org.freedesktop.PolicyKit1", ":1.0", ""]))
    if kind == 6:
        return client.token(chance.choice(foreign))[:16] + own[16:]
    if kind == 7:
        return own + b"\0"
    if kind == 8:
        return own[:-1]
    if kind == 9:
        at = chance.randrange(32)
        return own[:at] + bytes([own[at] ^ (1 << chance.randrange(8))]) + own[at + 1:]
    if kind == 10:
        return b"\0" * 32
    return client.token(client.name + " ")


def attack(count, seed, foreign, gone, results):
    chance = random.Random(seed)
    client = wire.Client()
    payload = plistlib.dumps({"Enabled": True}, fmt=plistlib.FMT_BINARY)
    accepted = refused = 0
    for _ in range(count):
        reply = client.ask([("message", chance.choice([2, 6, 21, 27, 28])), ("auth", forged(chance, client, foreign, gone)),
                            ("payload", payload)])
        if reply and "error" in reply:
            refused += 1
        else:
            accepted += 1
    os.write(results, f"{accepted} {refused}\n".encode())


def run(count):
    machine.enter()
    host = machine.Machine()
    # Root may do everything, so its token is the one to have; one is of a connection that has gone.
    rich = [wire.Client() for _ in range(4)]
    payload = plistlib.dumps({"Enabled": False}, fmt=plistlib.FMT_BINARY)
    for client in rich:
        if "error" in client.ask([("message", 21), ("auth", client.token()), ("payload", payload)]):
            raise RuntimeError("the token of root was refused")
    rich[3].close()
    foreign, gone = [client.name for client in rich[:3]], [rich[3].name]
    source, results = os.pipe()
    share = -(-count // 4)
    children = [machine.as_user(user, lambda user=user: attack(share, user, foreign, gone, results))
                for user in machine.USERS[:4]]
    for child in children:
        os.waitpid(child, 0)
    os.close(results)
    accepted = refused = 0
    with os.fdopen(source) as lines:
        for line in lines:
            accepted, refused = accepted + int(line.split()[0]), refused + int(line.split()[1])
    enabled = plistlib.loads(rich[0].ask([("message", 18)])["payload"])["Enabled"]
    print(f"tokens: {accepted + refused}, accepted: {accepted}, refused: {refused}, updates are {'on' if enabled else 'off'}")
    return 0 if accepted == 0 and refused >= count and not enabled else 1
