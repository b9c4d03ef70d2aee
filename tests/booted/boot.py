"""Boots a Debian system in a container and plays stories in it.

    boot.py --root FOLDER [--suite NAME] --package FILE... [--pictures FOLDER] STORY...

The root folder is made when it is not there, and not changed otherwise: each run has a layer of its own upon it. Needs root,
systemd-container and, where the root folder must be made, mmdebstrap and a Debian mirror. What is in the way is told as
"SKIPPED: why", and is no failure.
"""
import argparse
import glob
import os
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SUITE = "bookworm"  # unless another is named
UBUNTU = ("jammy", "noble")
UBUNTUS_KEYS = "/usr/share/keyrings/ubuntu-archive-keyring.gpg"
LIMIT = 480  # seconds
FETCH_LIMIT = 300  # seconds, so that a slow mirror leaves time for the stories
LONGEST_REST = 120  # seconds
RESTART = 133  # what systemd-nspawn ends with when the system inside wants to be started again
PLACE = "srv/story"  # below the root
PROGRAMS = ["systemd", "systemd-sysv", "dbus", "polkitd", "udev", "libpam-systemd", "btrfs-progs", "borgbackup", "passwd", "python3",
            "python3-dbus"]
MORE_PROGRAMS = {"software": ["packagekit", "gpg", "gpg-agent"], "feeds": ["ca-certificates", "python3-cryptography", "openssl"],
                 "window": ["xvfb", "openbox", "xdotool", "at-spi2-core", "python3-gi", "gir1.2-atspi-2.0", "fonts-dejavu-core",
                            "imagemagick"]}  # that a story needs
UNIT = """[Unit]
After=multi-user.target

[Service]
Type=oneshot
ExecStart=/usr/bin/python3 -B -u /srv/story/play.py {stories}
StandardOutput=append:/srv/story/output
StandardError=inherit
# It is ended by a restart of the system too, which must go on.
ExecStopPost=/bin/sh -c 'grep -q -e "^The story is over" -e "^FAILED" /srv/story/output && systemctl --no-block poweroff || true'
"""
LONG_UNIT = """[Service]
Type=oneshot
ExecStart=/bin/sh -c 'echo the long backup; sleep 12'
"""


class Impossible(Exception):
    """Why nothing can be booted here."""


def dependencies_of(package):
    told = subprocess.run(["dpkg-deb", "--field", package, "Depends"], capture_output=True, text=True, check=True).stdout
    return [each.split("|")[0].split("(")[0].strip() for each in told.split(",")]


def mirror(suite):
    """Where the suite is had from: for Debian where this machine itself gets it."""
    if suite in UBUNTU:
        return "deb http://archive.ubuntu.com/ubuntu " + suite + " main universe"
    told = subprocess.run(["apt-get", "indextargets", "--format", "$(REPO_URI) $(COMPONENT)", "Origin: Debian", "Label: Debian",
                           "Created-By: Packages"], capture_output=True, text=True, check=False).stdout
    for line in told.splitlines():
        address, component = line.rsplit(" ", 1)
        if component == "main":
            return f"deb {address} {suite} main"
    return f"deb http://deb.debian.org/debian {suite} main"


def wanted_packages(package, stories):
    wanted = PROGRAMS + dependencies_of(package)
    for story in stories:
        wanted += MORE_PROGRAMS.get(story, [])
    return set(wanted)


def present_packages(root):
    """Those that it was made for here; None when it was not made here."""
    try:
        with open(root + ".packages", encoding="ascii") as file:
            return set(file.read().split(","))
    except FileNotFoundError:
        return None


def make_root(root, packages, suite):
    if not shutil.which("mmdebstrap"):
        raise Impossible("mmdebstrap is not installed")
    if suite in UBUNTU and not os.path.exists(UBUNTUS_KEYS):
        raise Impossible(f"{suite} cannot be fetched: the keys of its archive are not on this machine, in {UBUNTUS_KEYS}")
    new = root + ".new"
    shutil.rmtree(new, ignore_errors=True)
    os.makedirs(os.path.dirname(os.path.abspath(root)), exist_ok=True)
    wanted = ",".join(sorted(packages))
    print(f"Fetching {suite} into {root}.", flush=True)
    fetch = ["timeout", str(FETCH_LIMIT), "mmdebstrap", "--quiet", "--variant=apt", "--include=" + wanted, suite, new, mirror(suite)]
    made = subprocess.run(fetch, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if made.returncode != 0:
        shutil.rmtree(new, ignore_errors=True)
        if made.returncode == 124:  # what timeout ends with
            raise Impossible(f"{suite} could not be fetched within {FETCH_LIMIT} s")
        said = [line for line in (made.stdout + made.stderr).splitlines() if line.strip()]
        faults = [line for line in said if line.startswith(("E:", "Err:"))] or said
        raise Impossible(f"{suite} could not be fetched: " + (faults[0] if faults else "mmdebstrap said nothing"))
    shutil.rmtree(root, ignore_errors=True)
    os.rename(new, root)
    write(root + ".packages", wanted)


def see_whether_possible():
    if os.geteuid() != 0:
        raise Impossible("a system is booted as root")
    if not shutil.which("systemd-nspawn"):
        raise Impossible("systemd-container is not installed")


def bring_root(root, wanted, suite):
    present = present_packages(root)
    if not os.path.isfile(os.path.join(root, "usr/bin/apt-get")):
        make_root(root, wanted, suite)
    elif present is not None and not wanted <= present:
        make_root(root, wanted | present, suite)


def write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="ascii") as file:
        file.write(content)


def prepare(root, packages, stories):
    place = os.path.join(root, PLACE)
    os.makedirs(place)
    for name in os.listdir(HERE):
        if name.endswith(".py"):
            shutil.copy(os.path.join(HERE, name), place)
    shutil.copy(os.path.join(HERE, "../campaigns/wire.py"), place)
    for name in ("tests/update-integration/server.py", "tests/update-integration/packages.py", "sandbox/feed.py",
                 "sandbox/desktop.py"):
        os.makedirs(os.path.dirname(os.path.join(place, name)), exist_ok=True)
        shutil.copy(os.path.join(HERE, "../..", name), os.path.join(place, name))
    for package in packages:
        shutil.copy(package, place)
    units = os.path.join(root, "etc/systemd/system")
    write(units + "/story.service", UNIT.format(stories=" ".join(stories)))
    write(units + "/long-backup.service", LONG_UNIT)
    os.makedirs(units + "/graphical.target.wants", exist_ok=True)
    os.symlink("../story.service", units + "/graphical.target.wants/story.service")


def make_volume(folder):
    """A btrfs volume with a file on it; None where there can be none."""
    image, volume = os.path.join(folder, "image"), os.path.join(folder, "volume")
    os.mkdir(volume)
    with open(image, "wb") as file:
        file.truncate(256 << 20)
    for command in (["mkfs.btrfs", "--quiet", image], ["mount", "-o", "loop", image, volume]):
        if subprocess.run(command, capture_output=True, check=False).returncode != 0:
            return None
    write(volume + "/data/file", "something")
    return volume


def rest(root):
    with open(os.path.join(root, PLACE, "rest"), encoding="ascii") as file:
        time.sleep(min(float(file.read()), LONGEST_REST))


def keep_pictures(root, folder):
    os.makedirs(folder, exist_ok=True)
    for picture in glob.glob(os.path.join(root, PLACE, "pictures/*.png")):
        shutil.copy(picture, folder)


def play(debian, packages, stories, folder, pictures):
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", folder], check=True)
    parts = {name: os.path.join(folder, name) for name in ("upper", "work", "root")}
    for part in parts.values():
        os.mkdir(part)
    options = f"lowerdir={os.path.abspath(debian)},upperdir={parts['upper']},workdir={parts['work']}"
    mounted = subprocess.run(["mount", "-t", "overlay", "overlay", "-o", options, parts["root"]], capture_output=True, text=True,
                             check=False)
    if mounted.returncode != 0:
        raise Impossible("a layer upon the root folder could not be made: " + mounted.stderr.strip())
    prepare(parts["root"], packages, stories)
    volume = make_volume(folder)
    with open(os.path.join(folder, "console"), "w+b") as console:
        boot = ["timeout", "--kill-after=10", str(LIMIT), "systemd-nspawn", "-q", "-D", parts["root"], "--register=no", "--keep-unit", "-b"]
        boot += ["--bind", volume + ":/srv/volume"] if volume else []
        while subprocess.run(boot, stdin=subprocess.DEVNULL, stdout=console, stderr=console, check=False).returncode == RESTART:
            rest(parts["root"])
        if pictures:
            keep_pictures(parts["root"], pictures)
        output = os.path.join(parts["root"], PLACE, "output")
        if os.path.exists(output):
            with open(output, encoding="utf-8", errors="replace") as file:
                return file.read()
        console.seek(0)
        said = console.read().decode(errors="replace")
        if "systemd 2" not in said:
            raise Impossible("no system boots here: " + (said.strip().splitlines() or ["systemd-nspawn said nothing"])[-1])
        return said


def play_inside_namespace(arguments):
    folder = tempfile.mkdtemp(prefix="brevane-boot-")
    try:
        told = play(arguments.root, arguments.package, arguments.story, folder, arguments.pictures)
    finally:
        subprocess.run(["umount", "-R", folder], check=False)
        os.rmdir(folder)
    print(told)
    return 0 if told.rstrip().endswith("The story is over.") else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", required=True, help="the folder with Debian in it")
    parser.add_argument("--package", action="append", required=True, help="of the present version, and then of later ones")
    parser.add_argument("--suite", default=SUITE, help="what is in it")
    parser.add_argument("--pictures", help="the folder for what was photographed")
    parser.add_argument("story", nargs="+")
    arguments = parser.parse_args()
    try:
        see_whether_possible()
        bring_root(arguments.root, wanted_packages(arguments.package[0], arguments.story), arguments.suite)
        if os.environ.get("BREVANE_BOOT") != "inside":  # what is mounted ends with the namespace
            os.environ["BREVANE_BOOT"] = "inside"
            os.execvp("unshare", ["unshare", "-m", "--propagation", "private", sys.executable, "-B"] + sys.argv)
        return play_inside_namespace(arguments)
    except Impossible as reason:
        print(f"SKIPPED: {reason}")
        return 0


if __name__ == "__main__":
    sys.exit(main())
