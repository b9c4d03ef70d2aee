"""Tests of script/macos/checks.py: what it knows to be newer than a system."""
import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "script", "macos"))
import checks  # noqa: E402


def found(symbol, minimum, weak=False):
    return checks.too_new([(symbol, "libc++", weak)], minimum)


class TooNewTests(unittest.TestCase):
    def test_what_the_oldest_system_has_is_not_newer(self):
        for symbol in ("__Znwm", "__ZdlPv", "___cxa_throw", "_objc_retain", "_objc_msgSend", "__ZNSt3__15mutex4lockEv",
                       "__ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE6appendEPKcm",
                       "__ZNSt3__119__shared_weak_count4lockEv", "__ZTVSt9exception"):
            self.assertEqual(found(symbol, (10, 9)), [], symbol)

    def test_what_came_later_is_newer_only_for_older_systems(self):
        for symbol, introduced in (("__ZdlPvm", (10, 12)), ("__ZnwmSt11align_val_t", (10, 13)),
                                   ("__ZTISt19bad_optional_access", (10, 13)), ("__ZNKSt18bad_variant_access4whatEv", (10, 13)),
                                   ("__ZNSt3__14__fs10filesystem8__statusERKNS1_4pathEPNS_10error_codeE", (10, 15)),
                                   ("__ZNSt3__18to_charsEPcS0_d", (13, 3)), ("_objc_alloc_init", (10, 14)),
                                   ("__ZTVNSt3__115basic_stringbufIcNS_11char_traitsIcEENS_9allocatorIcEEEE", (12, 3)),
                                   ("__ZNSt3__13pmr20get_default_resourceEv", (14, 0)),
                                   ("__ZNSt3__122__libcpp_verbose_abortEPKcz", (13, 3))):
            self.assertEqual(len(found(symbol, (10, 9))), 1, symbol)
            self.assertEqual(found(symbol, introduced), [], symbol)

    def test_what_may_be_absent_is_not_newer(self):
        self.assertEqual(found("__ZNSt3__18to_charsEPcS0_d", (10, 9), weak=True), [])

    def test_the_daemon_is_linked_with_nothing_of_a_user_s_session(self):
        scheduler, post_update = "com.zerkolin.brevane.scheduler", "com.zerkolin.brevane.post-update"
        for path, name, is_allowed in (
                ("/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit", "Brevane", True),
                ("/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit", scheduler, False),
                ("/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit", post_update, True),
                ("/System/Library/Frameworks/ServiceManagement.framework/Versions/A/ServiceManagement", post_update, False),
                ("/System/Library/Frameworks/SystemConfiguration.framework/Versions/A/SystemConfiguration", scheduler, True),
                ("/usr/lib/libbsm.0.dylib", scheduler, True), ("/usr/lib/libbsm.0.dylib", "Brevane", False),
                ("/usr/lib/libSystem.B.dylib", scheduler, True), ("/usr/local/lib/libc++.1.dylib", scheduler, False)):
            self.assertEqual(checks.is_allowed(path, name), is_allowed, (path, name))

    def test_only_the_systems_own_libraries_are_allowed(self):
        for path in ("/usr/lib/libSystem.B.dylib", "/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit"):
            self.assertTrue(checks.is_allowed(path), path)
        for path in ("@rpath/libfoo.dylib", "/usr/local/lib/libc++.1.dylib", "/usr/lib/libxml2.2.dylib",
                     "/System/Library/PrivateFrameworks/UIFoundation.framework/Versions/A/UIFoundation"):
            self.assertFalse(checks.is_allowed(path), path)


if __name__ == "__main__":
    unittest.main()
