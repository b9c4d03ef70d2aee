"""Plays the scenes of a story inside a booted system, one after another, over restarts of it. Runs as root; see boot.py."""
import importlib
import os
import sys
import time

from inside import HERE, run

NEXT = os.path.join(HERE, "next")  # the number of the scene that comes next
REST = os.path.join(HERE, "rest")  # how many seconds the system is off before it starts again


def rest_of(names):
    scenes = [scene for name in names for scene in importlib.import_module(name).SCENES]
    first = 0
    if os.path.exists(NEXT):
        with open(NEXT, encoding="ascii") as file:
            first = int(file.read())
    return list(enumerate(scenes))[first:]


def main():
    for number, scene in rest_of(sys.argv[1:]):
        with open(NEXT, "w", encoding="ascii") as file:
            file.write(str(number + 1))
        began = time.monotonic()
        try:
            goes_down = scene()  # true for a restart, or how many seconds the system is off then
        except BaseException:
            print("FAILED: " + scene.__name__)
            print(run("journalctl", "--boot", "--no-pager", "--lines=80"))
            raise
        print(f"{scene.__name__.replace('_', ' ')}: {time.monotonic() - began:.1f} s", flush=True)
        if goes_down:
            with open(REST, "w", encoding="ascii") as file:
                file.write(str(0 if goes_down is True else goes_down))
            os.sync()
            run("systemctl", "reboot")
            time.sleep(60)  # the end comes before
            raise TimeoutError("the system does not go down")
    print("The story is over.", flush=True)


if __name__ == "__main__":
    main()
