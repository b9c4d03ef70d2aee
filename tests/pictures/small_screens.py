#!/usr/bin/python3
"""No window, sheet or alert is larger than the free area of a small screen, at any scale.

    small_screens.py PICTURES-PROGRAM
"""
import json
import os
import struct
import subprocess
import sys
import tempfile

# Width, height and scale; the sizes are in the screen's own pixels.
SCREENS = ((800, 600, 1), (1280, 1024, 2))
# What the frame takes that the toolkit gives to a window without a display.
FRAME = 2


def size_of(path):
    with open(path, "rb") as file:
        return struct.unpack(">II", file.read(24)[16:24])


def too_large(program, width, height, scale):
    with tempfile.TemporaryDirectory() as folder:
        configuration = os.path.join(folder, "screen.json")
        screen = {"name": "small", "x": 0, "y": 0, "width": width, "height": height,
                  "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}
        with open(configuration, "w", encoding="utf-8") as file:
            json.dump({"screens": [screen]}, file)
        environment = dict(os.environ, QT_QPA_PLATFORM=f"offscreen:configfile={configuration}",
                           QT_SCALE_FACTOR=str(scale), LC_ALL="C", TZ="UTC")
        pictures = os.path.join(folder, "pictures")
        subprocess.run([program, pictures], env=environment, check=True)
        for name in sorted(os.listdir(pictures)):
            found = size_of(os.path.join(pictures, name))
            if found[0] > width or found[1] > height - FRAME * scale:
                yield f"{name} is {found[0]}x{found[1]} on a screen of {width}x{height} at {scale * 100} %"


def main():
    faults = [fault for screen in SCREENS for fault in too_large(sys.argv[1], *screen)]
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
