"""The real system bus, polkit and helper beside those of the machine, in a mount namespace that ends with the process."""
import atexit
import os
import shutil
import subprocess
import sys
import tempfile
import time

from wire import SERVICE, SOCKET, Client

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.path.join(ROOT, "build", os.environ.get("BREVANE_PRESET", "release"))
HELPER = os.path.join(BUILD, "helper", SERVICE)
USERS = [23461, 23462, 23463, 23464, 23465]


def enter():
    """Starts the program again in a mount namespace of its own, once."""
    if os.geteuid() != 0:
        sys.exit("SKIPPED: a campaign needs root, for a system bus of its own")
    if os.environ.get("BREVANE_CAMPAIGN") != "inside":
        os.environ["BREVANE_CAMPAIGN"] = "inside"
        os.execvp("unshare", ["unshare", "-m", "--propagation", "private", "-p", "-f", "--mount-proc", sys.executable]
                  + sys.argv)


class Machine:
    def __init__(self):
        os.environ.pop("DBUS_SYSTEM_BUS_ADDRESS", None)
        self.folder = tempfile.mkdtemp(prefix="brevane-campaign-")
        subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=0755", "tmpfs", self.folder], check=True)
        atexit.register(self.close)
        self.root = os.path.join(self.folder, "root")
        os.makedirs(self.root)
        self.helper = None
        self.lay_out()
        self.bus = subprocess.Popen(["dbus-daemon", "--system", "--nofork", "--nopidfile", "--nosyslog"],
                                    stderr=subprocess.DEVNULL)
        wait_for(lambda: os.path.exists(SOCKET))
        self.start()

    def lay_out(self):
        keep = ["/usr/share/dbus-1/system-services/org.freedesktop.PolicyKit1.service",
                "/usr/share/dbus-1/system.d/org.freedesktop.PolicyKit1.conf",
                "/usr/share/polkit-1/actions/org.freedesktop.policykit.policy"]
        contents = {path: read(path) for path in keep}
        resources = os.path.join(ROOT, "resources/linux")
        contents["/usr/share/dbus-1/system.d/" + SERVICE + ".conf"] = read(f"{resources}/{SERVICE}.conf")
        contents["/usr/share/polkit-1/actions/com.zerkolin.brevane.policy"] = read(f"{resources}/com.zerkolin.brevane.policy")
        contents["/etc/polkit-1/rules.d/10-administrators.rules"] = \
            b'polkit.addAdminRule(function(action, subject) { return ["unix-group:sudo"]; });\n'
        users = read("/etc/passwd") + b"".join(f"campaign{id}:x:{id}:100::/nonexistent:/bin/sh\n".encode() for id in USERS)
        passwd = os.path.join(self.folder, "passwd")
        write(passwd, users)
        subprocess.run(["mount", "--bind", passwd, "/etc/passwd"], check=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=0755", "tmpfs", "/run"], check=True)
        for folder in ("dbus", "systemd/sessions", "systemd/users", "systemd/seats", "systemd/machines"):
            os.makedirs("/run/" + folder)
        for folder in sorted({os.path.dirname(path) for path in contents} | {"/etc/dbus-1/system.d", "/usr/share/polkit-1/rules.d"}):
            if os.path.isdir(folder):
                own = os.path.join(self.folder, "folders" + folder)
                os.makedirs(own)
                subprocess.run(["mount", "--bind", own, folder], check=True)
        for path, content in contents.items():
            write(path, content)
        shutil.chown("/etc/polkit-1/rules.d", "polkitd", "polkitd")
        os.chmod("/etc/polkit-1/rules.d", 0o700)

    def start(self):
        self.launch([HELPER, "--root", self.root, "--rules", "/etc/polkit-1/rules.d"])

    def launch(self, command):
        """Starts the service and waits until it answers. A busy bus may take a moment to see that the last one was killed."""
        client = Client()
        wait_for(lambda: not client.is_served())
        client.close()
        self.helper = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        wait_for(self.answers)

    def answers(self):
        client = Client()
        try:
            return client.ask([("message", 18)]) is not None
        finally:
            client.close()

    def replace(self, command):
        """Another service in the helper's place."""
        self.kill()
        self.launch(command)

    def kill(self):
        self.helper.kill()
        self.helper.wait()

    def memory(self):
        """The helper's resident memory now and at most, in MB."""
        values = {}
        with open(f"/proc/{self.helper.pid}/status", encoding="ascii") as file:
            for line in file:
                if line.startswith(("VmRSS", "VmHWM")):
                    values[line[:5]] = int(line.split()[1]) / 1024
        return values["VmRSS"], values["VmHWM"]

    def close(self):
        for child in (self.helper, getattr(self, "bus", None)):
            if child and child.poll() is None:
                child.kill()
                child.wait()
        subprocess.run(["umount", "-l", self.folder], check=False)
        shutil.rmtree(self.folder, ignore_errors=True)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, content):
    with open(path, "wb") as file:
        file.write(content)


def wait_for(condition, seconds=20):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError("it did not come to that")
        time.sleep(0.01)


def as_user(user, task):
    """A process of that user that runs the task."""
    child = os.fork()
    if child:
        return child
    status = 1
    try:
        os.setresgid(100, 100, 100)
        os.setresuid(user, user, user)
        task()
        status = 0
    except (OSError, ConnectionError):
        status = 0
    finally:
        os._exit(status)
