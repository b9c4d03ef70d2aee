#!/usr/bin/env python3
"""Compares what two ports of the helper define of what its portable part asks for: ports.py [SOURCE FOLDER].

An operation is a function that a portable header declares and that no portable source defines, or what a port's class
overrides of a portable class without a body of its own. Prints the operations that one port lacks, and then exits with 1.
"""
import os
import re
import sys

PORTS = {"Linux": ("helper/linux", "platform/linux/system"), "macOS": ("helper/macos", "platform/macos/system")}
PORTABLE = ("helper", "platform")
CLOSED = ("helper/linux", "helper/macos", "platform/linux", "platform/macos", "platform/ui")
SOURCES = (".cpp", ".mm")

# Whole interfaces that a system has no use for.
WITHOUT = {"macOS": {"AuthorityRules"}}  # rights are in the system's own database, which has no rules beside it


def under(path, folders):
    return any(path == folder or path.startswith(folder + "/") for folder in folders)


def files(source, folders, endings, closed=()):
    for folder in folders:
        for where, _, names in os.walk(os.path.join(source, folder)):
            if under(os.path.relpath(where, source), closed):
                continue
            yield from (os.path.join(where, name) for name in sorted(names) if name.endswith(endings))


def code(path):
    """The file without comments and texts."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    text = re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S)
    return re.sub(r'"(?:\\.|[^"\\\n])*"', '""', text)


def included(path):
    """The project's headers that the file includes."""
    with open(path, encoding="utf-8") as file:
        return set(re.findall(r'^#include "([^"]+)"', file.read(), re.M))


def definitions(text):
    """What is defined outside of every body: `name` and `Class::name`, as they stand at the begin of a line's function."""
    found = set()
    depth = 0
    statement = ""
    namespaces = re.compile(r"^\s*(?:inline\s+)?namespace[\w\s:]*$|^\s*extern\s+\"\"\s*$")
    opened = []
    for character in re.sub(r"^[ \t]*#[^\n]*", "", text, flags=re.M):
        if character == "{":
            last = statement.strip().split("\n")[-1]  # what stands before may be Objective-C's, without an end of its own
            is_namespace = depth == 0 and bool(namespaces.match(last))
            is_hidden = is_namespace and last.split() == ["namespace"]
            if depth == 0 and not is_namespace:
                found.update(name_of(statement))
            opened.append("hidden" if is_hidden else "namespace" if is_namespace else "body")
            depth = sum(1 for kind in opened if kind != "namespace")
            statement = ""
        elif character == "}":
            if opened:
                opened.pop()
            depth = sum(1 for kind in opened if kind != "namespace")
            statement = ""
        elif character == ";":
            if depth == 0:
                found.update(variable_of(statement))
            statement = ""
        else:
            statement += character
    return found


def name_of(statement):
    """The function that a statement before a body defines."""
    statement = re.sub(r"^\s*@\w+.*$", "", statement, flags=re.M)
    statement = re.sub(r"\)\s*:\s.*", ")", statement, count=1, flags=re.S)  # without a constructor's list
    match = re.search(r"([\w:~]+(?:<[^<>()]*>)?)\s*\(", statement)
    if not match or re.match(r"^\s*(class|struct|union|enum)\b", statement):
        return []
    return [match.group(1)]


def variable_of(statement):
    match = re.search(r"([\w:]+)\s*=", statement)
    return [match.group(1)] if match and not statement.lstrip().startswith("using") else []


def classes(text):
    """Each class of a header: its name, what it derives from, and its body."""
    for match in re.finditer(r"\b(?:class|struct)\s+(\w+)(?:\s+final)?\s*(?::\s*([^{;]+))?\{", text):
        depth, at = 1, match.end()
        while at < len(text) and depth:
            depth += {"{": 1, "}": -1}.get(text[at], 0)
            at += 1
        bases = re.findall(r"public\s+(?:\w+::)*(\w+)", match.group(2) or "")
        yield match.group(1), bases, text[match.end():at - 1]


def declarations(text):
    """What a header leaves to be defined: free functions, members and static members, and the pure ones of a class."""
    text = re.sub(r"\bnamespace[\w\s:]*\{", "", re.sub(r"^[ \t]*#[^\n]*", "", text, flags=re.M))
    outside = text
    functions, pure = set(), {}
    for name, _, body in classes(text):
        outside = outside.replace(body, "")
        functions.update(f"{name}::{each}" for each in left_open(body))
        if operations := re.findall(r"virtual[^;{]*?(\w+)\([^;]*?=\s*0\s*;", body):
            pure[name] = set(operations)
    functions.update(left_open(outside))
    return functions, pure


def left_open(body):
    body = re.sub(r"\{[^{}]*\}", ";", re.sub(r"\{[^{}]*\}", ";", body))
    for statement in body.split(";"):
        statement = statement.strip()
        if not statement or re.match(r"(using|typedef|friend|static_assert)\b", statement) or "= 0" in statement \
                or "= default" in statement or "= delete" in statement:
            continue
        match = re.search(r"(~?\w+)\s*\(", statement)
        if match and not re.search(r"=\s*\w+\(|std::function<[^;]*\b" + match.group(1), statement):
            yield match.group(1)


def operations_of(source):
    """What each port defines of what the portable part of the helper needs, as {port: {operation}}."""
    headers = list(files(source, PORTABLE, (".h",), CLOSED))
    portable = set()
    for path in files(source, PORTABLE, SOURCES, CLOSED):
        portable |= definitions(code(path))
    needed = needed_headers(source)
    declared, pure = set(), {}
    for path in headers:
        if os.path.relpath(path, source) not in needed:
            continue
        functions, interfaces = declarations(code(path))
        declared |= functions
        pure |= interfaces
    declared -= portable
    ports = {}
    for port, folders in PORTS.items():
        defined, overrides = set(), {}
        for path in files(source, folders, (".h", *SOURCES)):
            text = code(path)
            if path.endswith(SOURCES):
                defined |= definitions(text)
            for _, bases, body in classes(text):
                for base in set(bases) & set(pure):
                    overrides.setdefault(base, set()).update(re.findall(r"(\w+)\([^;{]*\)[^;{]*\boverride\b", body))
        ports[port] = (declared & defined) | {f"{base}::{name}" for base, names in overrides.items()
                                              for name in names & pure[base]}
    return ports, {f"{base}::{name}" for base, names in pure.items() for name in names}


def needed_headers(source):
    """Portable headers that the helper's portable part includes, and those that these include."""
    waiting = [path for path in files(source, ("helper",), (".h", *SOURCES), CLOSED)]
    found = {os.path.relpath(path, source) for path in waiting if path.endswith(".h")}
    while waiting:
        for header in included(waiting.pop()):
            path = os.path.join(source, header)
            if header.startswith(("helper/", "platform/")) and header not in found and not under(header, CLOSED) \
                    and os.path.isfile(path):
                found.add(header)
                waiting.append(path)
    return found


def main():
    source = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
    ports, _ = operations_of(source)
    every = set().union(*ports.values())
    lacking = [(port, operation) for port, own in ports.items() for operation in sorted(every - own)
               if operation.split("::")[0] not in WITHOUT.get(port, ())]
    for port, operation in lacking:
        print(f"{port} lacks {operation}")
    counts = ", ".join(f"{port} {len(own)}" for port, own in ports.items())
    print(f"operations          {counts}   {'FAILED' if lacking or not every else 'ok'}")
    return 1 if lacking or not every else 0


if __name__ == "__main__":
    sys.exit(main())
