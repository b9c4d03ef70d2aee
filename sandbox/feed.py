#!/usr/bin/python3
"""Makes packages of updates, the feed that names them, and the keys that they are signed with.

    feed.py key PRIVATE-KEY-FILE
        a new pair; prints the public key as BREVANE_UPDATE_KEY takes it
    feed.py package PRIVATE-KEY-FILE LAYOUT VERSION HUMAN-VERSION PACKAGE
        a signed package of what `cmake --install` has laid out below the folder LAYOUT
    feed.py feed PACKAGE VERSION HUMAN-VERSION FEED
        a feed that offers a package, which is to stand beside it
    feed.py configuration PRIVATE-KEY-FILE FEED-URL FILE
        what the scheduler helper's option --updates takes
"""
import gzip
import hashlib
import io
import os
import plistlib
import sys
import tarfile

from cryptography.hazmat.primitives import serialization
from cryptography.hazmat.primitives.asymmetric.ed25519 import Ed25519PrivateKey

PRODUCT = "Library/Brevane"
MANIFEST = "installation.plist"
MARK = b"BRVSIG1\n"
PURPOSE = b"com.zerkolin.brevane.package\n"


def write(path, content, mode=0o644):
    """Whole or not at all."""
    with open(os.open(path + ".new", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, mode), "wb") as file:
        file.write(content)
    os.replace(path + ".new", path)


def make_key(path):
    key = Ed25519PrivateKey.generate()
    write(path, key.private_bytes(serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
                                  serialization.NoEncryption()), 0o600)


def load_key(path):
    with open(path, "rb") as file:
        return serialization.load_pem_private_key(file.read(), None)


def public_key(path):
    """Its 32 bytes."""
    return load_key(path).public_key().public_bytes(serialization.Encoding.Raw, serialization.PublicFormat.Raw)


def signed(archive, key_path):
    """The package of an archive."""
    return archive + load_key(key_path).sign(PURPOSE + hashlib.sha512(archive).digest()) + MARK


def anonymous(entry):
    """Neither who packed it nor when is anybody's business."""
    entry.uid = entry.gid = entry.mtime = 0
    entry.uname = entry.gname = ""
    return entry


def add_manifest(archive, product, version, human_version):
    with open(os.path.join(product, MANIFEST), "rb") as file:
        manifest = plistlib.load(file)
    manifest.update(Version=version, HumanVersion=human_version)
    manifest.pop("Folders", None)  # they are this installation's, not the package's
    content = plistlib.dumps(manifest)
    entry = tarfile.TarInfo(MANIFEST)
    entry.size, entry.mode = len(content), 0o644
    archive.addfile(entry, io.BytesIO(content))
    return manifest["Files"]


def make_package(key_path, layout, version, human_version, output):
    product = os.path.join(layout, PRODUCT)
    stream = io.BytesIO()
    with gzip.GzipFile(fileobj=stream, mode="wb", compresslevel=1, mtime=0) as compressed, \
            tarfile.open(fileobj=compressed, mode="w") as archive:
        for name in add_manifest(archive, product, version, human_version):
            archive.add(os.path.join(product, name), name, recursive=False, filter=anonymous)
    write(output, signed(stream.getvalue(), key_path))


def make_feed(package, version, human_version, output):
    write(output, plistlib.dumps({"Version": version, "HumanVersion": human_version,
                                  "Package": os.path.basename(package), "Size": os.path.getsize(package)}))


def make_configuration(key_path, url, output):
    write(output, plistlib.dumps({"Feed": url, "PublicKey": public_key(key_path)}))


def main(arguments):
    commands = {"key": (1, lambda path: (make_key(path), print(public_key(path).hex()))), "package": (5, make_package),
                "feed": (4, make_feed), "configuration": (3, make_configuration)}
    count, command = commands.get(arguments[0] if arguments else "", (None, None))
    if command is None or len(arguments) != count + 1:
        sys.exit(__doc__)
    command(*arguments[1:])


if __name__ == "__main__":
    main(sys.argv[1:])
