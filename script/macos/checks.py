#!/usr/bin/env python3
"""Looks at a built Brevane.app and at the programs that are installed with it: checks.py BUNDLE [PROGRAM...]. Prints what it
found; fails when a check does."""
import collections
import os
import plistlib
import re
import subprocess
import sys

VERSION = os.environ.get("LLVM_VERSION", "19")
MINIMUM = {"x86_64": (10, 9), "arm64": (11, 0)}

# All that the program may be linked with.
FRAMEWORKS = {"AppKit", "CoreFoundation", "CoreGraphics", "CoreServices", "DiskArbitration", "Foundation", "IOKit",
              "Security", "ServiceManagement", "SystemConfiguration"}
# The daemon must not load what only a user's session has; the other tool starts and ends the application.
DAEMON_FRAMEWORKS = {"CoreFoundation", "CoreServices", "DiskArbitration", "Foundation", "IOKit", "Security", "SystemConfiguration"}
TOOLS = {"com.zerkolin.brevane.scheduler": DAEMON_FRAMEWORKS, "com.zerkolin.brevane.post-update": DAEMON_FRAMEWORKS | {"AppKit"}}
LIBRARIES = {"/usr/lib/libSystem.B.dylib", "/usr/lib/libc++.1.dylib", "/usr/lib/libobjc.A.dylib"}
TOOL_LIBRARIES = LIBRARIES | {"/usr/lib/libbsm.0.dylib"}

# What the C++ library and the Objective-C runtime have got since 10.9, by the symbol's name, and the first system with
# it. A program that asks for a symbol that its system has not does not start.
INTRODUCED = (
    (r"_objc_(alloc|allocWithZone)$", (10, 10)),
    (r"_objc_unsafeClaimAutoreleasedReturnValue$", (10, 11)),
    (r"_objc_(alloc_init)$", (10, 14)),
    (r"_objc_(opt_\w+|setProperty_\w+_stub)$", (10, 15)),
    (r"_objc_(claimAutoreleasedReturnValue|retain_x\d+|release_x\d+)$", (13, 0)),
    (r"_+cxa_(throw_bad_array_new_length|deleted_virtual)$", (10, 12)),
    (r"_+cxa_uncaught_exceptions$", (10, 12)),
    (r"__ZSt19uncaught_exceptionsv$", (10, 12)),
    (r"__Zd[la]Pvm$", (10, 12)),
    (r"__Z(nw|na|dl|da)\w*St11align_val_t", (10, 13)),
    (r"__Z(T[ISV]|N|NK)St(12bad_any_cast|18bad_variant_access|19bad_optional_access)", (10, 13)),
    (r"__ZN?K?St3__1(12shared_mutex|17shared_timed_mutex|19__shared_mutex_base)", (10, 12)),
    (r"__ZNSt3__16__itoa", (10, 15)),
    (r"__Z\w*St3__14__fs10filesystem", (10, 15)),
    (r"__ZNSt3__1(20__libcpp_atomic_wait|23__cxx_atomic_notify|23__libcpp_atomic_monitor)", (11, 0)),
    (r"__ZNSt3__1\d+__(arrive|construct|destroy)_barrier", (11, 0)),
    (r"__Z\w*St3__1(13basic_filebuf|14basic_[io]fstream)", (12, 3)),
    (r"__Z(T[ISTV]|TC)NSt3__1(15basic_stringbuf|18basic_stringstream|19basic_[io]stringstream)", (12, 3)),
    (r"__ZNK?St3__115basic_stringbufIc", (12, 3)),
    (r"__ZN?K?St3__17codecvtID[is]Du", (12, 3)),
    (r"__ZNSt3__18to_charsEPcS0_[def]", (13, 3)),
    (r"__Z(T[ISV])?N?St3__117bad_function_call", (13, 3)),
    (r"__ZNSt3__122__libcpp_verbose_abort", (13, 3)),
    (r"__Z\w*St3__13pmr", (14, 0)),
    (r"_+cxa_init_primary_exception$", (99, 0)),
    (r"__ZNSt3__1(13__hash_memory|27__from_chars_floating_point|19__is_posix_terminal)", (99, 0)),
    (r"__Z\w*St19bad_expected_access|__Z\w*St3__119bad_expected_access", (99, 0)),
)

# Newer than the oldest system, so the program must be able to do without them, and what it has to ask for all the same.
NEWER = {"x86_64": re.compile(r"_(dispatch_queue_create_with_target|_os_log_\w+|os_log_\w+|getattrlistbulk|asl_next|"
                              r"asl_release)(\$|$)")}
ASKED_FOR = {"x86_64": ("_dispatch_queue_create_with_target", "__os_log_create")}

failures = []


def tool(name, *arguments):
    return subprocess.run([f"llvm-{name}-{VERSION}", *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout


def check(holds, text):
    if not holds:
        failures.append(text)
    return "ok" if holds else "FAILED"


def text_of(version):
    return ".".join(str(number) for number in version)


def load_commands(program, architecture):
    return tool("objdump", "--macho", f"--arch={architecture}", "--private-headers", program)


def minimum_version(commands):
    found = re.search(r"cmd LC_BUILD_VERSION.*?minos (\d+)\.(\d+)", commands, re.S) \
        or re.search(r"cmd LC_VERSION_MIN_MACOSX.*?version (\d+)\.(\d+)", commands, re.S)
    return tuple(int(number) for number in found.groups()) if found else None


def linked(commands):
    return re.findall(r"cmd LC_LOAD(?:_WEAK)?_DYLIB.*?name (\S+)", commands, re.S)


def is_allowed(path, name="Brevane"):
    framework = re.match(r"/System/Library/Frameworks/(\w+)\.framework/", path)
    return path in (TOOL_LIBRARIES if name in TOOLS else LIBRARIES) \
        or bool(framework and framework.group(1) in TOOLS.get(name, FRAMEWORKS))


def undefined(program, architecture):
    """(symbol, library, is weak) of each."""
    listing = tool("nm", "-m", "-u", f"--arch={architecture}", program)
    return [(match.group(2), match.group(3), bool(match.group(1)))
            for match in re.finditer(r"\(undefined\) (weak )?external (\S+) \(from ([^)]+)\)", listing)]


def too_new(symbols, minimum):
    found = []
    for symbol, _, weak in symbols:
        for pattern, introduced in INTRODUCED:
            if not weak and introduced > minimum and re.match(pattern, symbol):
                found.append(f"{symbol} ({text_of(introduced)})")
    return found


def report(program, architecture):
    name = os.path.basename(program)
    minimum = MINIMUM[architecture]
    commands = load_commands(program, architecture)
    libraries = linked(commands)
    symbols = undefined(program, architecture)
    unknown = [path for path in libraries if not is_allowed(path, name)]
    newer = too_new(symbols, minimum)
    weak = sorted(symbol for symbol, _, is_weak in symbols if is_weak)
    newer_names = NEWER.get(architecture)
    strong = [symbol for symbol, _, is_weak in symbols if newer_names and newer_names.match(symbol) and not is_weak]
    absent = [name for name in ASKED_FOR.get(architecture, ())
              if not any(symbol.split("$")[0] == name for symbol, _, _ in symbols)]

    print(f"\n{name}, {architecture}")
    found = minimum_version(commands)
    print(f"  minimum version   {text_of(found) if found else 'none'}   "
          + check(found == minimum, f"{name}, {architecture}: the minimum version is not {text_of(minimum)}"))
    names = sorted(os.path.basename(path) for path in libraries)
    print(f"  linked with       {', '.join(names)}   "
          + check(not unknown, f"{name}, {architecture}: linked with {', '.join(unknown)}"))
    counts = collections.Counter(library for _, library, _ in symbols)
    print("  undefined         "
          + ", ".join(f"{count} of {name}" for name, count in sorted(counts.items(), key=lambda each: -each[1])))
    print(f"  C++ and runtime   {len(newer)} newer than {text_of(minimum)}   "
          + check(not newer, f"{name}, {architecture}: newer than {text_of(minimum)}: {', '.join(newer)}"))
    print(f"  weak              {', '.join(weak) or 'none'}   "
          + check(not strong and not absent,
                  f"{name}, {architecture}: not weak: {', '.join(strong) or 'none'}; missing: {', '.join(absent) or 'none'}"))
    if architecture == "arm64":  # which starts nothing that is not signed
        signed = "LC_CODE_SIGNATURE" in commands
        print("  signature         " + ("ad hoc" if signed else "none") + "   " + check(signed, f"{name}, arm64: not signed"))


def check_bundle(bundle):
    contents = os.path.join(bundle, "Contents")
    with open(os.path.join(contents, "Info.plist"), "rb") as file:
        information = plistlib.load(file)
    resources = os.path.join(contents, "Resources")
    icon = os.path.join(resources, information["CFBundleIconFile"] + ".icns")
    with open(icon, "rb") as file:
        check(file.read(4) == b"icns", "the icon is none")
    languages = sorted(name for name in os.listdir(resources) if name.endswith(".lproj"))
    check("en.lproj" in languages, "no English texts")
    for language in languages:
        check(os.path.isfile(os.path.join(resources, language, "Localizable.strings")), f"no texts in {language}")
    book = os.path.join(resources, information["CFBundleHelpBookFolder"], "Contents")
    with open(os.path.join(book, "Info.plist"), "rb") as file:
        help_information = plistlib.load(file)
    check(help_information["CFBundleIdentifier"] == information["CFBundleHelpBookName"], "the help book has another name")
    check(os.path.isfile(os.path.join(book, "Resources", "en.lproj", help_information["HPDBookAccessPath"])), "no help")
    check(information["CFBundleIdentifier"] == "com.zerkolin.brevane.application", "another bundle identifier")
    oldest = information["LSMinimumSystemVersionByArchitecture"]
    check(oldest == {name: text_of(version) for name, version in MINIMUM.items()}, "another minimum version in Info.plist")
    print(f"{bundle}: {information['CFBundleIdentifier']} {information['CFBundleVersion']}, {len(languages)} languages, "
          f"icon, help")
    return os.path.join(contents, "MacOS", information["CFBundleExecutable"])


def check_tool(program, version):
    """The property list in the program itself, which names it and its version."""
    name = os.path.basename(program)
    for architecture in MINIMUM:
        held = tool("objdump", "--macho", f"--arch={architecture}", "--section=__TEXT,__info_plist", program)
        found = re.search(r"<\?xml.*</plist>", held, re.S)
        information = plistlib.loads(found.group().encode()) if found else {}
        check(information.get("CFBundleIdentifier") == name, f"{name}, {architecture}: does not name itself")
        check(information.get("CFBundleVersion") == version, f"{name}, {architecture}: another version than the application's")
    print(f"\n{program}: {name} {version}")


def report_all(program):
    architectures = tool("lipo", "-archs", program).split()
    print(f"architectures       {', '.join(architectures)}   "
          + check(sorted(architectures) == sorted(MINIMUM), f"{program}: not the two architectures"))
    for architecture in architectures:
        report(program, architecture)


def main():
    bundle, *tools = sys.argv[1:]
    report_all(check_bundle(bundle))
    with open(os.path.join(bundle, "Contents", "Info.plist"), "rb") as file:
        version = plistlib.load(file)["CFBundleVersion"]
    for program in tools:
        check_tool(program, version)
        report_all(program)
    print()
    for failure in failures:
        print("FAILED: " + failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
