"""Prints Debian's list of changes, made of the newest section of CHANGELOG.md.

    changelog.py VERSION CHANGELOG

SOURCE_DATE_EPOCH is the date.
"""
import email.utils
import os
import re
import sys
import textwrap


def newest_changes(text):
    section = re.split(r"^## .*$", text, flags=re.M)[1]
    changes = re.split(r"^- ", section, flags=re.M)[1:]
    return [" ".join(change.replace("`", "").split()) for change in changes]


def main():
    version, path = sys.argv[1:]
    with open(path, encoding="utf-8") as file:
        changes = newest_changes(file.read())
    date = email.utils.formatdate(int(os.environ["SOURCE_DATE_EPOCH"]))
    print(f"brevane ({version}) unstable; urgency=medium\n")
    for change in changes:
        print(textwrap.fill(change, 76, initial_indent="  * ", subsequent_indent="    "))
    print(f"\n -- Zerkolin <support@zerkolin.example>  {date}")


if __name__ == "__main__":
    main()
