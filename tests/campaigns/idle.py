"""How often the helper with a daily schedule, and the agent of a session beside it, wake up while nothing happens."""
import datetime
import os
import subprocess
import time

import machine
from starts import ask

DEFAULT_COUNT = 600  # seconds
SETTLING = 30
AGENT = os.path.join(os.path.dirname(os.path.dirname(machine.HELPER)), "platform/linux/agent/com.zerkolin.brevane.agent")


def sleeps(process):
    """How often each thread has gone to sleep so far, and so how often it woke up."""
    counts = {}
    for thread in os.listdir(f"/proc/{process}/task"):
        with open(f"/proc/{process}/task/{thread}/status", encoding="ascii") as file:
            counts[thread] = next(int(line.split()[1]) for line in file if line.startswith("voluntary_ctxt_switches"))
    return counts


def start_agent(host):
    """On a session bus of its own."""
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL)
    environment = dict(os.environ, HOME=host.folder, DBUS_SESSION_BUS_ADDRESS=bus.stdout.readline().decode().strip())
    return bus, subprocess.Popen([AGENT], env=environment, stderr=subprocess.DEVNULL)


def run(seconds):
    machine.enter()
    host = machine.Machine()
    os.makedirs(os.path.join(host.root, "data"))
    ask(12, {"Program": "borg", "Fields": {"Folders": [os.path.join(host.root, "data")],
                                           "Repository": os.path.join(host.root, "repository")}})
    record = {key: value for key, value in ask(1).items() if key != "Disabled"}
    later = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(hours=6)
    record.update(Backups=True, BackupsMode="CalendarIntervals", Snapshots=False, Suspend=False,
                  CalendarIntervals={"ASAP": False, "Intervals": [{"Hour": later.hour, "Minute": later.minute}]})
    ask(2, record)
    bus, agent = start_agent(host)
    time.sleep(SETTLING)
    programs = {"helper": host.helper.pid, "agent": agent.pid}
    before = {name: sleeps(process) for name, process in programs.items()}
    time.sleep(seconds)
    after = {name: sleeps(process) for name, process in programs.items()}
    woken = {name: sum(count - before[name].get(thread, 0) for thread, count in after[name].items()) for name in programs}
    status = ask(5)
    print(f"in {seconds} idle seconds: the helper woke up {woken['helper']} times ({len(after['helper'])} threads), the agent"
          f" {woken['agent']} times ({len(after['agent'])} threads); state {status['State']}, due {status.get('Due')}")
    for child in (agent, bus):
        child.terminate()
        child.wait()
    return 1 if any(woken.values()) or after.keys() != before.keys() else 0
