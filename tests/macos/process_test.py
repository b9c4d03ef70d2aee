"""The macOS edition's child processes, which are plain POSIX: PROBE is a program that starts tools with them."""
import os
import signal
import subprocess
import sys
import time
import unittest

PROBE = sys.argv.pop(1)


def is_running(process):
    try:
        with open(f"/proc/{process}/stat") as stat:
            return stat.read().rsplit(")", 1)[1].split()[0] != "Z"
    except (FileNotFoundError, ProcessLookupError):
        return False


def ends(process, seconds=10):
    limit = time.monotonic() + seconds
    while is_running(process):
        if time.monotonic() > limit:
            return False
        time.sleep(0.02)
    return True


def children(process):
    with open(f"/proc/{process}/task/{process}/children") as listed:
        return [int(each) for each in listed.read().split()]


class Processes(unittest.TestCase):
    def test_output_and_status_are_the_tools_own(self):
        self.assertEqual(subprocess.run([PROBE, "output"], capture_output=True, text=True, timeout=30).stdout, "line\n7\n")

    def test_a_tool_that_is_not_there_ends_at_once_with_1(self):
        self.assertEqual(subprocess.run([PROBE, "missing"], capture_output=True, text=True, timeout=30).stdout, "1\n")

    def test_a_tool_that_was_killed_tells_the_signal(self):
        lines = subprocess.run([PROBE, "killed"], capture_output=True, text=True, timeout=30).stdout.split()
        self.assertEqual(lines[1], str(-signal.SIGKILL))

    def started(self):
        probe = subprocess.Popen([PROBE, "silent"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        tool = int(probe.stdout.readline())
        self.addCleanup(lambda: is_running(tool) and os.kill(tool, signal.SIGKILL))
        return probe, tool

    def test_a_silent_tool_ends_with_the_application_that_was_killed(self):
        probe, tool = self.started()
        watchers = children(tool)
        self.assertEqual(len(watchers), 1)
        self.assertTrue(is_running(tool))
        probe.kill()
        probe.wait()
        self.assertTrue(ends(tool), "the tool runs on")
        self.assertTrue(ends(watchers[0]), "the watcher runs on")
        probe.stdout.close()

    def test_nobody_watches_a_tool_that_has_ended(self):
        probe, tool = self.started()
        watcher = children(tool)[0]
        os.kill(tool, signal.SIGTERM)
        probe.wait(timeout=30)
        self.assertTrue(ends(watcher), "the watcher runs on")
        probe.stdout.close()


if __name__ == "__main__":
    unittest.main()
