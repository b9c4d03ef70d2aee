"""Packages that no honest hand makes, but for their signature, which is good.

    packages.py PRIVATE-KEY-FILE LAYOUT VERSION KIND PACKAGE
"""
import gzip
import io
import os
import plistlib
import sys
import tarfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "sandbox"))
sys.dont_write_bytecode = True
import feed  # noqa: E402


HELPER = "com.zerkolin.brevane.scheduler"


def script(check, serve):
    """A helper that does the one when it is to check itself, and the other when it is to serve."""
    return lambda _: f'#!/bin/sh\n[ "$1" = --self-check ] && {{ {check}; }}\n{serve}\n'.encode()


class Package:
    def __init__(self, key, layout, version):
        self.key, self.layout, self.version = key, layout, version
        self.stream = io.BytesIO()
        self.archive = tarfile.open(fileobj=self.stream, mode="w")

    def add(self, name, content=b"evil\n", kind=tarfile.REGTYPE, link="", mode=0o644):
        entry = tarfile.TarInfo(name)
        entry.type, entry.linkname, entry.mode = kind, link, mode
        entry.size = len(content) if kind == tarfile.REGTYPE else 0
        self.archive.addfile(entry, io.BytesIO(content))

    def add_all(self, more=(), less=(), links=None, version=None, helper=None):
        """The honest content, with a list that names more or fewer files or links, or with another helper."""
        product = os.path.join(self.layout, feed.PRODUCT)
        with open(os.path.join(product, feed.MANIFEST), "rb") as file:
            manifest = plistlib.load(file)
        for name in manifest["Files"]:
            if name == HELPER and helper:
                with open(os.path.join(product, name), "rb") as file:
                    self.add(name, helper(file.read()), mode=0o755)
            else:
                self.archive.add(os.path.join(product, name), name, recursive=False)
        manifest.pop("Folders", None)
        manifest["Version"] = version or self.version
        manifest["Files"] = [name for name in manifest["Files"] if name not in less] + list(more)
        manifest["Links"].update(links or {})
        self.add(feed.MANIFEST, plistlib.dumps(manifest))

    def write(self, output, damage=lambda archive: archive):
        self.archive.close()
        feed.write(output, feed.signed(damage(gzip.compress(self.stream.getvalue(), 1)), self.key))


def chain(package):
    # Each link by itself stays inside as names go; the second one would start from where the first one leads.
    package.add("p/q/l", kind=tarfile.SYMTYPE, link="../../share")
    package.add("m", kind=tarfile.SYMTYPE, link="p/q/l/../../outside")


def through(package):
    package.add("way", kind=tarfile.SYMTYPE, link="share")
    package.add("way/file")


ENTRIES = {
    "dots": lambda package: package.add("../climbed"),
    "dots-inside": lambda package: package.add("share/../../climbed"),
    "absolute": lambda package: package.add(os.path.join(os.path.dirname(package.layout), "climbed")),
    "link-up": lambda package: package.add("evil", kind=tarfile.SYMTYPE, link="../../climbed"),
    "link-absolute": lambda package: package.add("evil", kind=tarfile.SYMTYPE, link="/etc/passwd"),
    "link-chain": chain,
    "through-link": through,
    "hard-link": lambda package: package.add("evil", kind=tarfile.LNKTYPE, link="bin/brevane"),
    "device": lambda package: package.add("evil", kind=tarfile.CHRTYPE),
    "pipe": lambda package: package.add("evil", kind=tarfile.FIFOTYPE),
    "twice": lambda package: package.add("bin/brevane"),
    "deep": lambda package: package.add("/".join(["d"] * 100)),
    "long-name": lambda package: package.add("n" * 300),
    "unlisted": lambda package: package.add("unlisted"),
}
LISTS = {
    "missing": {"more": ["missing"]},
    "list-dots": {"more": ["../../climbed"]},
    "list-less": {"less": ["bin/brevane"]},
    "list-link-over-settings": {"links": {"Library/Preferences/com.zerkolin.brevane.scheduler.plist": "../Brevane/share/text"}},
    "list-link-beside-settings": {"links": {"Library/Preferences/x": "../Brevane/Preferences/x"}},
    "list-link-changed": {"links": {"usr/bin/log": "../../Library/Brevane/bin/brevane"}},
    "list-link-nowhere": {"links": {"usr/bin/none": "../../Library/Brevane/bin/none"}},
    "more-links": {"links": {"usr/bin/brevane": "../../Library/Brevane/bin/brevane",
                             "usr/share/text": "../../Library/Brevane/share/text"}},
    "missing-library": {"helper": lambda program: program.replace(b"libsystemd.so.0", b"libsystemd.so.9")},
    "endless-check": {"helper": script("exec sleep 1000", "exit 1")},
    "never-serves": {"helper": script("exit 0", "exit 1")},
    "endless-start": {"helper": script("exit 0", "exec sleep 1000")},
    "list-link-out": {"links": {"usr/bin/evil": "/etc/passwd"}},
    "list-link-place": {"links": {"../evil": "Library/Brevane/bin/brevane"}},
    "list-older": {"version": "0.9"},
    "list-same": {"version": "1.0"},
    "list-no-version": {"version": "new"},
}


def main(key, layout, version, kind, output):
    package = Package(key, layout, version)
    package.add_all(**LISTS.get(kind, {}))
    if kind in ENTRIES:
        ENTRIES[kind](package)
    if kind == "cut":
        package.write(output, lambda archive: archive[:len(archive) // 2])
    elif kind == "no-archive":
        package.write(output, lambda archive: b"x" * 5000)
    elif kind == "empty":
        package.write(output, lambda archive: b"")
    else:
        package.write(output)


if __name__ == "__main__":
    main(*sys.argv[1:])
