"""A repository of packages on this machine, and what apt knows of it. Runs inside, as root."""
import hashlib
import os
import shutil
import subprocess

from inside import run

FOLDER = "/srv/offers"
LIST = "/etc/apt/sources.list"
KEY = "/etc/apt/keyrings/offers.gpg"


def sign(folder):
    home = "/root/offers-key"
    gpg = ["gpg", "--homedir", home, "--batch", "--yes", "--quiet", "--pinentry-mode", "loopback", "--passphrase", ""]
    if not os.path.exists(home):
        os.mkdir(home, 0o700)
        run(*gpg, "--quick-gen-key", "offers@localhost", "ed25519", "sign", "never", fails=False)
        os.makedirs(os.path.dirname(KEY), exist_ok=True)
        run(*gpg, "--output", KEY, "--export", "offers@localhost", fails=False)
    run(*gpg, "--output", folder + "/InRelease", "--clearsign", folder + "/Release", fails=False)


def entry_of(package):
    fields = subprocess.run(["dpkg-deb", "--field", package], capture_output=True, text=True, check=True).stdout
    with open(package, "rb") as file:
        content = file.read()
    return f"{fields}Filename: ./{os.path.basename(package)}\nSize: {len(content)}\nSHA256: {hashlib.sha256(content).hexdigest()}\n"


def offer(*packages, signed=True):
    """Makes these the packages on offer, and the folder the only source of packages."""
    shutil.rmtree(FOLDER, ignore_errors=True)
    os.makedirs(FOLDER)
    for package in packages:
        shutil.copy(package, FOLDER)
    with open(FOLDER + "/Packages", "w", encoding="utf-8") as file:
        file.write("\n".join(entry_of(package) for package in packages))
    with open(FOLDER + "/Packages", "rb") as file:
        content = file.read()
    with open(FOLDER + "/Release", "w", encoding="ascii") as file:
        date = run("date", "--utc", "+%a, %d %b %Y %H:%M:%S UTC")
        file.write(f"Origin: offers\nLabel: offers\nDate: {date}\nSHA256:\n {hashlib.sha256(content).hexdigest()} {len(content)} Packages\n")
    if signed:
        sign(FOLDER)
    listen_to(f"deb [signed-by={KEY}] file:{FOLDER} ./" if signed else f"deb [allow-insecure=yes] file:{FOLDER} ./")


def listen_to(source):
    """Whatever was known of sources is forgotten."""
    shutil.rmtree("/var/lib/apt/lists", ignore_errors=True)
    with open(LIST, "w", encoding="ascii") as file:
        file.write(source + "\n")
