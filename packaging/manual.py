"""Prints a program's page of the manual, made of what the program prints for --help.

    manual.py --version VERSION NAME SECTION PROGRAM
"""
import datetime
import os
import re
import subprocess
import sys


def escaped(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def parts_of(lines):
    """The lines of usage, the sentences, and the options as pairs of a name and its description."""
    usage, sentences, options = [], [], []
    for line in lines:
        option = re.match(r"  (-\S.*?)(?:   *(.*))?$", line)
        if line.startswith("usage: ") or (line.startswith("       ") and not options and not sentences):
            usage.append(line[7:].strip())
        elif option:
            options.append([option.group(1), [option.group(2) or ""]])
        elif line.startswith("  ") and options:
            options[-1][1].append(line.strip())
        elif line.strip():
            sentences.append(line.strip())
    return usage, sentences, options


def page(name, section, version, text):
    usage, sentences, options = parts_of(text.splitlines())
    date = datetime.datetime.fromtimestamp(int(os.environ.get("SOURCE_DATE_EPOCH", "0")), datetime.timezone.utc)
    summary = sentences[0].split(";")[0].rstrip(".")
    out = [f'.TH "{name.upper()}" {section} "{date:%Y-%m-%d}" "Brevane {version}" "Brevane"', ".SH NAME",
           escaped(name) + " \\- " + escaped(summary[0].lower() + summary[1:]), ".SH SYNOPSIS"]
    for line in usage:
        words = line.split(" ", 1)
        out += [".B " + escaped(name), escaped(words[1] if len(words) > 1 else ""), ".br"]
    out += [".SH DESCRIPTION"] + [escaped(sentence) for sentence in sentences]
    if options:
        out.append(".SH OPTIONS")
    for option, description in options:
        out += [".TP", ".B " + escaped(option)] + [escaped(line) for line in description if line]
    return "\n".join(line for line in out if line) + "\n"


def main():
    if len(sys.argv) != 6 or sys.argv[1] != "--version":
        sys.exit(__doc__)
    version, name, section, program = sys.argv[2:]
    told = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
    sys.stdout.write(page(name, section, version, told))


if __name__ == "__main__":
    main()
