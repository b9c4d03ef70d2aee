"""Makes of an installation below FOLDER/opt/brevane what a Debian package holds: brings what belongs into the system's own
folders there, makes the folders of what changes, and writes the package's name and version into the list of the installation.
"""
import argparse
import os
import plistlib
import shutil

ROOT = "opt/brevane"
PRODUCT = ROOT + "/Library/Brevane"
SYSTEM = PRODUCT + "/share/system"
SERVICE = "com.zerkolin.brevane.scheduler"
APPLICATION = "com.zerkolin.brevane.application"
PLACES = {
    "com.zerkolin.brevane.policy": "usr/share/polkit-1/actions/com.zerkolin.brevane.policy",
    SERVICE + ".conf": "usr/share/dbus-1/system.d/" + SERVICE + ".conf",
    SERVICE + ".service.dbus": "usr/share/dbus-1/system-services/" + SERVICE + ".service",
    SERVICE + ".service": "lib/systemd/system/" + SERVICE + ".service",
    APPLICATION + ".desktop": "usr/share/applications/" + APPLICATION + ".desktop",
    APPLICATION + ".metainfo.xml": "usr/share/metainfo/" + APPLICATION + ".metainfo.xml",
    APPLICATION + ".svg": "usr/share/icons/hicolor/scalable/apps/" + APPLICATION + ".svg",
}
# Links of the package lead from the product's folders to these.
REPLACED = ("Library/Preferences", "Library/Logs/Brevane")
CHANGING = ("var/lib/brevane/Preferences", "var/lib/brevane/db/brevane", "var/lib/brevane/run", "var/log/brevane")


def bring_to_system(folder):
    for name, place in PLACES.items():
        target = os.path.join(folder, place)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copy(os.path.join(folder, SYSTEM, name), target)


def write_list(folder, version, package):
    path = os.path.join(folder, PRODUCT, "installation.plist")
    with open(path, "rb") as file:
        content = plistlib.load(file)
    content["Version"] = version
    content["HumanVersion"] = ".".join(version.split(".")[:3])
    content["Package"] = package
    content["Folders"] = []
    with open(path, "wb") as file:
        plistlib.dump(content, file)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder")
    parser.add_argument("--version", required=True)
    parser.add_argument("--package", required=True)
    arguments = parser.parse_args()
    bring_to_system(arguments.folder)
    for name in REPLACED:
        os.rmdir(os.path.join(arguments.folder, ROOT, name))
    for name in CHANGING:
        os.makedirs(os.path.join(arguments.folder, name))
    write_list(arguments.folder, arguments.version, arguments.package)


if __name__ == "__main__":
    main()
