#!/usr/bin/env python3
"""Makes an .icns of a picture: icon.py SOURCE.svg RESULT.icns. Draws with rsvg-convert."""
import struct
import subprocess
import sys

# The kinds of an .icns that hold a PNG, with its side in pixels.
KINDS = (("icp4", 16), ("icp5", 32), ("ic11", 32), ("ic12", 64), ("ic07", 128), ("ic13", 256), ("ic08", 256),
         ("ic14", 512), ("ic09", 512), ("ic10", 1024))


def drawn(source, side):
    return subprocess.run(["rsvg-convert", "-w", str(side), "-h", str(side), source], check=True,
                          stdout=subprocess.PIPE).stdout


def main():
    source, result = sys.argv[1:]
    pictures = {side: drawn(source, side) for side in {side for _, side in KINDS}}
    parts = [kind.encode() + struct.pack(">I", 8 + len(pictures[side])) + pictures[side] for kind, side in KINDS]
    body = b"".join(parts)
    with open(result, "wb") as file:
        file.write(b"icns" + struct.pack(">I", 8 + len(body)) + body)


if __name__ == "__main__":
    main()
