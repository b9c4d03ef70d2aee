"""What an ordinary user does: sends messages to the scheduler helper, with a real agent that asks for a password at a terminal.

    user.py PASSWORD < REQUESTS

REQUESTS is a property list: an array of [number, payload] or [number]. Prints, as a property list, an array with a
dictionary for each: "Authorized" (absent where no right is needed), "Error" (boolean), "Payload" (data).
"""
import os
import plistlib
import pty
import shlex
import subprocess
import sys
import threading
import time

import dbus

SERVICE = "com.zerkolin.brevane.scheduler"
RIGHT = "com.zerkolin.brevane.settings.modify-1"
RIGHT_OF = {28: "com.zerkolin.brevane.uninstall"}  # of the others that need one it is RIGHT
READING = (1, 5, 7, 18, 26)
INTERACTION = 1


def answer_prompts(terminal, password, said):
    heard = b""
    while True:
        try:
            heard += os.read(terminal, 4096)
        except OSError:
            return
        if heard.rstrip().endswith(b"Password:"):
            said.append(heard.decode(errors="replace"))
            heard = b""
            time.sleep(0.5)  # what comes before it has switched off the echo is thrown away
            os.write(terminal, password.encode() + b"\n")


def start_agent(password, process=None):
    """The agent for a process, or for this one; returns when it is registered."""
    ready, tell = os.pipe()
    os.set_inheritable(tell, True)
    own = str(process or os.getpid())
    child, terminal = pty.fork()
    if child == 0:
        os.execvp("pkttyagent", ["pkttyagent", "--process", own, "--notify-fd", str(tell)])
    os.close(tell)
    said = []
    threading.Thread(target=answer_prompts, args=(terminal, password, said), daemon=True).start()
    os.read(ready, 1)
    return child, said


def main():
    requests = plistlib.loads(sys.stdin.buffer.read())
    bus = dbus.SystemBus()
    helper = dbus.Interface(bus.get_object(SERVICE, "/" + SERVICE.replace(".", "/")), SERVICE)
    authority = dbus.Interface(bus.get_object("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority"),
                               "org.freedesktop.PolicyKit1.Authority")
    agent = None
    token = bus.get_unique_name().encode().ljust(32, b"\0")
    replies = []
    for number, *payload in requests:
        told = {}
        if number not in READING:
            if agent is None:
                agent, said = start_agent(sys.argv[1])
            subject = ("system-bus-name", {"name": bus.get_unique_name()})
            right = RIGHT_OF.get(number, RIGHT)
            answer = authority.CheckAuthorization(subject, right, dbus.Dictionary({}, signature="ss"), dbus.UInt32(INTERACTION),
                                                  "", timeout=60)
            told["Authorized"] = bool(answer[0])
            told["Asked"] = len(said)
        message = {"message": dbus.Int64(number)}
        if number not in READING:
            message["auth"] = dbus.ByteArray(token)
        for value in payload:
            message["payload"] = dbus.ByteArray(plistlib.dumps(value, fmt=plistlib.FMT_BINARY))
        reply = helper.Send(dbus.Dictionary(message, signature="sv"), timeout=60, byte_arrays=True)
        told["Error"] = "error" in reply
        if "payload" in reply:
            told["Payload"] = bytes(reply["payload"])
        replies.append(told)
    if agent:
        os.kill(agent, 15)
    sys.stdout.buffer.write(plistlib.dumps(replies))


def as_user(user, password, requests):
    """Called by root: plays this program as a user who has logged in."""
    command = shlex.join(["/usr/bin/python3", "-B", os.path.abspath(__file__), password])
    done = subprocess.run(["su", "--login", user, "--command", command], input=plistlib.dumps(requests), capture_output=True,
                          timeout=120, check=False)
    assert done.returncode == 0, (done.stdout, done.stderr.decode())
    return plistlib.loads(done.stdout)


if __name__ == "__main__":
    main()
