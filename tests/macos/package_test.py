"""Tests of script/macos/package: the layout of the installer package, and its steps, without a Mac."""
import os
import plistlib
import re
import shlex
import stat
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
SCRIPT = os.path.join(SOURCE, "script", "macos", "package")
SCHEDULER = "com.zerkolin.brevane.scheduler"
POST_UPDATE = "com.zerkolin.brevane.post-update"


def write(path, text, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    os.chmod(path, mode)


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def read_list(*path):
    with open(os.path.join(*path), "rb") as file:
        return plistlib.load(file)


class PackageTests(unittest.TestCase):
    def setUp(self):
        held = tempfile.TemporaryDirectory()
        self.addCleanup(held.cleanup)
        self.folder = held.name
        self.built = os.path.join(self.folder, "built")
        contents = os.path.join(self.built, "Brevane.app", "Contents")
        write(os.path.join(contents, "MacOS", "Brevane"), "program", 0o777)
        write(os.path.join(contents, "Resources", "en.lproj", "Localizable.strings"), "", 0o666)
        with open(os.path.join(contents, "Info.plist"), "wb") as file:
            plistlib.dump({"CFBundleVersion": "1.2.3.45"}, file)
        for name in (SCHEDULER, POST_UPDATE):
            write(os.path.join(self.built, name), name, 0o600)

    def run_script(self, *arguments):
        return subprocess.run([sys.executable, "-B", SCRIPT, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True, check=False)

    def pack(self):
        out = os.path.join(self.folder, "package")
        run = self.run_script("--dry-run", "--built", self.built, "--out", out)
        self.assertEqual(run.returncode, 0, run.stderr)
        return out, run.stdout

    def test_each_file_is_where_the_product_looks_for_it(self):
        out, _ = self.pack()
        found = {os.path.relpath(os.path.join(folder, name), os.path.join(out, "root"))
                 for folder, _, names in os.walk(os.path.join(out, "root")) for name in names}
        self.assertEqual(found, {"Applications/Brevane.app/Contents/Info.plist",
                                 "Applications/Brevane.app/Contents/MacOS/Brevane",
                                 "Applications/Brevane.app/Contents/Resources/en.lproj/Localizable.strings",
                                 f"Library/Brevane/{SCHEDULER}", f"Library/Brevane/{POST_UPDATE}",
                                 f"Library/LaunchDaemons/{SCHEDULER}.plist"})

    def test_programs_can_be_run_by_all_and_written_by_their_owner_alone(self):
        out, _ = self.pack()
        for folder, folders, names in os.walk(os.path.join(out, "root")):
            for name in (*folders, *names):
                path = os.path.join(folder, name)
                is_open = os.path.isdir(path) or name in ("Brevane", SCHEDULER, POST_UPDATE)
                self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o755 if is_open else 0o644, path)

    def test_the_launch_daemon_is_the_program_that_is_packed_and_serves_its_name(self):
        out, _ = self.pack()
        daemon = read_list(out, "root", "Library", "LaunchDaemons", SCHEDULER + ".plist")
        self.assertEqual(daemon["Label"], SCHEDULER)
        self.assertEqual(daemon["MachServices"], {SCHEDULER: True})
        self.assertTrue(os.path.isfile(os.path.join(out, "root", daemon["ProgramArguments"][0].lstrip("/"))))
        self.assertTrue(daemon["KeepAlive"] and daemon["RunAtLoad"])
        self.assertEqual(daemon["AssociatedBundleIdentifiers"], ["com.zerkolin.brevane.application"])
        keys = re.findall("<key>(.*?)</key>", read(out, "root", "Library", "LaunchDaemons", SCHEDULER + ".plist"))
        self.assertEqual([key for key in set(keys) if keys.count(key) > 1], [])

    def test_the_distribution_names_the_component_and_the_version(self):
        out, printed = self.pack()
        document = xml.etree.ElementTree.parse(os.path.join(out, "Distribution.xml")).getroot()
        reference = [each for each in document.findall("pkg-ref") if each.text][0]
        self.assertEqual((reference.get("id"), reference.get("version"), reference.text),
                         ("com.zerkolin.brevane", "1.2.3.45", "component.pkg"))
        self.assertEqual(document.find("options").get("hostArchitectures"), "x86_64,arm64")
        self.assertEqual(document.find(".//os-version").get("min"), "10.9")
        self.assertFalse(re.search("@[A-Z]+@", read(out, "Distribution.xml")))
        self.assertTrue(printed.startswith("Brevane 1.2.3.45\n"))

    def test_the_application_is_never_put_elsewhere(self):
        out, _ = self.pack()
        components = read_list(SOURCE, "packaging", "macos", "Components.plist")
        self.assertEqual([(each["RootRelativeBundlePath"], each["BundleIsRelocatable"]) for each in components],
                         [("Applications/Brevane.app", False)])
        self.assertTrue(os.path.isdir(os.path.join(out, "root", components[0]["RootRelativeBundlePath"])))

    def test_code_is_signed_before_what_holds_it_and_the_ticket_comes_last(self):
        out, printed = self.pack()
        steps = [shlex.split(line[2:]) for line in printed.splitlines() if line.startswith("$ ")]
        self.assertEqual([step[0] if step[0] != "xcrun" else step[1] for step in steps],
                         ["codesign", "codesign", "codesign", "codesign", "pkgbuild", "productbuild", "notarytool",
                          "stapler", "pkgutil", "spctl"])
        signed = [step[-1] for step in steps[:3]]
        self.assertEqual([os.path.basename(path) for path in signed], [SCHEDULER, POST_UPDATE, "Brevane.app"])
        for step in steps[:3]:
            self.assertIn("runtime", step)
            self.assertIn("--timestamp", step)
        for step in steps:  # what is read is there
            for option in ("--root", "--scripts", "--component-plist", "--distribution", "--entitlements"):
                if option in step:
                    self.assertTrue(os.path.exists(step[step.index(option) + 1]), option)
        self.assertEqual(steps[4][-1], os.path.join(out, "component.pkg"))
        self.assertEqual({steps[5][-1], steps[6][3], steps[7][-1]}, {os.path.join(out, "Brevane-1.2.3.45.pkg")})

    def test_the_scripts_are_sound_and_can_be_run(self):
        out, _ = self.pack()
        scripts = os.path.join(out, "scripts")
        self.assertEqual(os.listdir(scripts), ["postinstall"])
        for name in os.listdir(scripts):
            path = os.path.join(scripts, name)
            self.assertTrue(os.access(path, os.X_OK))
            self.assertEqual(subprocess.run(["sh", "-n", path], check=False).returncode, 0)

    def launchctl(self, version, failures=0, target="/"):
        """The postinstall script's calls, with programs of its names that answer as told."""
        out, _ = self.pack()
        programs = os.path.join(self.folder, "bin")
        calls = os.path.join(self.folder, "calls")
        write(os.path.join(programs, "sw_vers"), f"#!/bin/sh\necho {version}\n", 0o755)
        write(os.path.join(programs, "sleep"), "#!/bin/sh\n", 0o755)
        write(os.path.join(programs, "launchctl"), f"""#!/bin/sh
echo "$@" >>{shlex.quote(calls)}
[ "$1" != bootstrap ] || [ "$(grep -c bootstrap {shlex.quote(calls)})" -gt {failures} ]
""", 0o755)
        run = subprocess.run(["sh", os.path.join(out, "scripts", "postinstall"), "package", "/", target], check=False,
                             env={"PATH": programs + ":" + os.environ["PATH"]})
        made = read(calls).splitlines() if os.path.exists(calls) else []
        return run.returncode, made

    def test_the_service_is_started_anew_in_the_words_of_the_system(self):
        plist = f"/Library/LaunchDaemons/{SCHEDULER}.plist"
        self.assertEqual(self.launchctl("10.9.5"), (0, [f"unload {plist}", f"load -w {plist}"]))

    def test_newer_systems_are_asked_again_while_the_old_one_ends(self):
        plist = f"/Library/LaunchDaemons/{SCHEDULER}.plist"
        self.assertEqual(self.launchctl("14.1", failures=2),
                         (0, [f"bootout system/{SCHEDULER}", f"enable system/{SCHEDULER}", *[f"bootstrap system {plist}"] * 3]))

    def test_a_service_that_cannot_be_started_fails_the_installation(self):
        self.assertEqual(self.launchctl("10.10", failures=9)[0], 1)

    def test_another_disk_is_left_alone(self):
        self.assertEqual(self.launchctl("14.1", target="/Volumes/Other"), (0, []))

    def test_what_was_not_built_is_named(self):
        os.remove(os.path.join(self.built, POST_UPDATE))
        run = self.run_script("--dry-run", "--built", self.built)
        self.assertEqual(run.returncode, 2)
        self.assertIn(POST_UPDATE, run.stderr)

    @unittest.skipIf(sys.platform == "darwin", "packages are made here")
    def test_without_a_mac_only_the_dry_run_is_done(self):
        run = self.run_script("--built", self.built)
        self.assertEqual(run.returncode, 2)
        self.assertIn("on a Mac", run.stderr)


if __name__ == "__main__":
    unittest.main()
