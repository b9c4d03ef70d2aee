"""What is in the file system, before the package and after it. Runs inside, as root."""
import json
import os

from inside import HERE

MEMORY = os.path.join(HERE, "tree")
LOOKED_AT = ("/boot", "/etc", "/home", "/opt", "/root", "/usr", "/var")
# What the system itself writes at any time, and what the application keeps for its user, whose files no package touches.
OTHERS = ("/home/anna/Library", "/var/cache", "/var/lib/PackageKit", "/var/lib/apt", "/var/lib/dpkg", "/var/lib/systemd", "/var/log/apt", "/var/log/journal", "/var/tmp",
          "/var/log/dpkg.log", "/var/lib/polkit-1", "/root/.cache", "/root/.config", "/var/log/wtmp", "/var/log/lastlog",
          "/var/log/alternatives.log", "/etc/ld.so.cache")


def present():
    """Every path but of the others, and what a link leads to."""
    found = {}
    for top in LOOKED_AT:
        for folder, folders, files in os.walk(top):
            folders[:] = [name for name in folders if os.path.join(folder, name) not in OTHERS]
            for name in folders + files:
                path = os.path.join(folder, name)
                if path not in OTHERS:
                    found[path] = os.readlink(path) if os.path.islink(path) else ""
    return found


def remember():
    with open(MEMORY, "w", encoding="utf-8") as file:
        json.dump(present(), file)


def differences():
    """What has come, gone or leads elsewhere since remember()."""
    with open(MEMORY, encoding="utf-8") as file:
        before = json.load(file)
    after = present()
    return sorted(path for path in before.keys() | after.keys() if before.get(path) != after.get(path))
