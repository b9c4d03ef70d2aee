"""Boots a Debian system with the built product installed, in a container, and plays story.py in it.

    BREVANE_DEBIAN_ROOT=FOLDER boot.py BUILD

FOLDER holds Debian, and is not changed. It is made, as root, by

    mmdebstrap --variant=apt --include=systemd,systemd-sysv,dbus,polkitd,udev,borgbackup,python3,libicu72,libcurl4,libarchive13,\
libcctz2,libsimdjson14,libbtrfsutil1,libmount1,libssl3 bookworm FOLDER

Needs root and the package systemd-container.
"""
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
LIMIT = 400  # seconds
SERVICE = "com.zerkolin.brevane.scheduler"
FOLDERS = {
    "com.zerkolin.brevane.policy": "usr/share/polkit-1/actions",
    SERVICE + ".conf": "usr/share/dbus-1/system.d",
    SERVICE + ".service": "usr/lib/systemd/system",
}
BUS_SERVICE = "usr/share/dbus-1/system-services"
UNIT = """[Unit]
After=multi-user.target

[Service]
Type=oneshot
ExecStart=/usr/bin/python3 -B -u /root/story/story.py
StandardOutput=file:/root/story/output
StandardError=inherit
ExecStopPost=/usr/bin/systemctl poweroff
"""
LONG_UNIT = """[Service]
Type=oneshot
ExecStart=/bin/sh -c 'echo the long backup; sleep 12'
"""


def why_not(debian):
    if os.geteuid() != 0:
        return "a system is booted as root"
    if not shutil.which("systemd-nspawn"):
        return "systemd-container is not installed"
    if not debian or not os.path.isfile(os.path.join(debian, "usr/lib/systemd/systemd")):
        return "BREVANE_DEBIAN_ROOT names no folder with Debian in it"
    return None


def install(build, root):
    subprocess.run(["cmake", "--install", build, "--component", "brevane", "--prefix", "/opt/brevane", "--strip"],
                   env=dict(os.environ, DESTDIR=root), stdout=subprocess.DEVNULL, check=True)
    brought = os.path.join(root, "opt/brevane/Library/Brevane/share/system")
    for name, folder in FOLDERS.items():
        shutil.copy(os.path.join(brought, name), os.path.join(root, folder))
    shutil.copy(os.path.join(brought, SERVICE + ".service.dbus"), os.path.join(root, BUS_SERVICE, SERVICE + ".service"))
    story = os.path.join(root, "root/story")
    os.makedirs(story)
    for path in (os.path.join(HERE, "story.py"), os.path.join(HERE, "../campaigns/wire.py")):
        shutil.copy(path, story)
    units = os.path.join(root, "etc/systemd/system")
    for name, content in (("story.service", UNIT), ("long-backup.service", LONG_UNIT)):
        with open(os.path.join(units, name), "w", encoding="ascii") as file:
            file.write(content)
    os.makedirs(os.path.join(units, "graphical.target.wants"), exist_ok=True)
    os.symlink("../story.service", os.path.join(units, "graphical.target.wants/story.service"))


def play(debian, build, folder):
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", folder], check=True)
    parts = {name: os.path.join(folder, name) for name in ("upper", "work", "root")}
    for part in parts.values():
        os.mkdir(part)
    options = f"lowerdir={os.path.abspath(debian)},upperdir={parts['upper']},workdir={parts['work']}"
    subprocess.run(["mount", "-t", "overlay", "overlay", "-o", options, parts["root"]], check=True)
    install(build, parts["root"])
    with open(os.path.join(folder, "console"), "w+b") as console:
        subprocess.run(["timeout", "--kill-after=10", str(LIMIT), "systemd-nspawn", "-q", "-D", parts["root"], "--register=no",
                        "--keep-unit", "-b"], stdin=subprocess.DEVNULL, stdout=console, stderr=console, check=False)
        output = os.path.join(parts["root"], "root/story/output")
        if os.path.exists(output):
            with open(output, encoding="utf-8") as file:
                return file.read()
        console.seek(0)
        return console.read().decode(errors="replace")


def main(build):
    debian = os.environ.get("BREVANE_DEBIAN_ROOT")
    if reason := why_not(debian):
        print("SKIPPED: " + reason)
        return 0
    if os.environ.get("BREVANE_BOOT") != "inside":  # what is mounted ends with the namespace
        os.environ["BREVANE_BOOT"] = "inside"
        os.execvp("unshare", ["unshare", "-m", "--propagation", "private", sys.executable, "-B"] + sys.argv)
    folder = tempfile.mkdtemp(prefix="brevane-boot-")
    try:
        told = play(debian, os.path.abspath(build), folder)
    finally:
        subprocess.run(["umount", "-R", folder], check=False)
        os.rmdir(folder)
    print(told)
    return 0 if told.rstrip().endswith("The story is over.") else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
