"""Kills at random moments of updates, of the helper alone and of everything at once: at once and after the next start a
whole version is there, no link leads nowhere, and what somebody else had put there is there still."""
import os
import plistlib
import random
import shutil
import subprocess
import sys
import time

import machine
import wire

sys.path.insert(0, os.path.join(machine.ROOT, "sandbox"))
import feed  # noqa: E402

DEFAULT_COUNT = 300
LINKS = {"usr/bin/log": "../../Library/Brevane/bin/log",
         "Library/LaunchDaemons/daemon.plist": "../Brevane/LaunchDaemons/daemon.plist"}
# What only one of the versions has.
OWN_LINKS = {"1.0": {"usr/bin/first": "../../Library/Brevane/bin/first"},
             "2.0": {"usr/bin/second": "../../Library/Brevane/bin/second"}}
FOREIGN = ["share/mine", "share/only-in-1.0/mine", "folder/mine", "share/only-in-2.0/file"]
STAGING = "Library/.com.zerkolin.brevane.update"


class Installed(machine.Machine):
    def lay_out(self):
        super().lay_out()
        self.program = os.path.join(self.folder, "helper")
        subprocess.run(["objcopy", "--strip-all", machine.HELPER, self.program], check=True)
        self.layouts = {version: self.layout(version) for version in ("1.0", "2.0")}
        key, package = self.file("key.pem"), self.file("Brevane.pkg")
        feed.make_key(key)
        feed.make_package(key, self.layouts["2.0"], "2.0", "Two", package)
        feed.make_feed(package, "2.0", "Two", self.file("update.plist"))
        feed.make_configuration(key, "file://" + self.file("update.plist"), self.file("configuration.plist"))
        self.put_first()

    def file(self, name):
        return os.path.join(self.folder, name)

    def contents(self, version):
        own = "first" if version == "1.0" else "second"
        texts = {name: f"{name} {version}\n".encode() for name in
                 ("bin/log", "bin/" + own, "LaunchDaemons/daemon.plist", "share/text", f"share/only-in-{version}/file")}
        return {wire.SERVICE: machine.read(self.program) + version.encode(), **texts}

    def layout(self, version):
        product = os.path.join(self.file("layout-" + version), feed.PRODUCT)
        for name, content in self.contents(version).items():
            path = os.path.join(product, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            machine.write(path, content)
        os.chmod(os.path.join(product, wire.SERVICE), 0o755)
        machine.write(os.path.join(product, feed.MANIFEST), plistlib.dumps(
            {"Version": version, "HumanVersion": version, "Files": sorted(self.contents(version)),
             "Links": {**LINKS, **OWN_LINKS[version]}, "Folders": ["usr", "usr/bin", "Library/LaunchDaemons"]}))
        return self.file("layout-" + version)

    def put_first(self):
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.copytree(self.layouts["1.0"], self.root)
        for link, target in {**LINKS, **OWN_LINKS["1.0"]}.items():
            os.makedirs(os.path.dirname(os.path.join(self.root, link)), exist_ok=True)
            os.symlink(target, os.path.join(self.root, link))
        for name in FOREIGN:
            path = os.path.join(self.root, feed.PRODUCT, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            machine.write(path, b"mine " + name.encode())

    def start(self):
        self.launch([os.path.join(self.root, feed.PRODUCT, wire.SERVICE), "--root", self.root, "--updates",
                     self.file("configuration.plist"), "--rules", "/etc/polkit-1/rules.d"])

    def processes(self, word="--root"):
        found = []
        for name in filter(str.isdigit, os.listdir("/proc")):
            try:
                words = machine.read(f"/proc/{name}/cmdline").split(b"\0")
            except OSError:
                continue
            if word.encode() in words and self.root.encode() in words:
                found.append(int(name))
        return found

    def kill_all(self):
        self.kill()
        while left := self.processes():
            for process in left:
                try:
                    os.kill(process, 9)
                except ProcessLookupError:
                    pass

    def version(self):
        """The version whose every file is there; None when none is. Read anew when it is exchanged meanwhile."""
        product = os.path.join(self.root, feed.PRODUCT)
        while True:
            folder = os.open(product, os.O_RDONLY | os.O_DIRECTORY)
            try:
                version = self.version_in(f"/proc/self/fd/{folder}")
                if version or os.path.samestat(os.stat(product), os.fstat(folder)):
                    return version
            finally:
                os.close(folder)

    def version_in(self, product):
        try:
            version = plistlib.loads(machine.read(os.path.join(product, feed.MANIFEST)))["Version"]
            whole = all(machine.read(os.path.join(product, name)) == content
                        for name, content in self.contents(version).items()
                        if (version, name) != ("1.0", "share/only-in-2.0/file"))
        except (OSError, ValueError, KeyError):
            return None
        return version if whole else None

    def dangling(self):
        found = []
        for folder in ("usr/bin", "Library/LaunchDaemons"):
            for entry in os.scandir(os.path.join(self.root, folder)):
                if entry.is_symlink() and not os.path.exists(entry.path):
                    found.append(os.path.join(folder, entry.name))
        return found

    def lost(self):
        """Foreign files that are nowhere below the root any more."""
        contents = set()
        for folder, _, names in os.walk(os.path.join(self.root, "Library")):
            for name in names:
                if name.startswith(("mine", "file")):
                    contents.add(machine.read(os.path.join(folder, name)))
        return [name for name in FOREIGN if b"mine " + name.encode() not in contents]

    def links_of(self, version):
        return all(os.path.exists(os.path.join(self.root, link)) for link in {**LINKS, **OWN_LINKS[version]})

    def is_settled(self):
        left = [name for name in os.listdir(os.path.join(self.root, "Library")) if name.startswith(".com.zerkolin.brevane")]
        return not left


def begin(host):
    host.kill_all()
    host.put_first()
    host.start()


def ask_for_install():
    client = wire.Client()
    client.request([("message", 27), ("auth", client.token())])
    return client


def installed_in(host):
    began = time.monotonic()
    client = ask_for_install()
    machine.wait_for(lambda: host.version() == "2.0" and host.is_settled())
    client.close()
    return time.monotonic() - began


def run(count):
    machine.enter()
    host = Installed()
    usual = min(begin(host) or installed_in(host) for _ in range(5))
    chance = random.Random(20261122)
    counts = dict.fromkeys(("alone", "new", "revived", "torn", "torn_at_once", "lost", "dangling", "dangling_at_once", "unfinished"), 0)
    for number in range(count):
        begin(host)
        client = ask_for_install()
        time.sleep(chance.uniform(0, usual))
        alone = number % 2 == 0
        host.kill() if alone else host.kill_all()
        counts["alone"] += alone
        counts["torn_at_once"] += host.version() is None
        counts["dangling_at_once"] += bool(host.dangling())
        client.close()
        # Either the watch brings a helper back, or nobody is left.
        machine.wait_for(lambda: not host.processes() or (not host.processes("--watch-update") and host.answers()))
        if host.processes():
            counts["revived"] += 1
        else:
            host.start()
        try:
            machine.wait_for(host.is_settled, 5)
        except TimeoutError:
            counts["unfinished"] += 1
        version = host.version()
        counts["torn"] += version is None
        counts["new"] += version == "2.0"
        counts["lost"] += bool(host.lost())
        counts["dangling"] += bool(host.dangling()) or not host.links_of(version or "1.0")
    print(f"kills of an install: {count}, of the helper alone: {counts['alone']} (back by itself: {counts['revived']}), "
          f"new version in the end: {counts['new']}, torn: {counts['torn_at_once']} at the moment itself, {counts['torn']} after the next start, foreign files lost: {counts['lost']}, "
          f"not tidied: {counts['unfinished']}, links that lead nowhere: {counts['dangling']} after the next start, "
          f"{counts['dangling_at_once']} at the moment itself; an install takes {usual * 1000:.0f} ms")
    bad = ("torn", "torn_at_once", "lost", "dangling", "unfinished")
    return 1 if any(counts[name] for name in bad) else 0
