"""Tests of script/macos/ports.py: what it takes for an operation, and what it finds lacking."""
import os
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "script", "macos", "ports.py")
sys.path.insert(0, os.path.dirname(SCRIPT))
import ports  # noqa: E402

HEADERS = {
    "platform/Facility.h": "#pragma once\n#include <string>\nnamespace platform {\n// Says so.\nbool isReady();\n"
                           "inline int twice(int value) { return 2 * value; }\nint shared();\n} // namespace platform\n",
    "platform/Facility.cpp": "namespace platform {\nint shared()\n{\n    return 1;\n}\n}\n",
    "platform/Unused.h": "namespace platform {\nbool isUnused();\n}\n",
    "helper/Parts.h": '#pragma once\n#include "platform/Facility.h"\nnamespace helper {\nclass Parts {\npublic:\n'
                      "    virtual ~Parts() = default;\n    virtual int count() const = 0;\n"
                      "    static Parts ofSystem(int options = 1);\n    int size() const { return 1; }\n"
                      "private:\n    int _size = 0;\n};\n} // namespace helper\n",
}


def port(name, namespace, facility="bool isReady()\n{\n    return true;\n}\n", parts="Parts Parts::ofSystem(int)\n{\n    return {};\n}\n",
         own="int count() const override { return 1; }"):
    return {
        f"platform/{name}/system/Facility.cpp": f"namespace platform {{\nnamespace {{\nbool isHidden()\n{{\n    return 1;\n}}\n}}\n{facility}}}\n",
        f"helper/{name}/Own.h": f"namespace helper {{\nclass {namespace}Parts final : public Parts {{\npublic:\n    {own}\n}};\n}}\n",
        f"helper/{name}/Own.cpp": f"namespace helper {{\n{parts}void {namespace}Only()\n{{\n}}\n}}\n",
    }


class PortsTests(unittest.TestCase):
    def lacking(self, linux, macos):
        with tempfile.TemporaryDirectory() as folder:
            for path, text in {**HEADERS, **linux, **macos}.items():
                path = os.path.join(folder, path)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                with open(path, "w", encoding="utf-8") as file:
                    file.write(text)
            run = subprocess.run([sys.executable, "-B", SCRIPT, folder], stdout=subprocess.PIPE, text=True, check=False)
            lines = [line for line in run.stdout.splitlines() if " lacks " in line]
            self.assertEqual(run.returncode, 1 if lines else 0, run.stdout)
            return lines

    def test_ports_that_define_the_same_lack_nothing(self):
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac")), [])

    def test_a_function_that_only_one_defines_is_lacking(self):
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", facility="")), ["macOS lacks isReady"])
        self.assertEqual(self.lacking(port("linux", "Linux", facility=""), port("macos", "Mac")), ["Linux lacks isReady"])

    def test_a_comment_or_a_declaration_is_no_definition(self):
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", facility="// bool isReady() { }\nbool isReady();\n")),
                         ["macOS lacks isReady"])

    def test_a_static_member_and_an_operation_of_an_interface_are_looked_for(self):
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", parts="")), ["macOS lacks Parts::ofSystem"])
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", own="int other() const;")),
                         ["macOS lacks Parts::count"])

    def test_a_hidden_function_serves_nobody(self):
        hidden = "namespace {\nbool isReady()\n{\n    return true;\n}\n}\n"
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", facility=hidden)), ["macOS lacks isReady"])

    def test_objective_c_before_a_definition_is_no_matter(self):
        mixed = "}\n@interface Own : NSObject\n@end\n@implementation Own\n- (void)doIt\n{\n}\n@end\n\nnamespace platform {\nbool isReady()\n{\n    return true;\n}\n"
        self.assertEqual(self.lacking(port("linux", "Linux"), port("macos", "Mac", facility=mixed)), [])

    def test_what_the_helper_does_not_include_is_no_matter(self):
        unused = port("linux", "Linux")
        unused["platform/linux/system/Unused.cpp"] = "namespace platform {\nbool isUnused()\n{\n    return true;\n}\n}\n"
        self.assertEqual(self.lacking(unused, port("macos", "Mac")), [])

    def test_the_sources_have_operations_of_every_kind(self):
        linux = ports.operations_of(os.path.join(os.path.dirname(SCRIPT), "..", ".."))[0]["Linux"]
        for operation in ("ServiceListener::create", "ServiceListener::copyRight", "BackupPrograms::job", "sha256",
                          "HelperParts::ofSystem", "ProductInstallation::install", "isBackupRunning", "Download::perform"):
            self.assertIn(operation, linux)


if __name__ == "__main__":
    unittest.main()
