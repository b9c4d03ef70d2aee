"""The agent of a session on buses of its own, beside a helper and a desktop that this program plays.

    agent.py PROGRAM SCENE
"""
import datetime
import os
import plistlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

HELPER = "com.zerkolin.brevane.scheduler"
HELPER_PATH = "/com/zerkolin/brevane/scheduler"
POSTED = "com.zerkolin.brevane.notifications"
DESKTOP = "org.freedesktop.Notifications"
DESKTOP_PATH = "/org/freedesktop/Notifications"
STATUS = 5
LIMIT = 30  # seconds
MEMORY = 10 * 1024  # KB
DAY = datetime.timedelta(days=1)
# Checked programs have memory and threads of the checker's own.
IS_CHECKED = bool(os.environ.get("BREVANE_CHECKED"))


class Helper(dbus.service.Object):
    """Answers message 5."""

    def __init__(self, bus):
        self.name = dbus.service.BusName(HELPER, bus)
        super().__init__(bus, HELPER_PATH)
        self.asked = 0
        self.status = waiting()

    @dbus.service.method(HELPER, in_signature="a{sv}", out_signature="a{sv}")
    def Send(self, message):
        assert message["message"] == STATUS
        self.asked += 1
        payload = plistlib.dumps(self.status, fmt=plistlib.FMT_BINARY)
        return {"payload": dbus.ByteArray(payload)}


class Teller(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/com/zerkolin/brevane/notifications")

    @dbus.service.signal(POSTED, signature="s")
    def Posted(self, name):
        pass


class Desktop(dbus.service.Object):
    """Shows notifications."""

    def __init__(self, bus, capabilities=("actions", "body", "body-markup")):
        self.name = dbus.service.BusName(DESKTOP, bus, replace_existing=True)
        super().__init__(bus, DESKTOP_PATH)
        self.capabilities = list(capabilities)
        self.shown = []

    @dbus.service.method(DESKTOP, in_signature="", out_signature="as")
    def GetCapabilities(self):
        return self.capabilities

    @dbus.service.method(DESKTOP, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, application, replaced, icon, title, body, actions, hints, lasting):
        self.shown.append({"application": str(application), "replaced": int(replaced), "icon": str(icon), "title": str(title),
                           "body": str(body), "actions": [str(each) for each in actions],
                           "desktop-entry": str(hints["desktop-entry"])})
        return dbus.UInt32(replaced or len(self.shown))

    @dbus.service.signal(DESKTOP, signature="us")
    def ActivationToken(self, identifier, token):
        pass

    @dbus.service.signal(DESKTOP, signature="us")
    def ActionInvoked(self, identifier, action):
        pass

    @dbus.service.signal(DESKTOP, signature="uu")
    def NotificationClosed(self, identifier, reason):
        pass


def now():
    return datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None, microsecond=0)


def waiting():
    return {"Now": now(), "Zone": "UTC", "State": "waiting", "Reasons": [], "Failures": 0, "LastSucceeded": now() - DAY,
            "Upcoming": [], "Journal": []}


def failing(count=3, text="The backup failed: its program ended with status 2."):
    return dict(waiting(), Failures=count, LastEnd=now(),
                Journal=[{"At": now(), "Event": "end", "Succeeded": False, "Text": text}])


class Stage:
    def __init__(self, program):
        dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
        self.folder = tempfile.mkdtemp(prefix="brevane-agent-")
        self.program = os.path.join(self.folder, "bin", os.path.basename(program))
        self.home = os.path.join(self.folder, "home")
        os.makedirs(self.home)
        os.makedirs(os.path.dirname(self.program))
        shutil.copy(program, self.program)
        self.children = []
        self.system = self.start_bus("system")
        self.session = self.start_bus("session")
        self.agent = None

    def start_bus(self, name):
        configuration = os.path.join(self.folder, name + ".conf")
        with open(configuration, "w", encoding="ascii") as file:
            file.write(f"""<busconfig><type>{name}</type><listen>unix:path={self.folder}/{name}</listen><auth>EXTERNAL</auth>
                <policy context="default"><allow own="*"/><allow send_destination="*" eavesdrop="false"/>
                <allow receive_sender="*"/></policy></busconfig>""")
        bus = subprocess.Popen(["dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--print-address", "--config-file",
                                configuration], stdout=subprocess.PIPE)
        self.children.append(bus)
        return bus.stdout.readline().decode().strip()

    def connect(self, address):
        return dbus.bus.BusConnection(address)

    def start_agent(self, **variables):
        environment = dict(os.environ, HOME=self.home, DBUS_SYSTEM_BUS_ADDRESS=self.system,
                           DBUS_SESSION_BUS_ADDRESS=self.session, BREVANE_ROOT=os.path.join(self.folder, "root"),
                           BREVANE_RESOURCES=os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../resources"),
                           LC_ALL="C")
        for name in ("LANGUAGE", "XDG_STATE_HOME"):
            environment.pop(name, None)
        environment.update(variables)
        agent = subprocess.Popen([self.program], env=environment)
        self.children.append(agent)
        return agent

    def memory_file(self):
        return os.path.join(self.home, ".local/state/brevane/notices.plist")

    def memory(self):
        try:
            with open(self.memory_file(), "rb") as file:
                return plistlib.load(file)
        except FileNotFoundError:
            return {}

    def close(self):
        for child in reversed(self.children):
            child.kill()
            child.wait()
        shutil.rmtree(self.folder)


def turn():
    while GLib.MainContext.default().iteration(False):
        pass


def until(condition, what, limit=LIMIT):
    end = time.monotonic() + limit
    while not condition():
        turn()
        time.sleep(0.01)
        assert time.monotonic() < end, "waited in vain for " + what


def let_pass(seconds):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        turn()
        time.sleep(0.01)


def end(agent):
    agent.terminate()
    return agent.wait(LIMIT)


def sleeps(process):
    """How often each of its threads has gone to sleep."""
    counts = {}
    for thread in os.listdir(f"/proc/{process}/task"):
        with open(f"/proc/{process}/task/{thread}/status", encoding="ascii") as file:
            counts[thread] = [line.split()[1] for line in file if line.startswith("voluntary_ctxt_switches")]
    return counts


def resident(process):
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))


# The scenes


def trouble_is_shown_once_and_its_action_opens_the_activity_window(stage):
    helper = Helper(stage.connect(stage.system))
    teller = Teller(stage.connect(stage.system))
    desktop = Desktop(stage.connect(stage.session))
    opened = os.path.join(stage.folder, "opened")
    application = os.path.join(os.path.dirname(stage.program), "brevane")
    with open(application, "w", encoding="ascii") as file:
        file.write(f'#!/bin/sh\necho "$@" "$XDG_ACTIVATION_TOKEN" >{opened}.new\nmv {opened}.new {opened}\n')
    os.chmod(application, 0o755)
    agent = stage.start_agent()
    until(lambda: helper.asked == 1, "the first question")
    let_pass(0.5)
    assert not desktop.shown
    helper.status = failing(text="The backup failed: <a> & b.")
    for _ in range(20):
        teller.Posted("com.zerkolin.brevane.status")
    teller.Posted("com.zerkolin.brevane.another")
    until(lambda: desktop.shown, "the notification")
    assert helper.asked == 2, helper.asked
    assert desktop.shown == [{
        "application": "Brevane", "replaced": 0, "icon": "com.zerkolin.brevane.application", "title": "Backups are failing.",
        "body": "The last 3 backups failed. The journal says: The backup failed: &lt;a&gt; &amp; b.",
        "actions": ["default", "Show Activity", "show", "Show Activity"],
        "desktop-entry": "com.zerkolin.brevane.application"}], desktop.shown
    until(lambda: "Failing" in stage.memory(), "the memory")
    desktop.ActionInvoked(dbus.UInt32(77), "show")  # another program's
    desktop.ActivationToken(dbus.UInt32(1), "token")
    desktop.ActionInvoked(dbus.UInt32(1), "show")
    until(lambda: os.path.exists(opened), "the application")
    with open(opened, encoding="ascii") as file:
        assert file.read() == "--show activity token\n"
    helper.status = failing(4)
    teller.Posted("com.zerkolin.brevane.status")
    until(lambda: helper.asked == 3, "the next question")
    let_pass(1)
    assert len(desktop.shown) == 1
    # Nor in the next session.
    assert end(agent) == 0
    agent = stage.start_agent()
    until(lambda: helper.asked == 4, "the question of the next session")
    let_pass(1)
    assert len(desktop.shown) == 1
    # But a day later; until the first is closed, in its place.
    memory = stage.memory()
    memory["Failing"] = {"At": now() - 2 * DAY, "Event": now() - 2 * DAY}
    with open(stage.memory_file(), "wb") as file:
        plistlib.dump(memory, file)
    teller.Posted("com.zerkolin.brevane.status")
    until(lambda: len(desktop.shown) == 2, "the notification a day later")
    assert end(agent) == 0


def a_desktop_that_comes_later_shows_what_was_kept_back(stage):
    helper = Helper(stage.connect(stage.system))
    helper.status = failing()
    stage.start_agent(LC_ALL="de_DE.UTF-8")
    until(lambda: helper.asked == 1, "the first question")
    let_pass(0.5)
    assert "Failing" not in stage.memory()
    desktop = Desktop(stage.connect(stage.session), capabilities=["body"])
    until(lambda: desktop.shown, "the notification")
    shown = desktop.shown[0]
    assert shown["title"] == "Backups schlagen fehl.", shown
    assert shown["body"].endswith("The backup failed: its program ended with status 2."), shown


def nobody_is_told_who_does_not_want_to_know(stage):
    helper = Helper(stage.connect(stage.system))
    teller = Teller(stage.connect(stage.system))
    desktop = Desktop(stage.connect(stage.session))
    folder = os.path.join(stage.home, "Library/Preferences")
    os.makedirs(folder)

    def want(wanted):
        with open(os.path.join(folder, "com.zerkolin.brevane.application.plist"), "wb") as file:
            plistlib.dump({"NotifiesOfBackups": wanted}, file)

    want(False)
    helper.status = failing()
    stage.start_agent()
    until(lambda: helper.asked == 1, "the first question")
    let_pass(1)
    assert not desktop.shown and "Failing" not in stage.memory()
    want(True)
    teller.Posted("com.zerkolin.brevane.status")
    until(lambda: desktop.shown, "the notification")


def a_week_without_a_backup_is_told_when_it_is_over(stage):
    helper = Helper(stage.connect(stage.system))
    desktop = Desktop(stage.connect(stage.session))
    helper.status = dict(waiting(), LastSucceeded=now() - 7 * DAY + datetime.timedelta(seconds=4), Reasons=["battery", "notWired"])
    stage.start_agent()
    until(lambda: helper.asked == 1, "the first question")
    helper.status = dict(helper.status, Now=helper.status["Now"] + datetime.timedelta(seconds=4))
    let_pass(1)
    assert not desktop.shown
    until(lambda: desktop.shown, "the notification")
    assert helper.asked == 2, helper.asked
    assert desktop.shown[0]["body"] == ("For 7 days no backup has succeeded. The reason: battery power, no wired network."), \
        desktop.shown


def a_helper_that_comes_later_is_heard(stage):
    desktop = Desktop(stage.connect(stage.session))
    stage.start_agent()
    let_pass(1)
    helper = Helper(stage.connect(stage.system))
    helper.status = failing()
    Teller(stage.connect(stage.system)).Posted("com.zerkolin.brevane.status")
    until(lambda: desktop.shown, "the notification")


def an_update_goes_on_as_the_new_version_and_the_uninstallation_ends_it(stage):
    helper = Helper(stage.connect(stage.system))
    teller = Teller(stage.connect(stage.system))
    agent = stage.start_agent()
    until(lambda: helper.asked == 1, "the first question")
    shutil.copy(stage.program, stage.program + ".new")
    os.replace(stage.program + ".new", stage.program)
    teller.Posted("com.zerkolin.brevane.status")
    until(lambda: helper.asked == 2, "the question of the new version")
    assert os.path.samefile(f"/proc/{agent.pid}/exe", stage.program)
    os.remove(stage.program)
    teller.Posted("com.zerkolin.brevane.status")
    assert agent.wait(LIMIT) == 0


def one_agent_serves_a_session_and_ends_with_it(stage):
    Helper(stage.connect(stage.system))
    first = stage.start_agent()
    bus = stage.connect(stage.session)
    until(lambda: bus.name_has_owner("com.zerkolin.brevane.agent"), "the agent")
    second = stage.start_agent()
    assert second.wait(LIMIT) == 0
    assert first.poll() is None
    stage.children[1].kill()  # the session's bus
    first.wait(LIMIT)
    third = stage.start_agent()
    assert third.wait(LIMIT) == 0


def it_is_small_and_sleeps(stage):
    if IS_CHECKED:
        print("SKIPPED: a checked program has memory and threads of the checker's own")
        return
    helper = Helper(stage.connect(stage.system))
    desktop = Desktop(stage.connect(stage.session))
    helper.status = failing()
    agent = stage.start_agent(LC_ALL="ja_JP.UTF-8")
    until(lambda: desktop.shown and "Failing" in stage.memory(), "the notification")
    let_pass(1)
    before = sleeps(agent.pid)
    let_pass(5)
    assert sleeps(agent.pid) == before
    print(f"resident: {resident(agent.pid)} KB")
    assert resident(agent.pid) < MEMORY


def main(program, scene):
    stage = Stage(program)
    try:
        globals()[scene](stage)
    finally:
        stage.close()


if __name__ == "__main__":
    signal.alarm(150)
    main(*sys.argv[1:])
