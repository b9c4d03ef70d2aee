"""Makes the package for another release of Debian or Ubuntu, in a root folder of that release.

    elsewhere.py --suite NAME --root FOLDER --out FOLDER [--version VERSION]

The folder is made when it is not there; it holds a copy of the sources and what was built of them. Prints the path of the
package, or, where the release cannot be fetched, "SKIPPED: why". Needs root and mmdebstrap.
"""
import argparse
import glob
import os
import shlex
import shutil
import subprocess
import sys

from boot import HERE, Impossible, bring_root, see_whether_possible

SOURCE = os.path.dirname(os.path.dirname(HERE))
LIMIT = 3600  # seconds
BUILD = """set -e
cd /src
[ -f build/check/build.ninja ] || cmake --preset check
cmake --build --preset check --target brevane_installation
script/package --built build/check --out /out {version}
"""


def copy_sources(root):
    """Each file with its time, so that only what has changed is built again."""
    folder = os.path.join(root, "src")
    os.makedirs(folder, exist_ok=True)
    subprocess.run(f"git ls-files -z | tar --create --null --files-from=- | tar --extract --directory {shlex.quote(folder)}", shell=True,
                   cwd=SOURCE, check=True)


def build(root, version):
    date = subprocess.run(["git", "log", "-1", "--format=%ct"], cwd=SOURCE, capture_output=True, text=True, check=True).stdout.strip()
    shutil.rmtree(root + "/out", ignore_errors=True)
    script = BUILD.format(version="--version " + version if version else "")
    inside = shlex.join(["chroot", root, "env", "SOURCE_DATE_EPOCH=" + date, "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "sh", "-c", script])
    command = ["timeout", str(LIMIT), "unshare", "-m", "--propagation", "private", "sh", "-c",
               f"mount -t proc proc {shlex.quote(root)}/proc && exec {inside}"]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit("\n".join((done.stdout + done.stderr).splitlines()[-40:]))
    return glob.glob(root + "/out/*.deb")[0]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("suite", "root", "out"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--version")
    arguments = parser.parse_args()
    try:
        see_whether_possible()
        wanted = subprocess.run([SOURCE + "/script/dependencies", "list", "build", "package"], capture_output=True, text=True, check=True)
        bring_root(arguments.root, set(wanted.stdout.split()), arguments.suite)
    except Impossible as reason:
        print(f"SKIPPED: {reason}")
        return
    copy_sources(arguments.root)
    print(shutil.copy(build(os.path.abspath(arguments.root), arguments.version), arguments.out))


if __name__ == "__main__":
    main()
