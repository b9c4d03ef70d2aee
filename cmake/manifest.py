"""Ends an installation: makes the links of the fixed paths into the product's folder, and writes the list of all of it.

Called by the install rules of BrevaneInstall.cmake.
"""
import argparse
import os
import plistlib

PRODUCT = "Library/Brevane"
NAME = "installation.plist"
DAEMON = "com.zerkolin.brevane.scheduler.plist"
LINKS = {
    "Library/LaunchDaemons/" + DAEMON: "../Brevane/LaunchDaemons/" + DAEMON,
    "usr/bin/log": "../../Library/Brevane/bin/log",
}


def make_links(root):
    links = {}
    for path, target in LINKS.items():
        place = os.path.join(root, path)
        if not os.path.exists(os.path.join(os.path.dirname(place), target)):
            continue
        links[path] = target
        beside = place + ".new"
        if os.path.lexists(beside):
            os.remove(beside)
        os.symlink(target, beside)
        os.replace(beside, place)
    return links


def earlier_folders(path):
    """Those that an earlier installation made, when this one goes over it."""
    try:
        with open(path, "rb") as file:
            return plistlib.load(file).get("Folders", [])
    except FileNotFoundError:
        return []


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("root", "prefix", "version", "human-version"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--folders", nargs="*", default=[])
    parser.add_argument("--files", nargs="*", default=[])
    arguments = parser.parse_args()

    product = os.path.join(arguments.prefix, PRODUCT)
    path = os.path.join(arguments.root, PRODUCT, NAME)
    files = sorted(os.path.relpath(file, product) for file in arguments.files)
    manifest = {"Version": arguments.version, "HumanVersion": arguments.human_version, "Files": files,
                "Links": make_links(arguments.root),
                "Folders": sorted(set(earlier_folders(path)) | set(arguments.folders))}
    with open(path + ".new", "wb") as file:
        plistlib.dump(manifest, file)
    os.replace(path + ".new", path)


if __name__ == "__main__":
    main()
