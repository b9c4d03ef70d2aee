"""What script/run does once everything is built."""
import os
import shlex
import signal
import sys

import history
from demo import play
from desktop import Failure
from sandbox import PLUG, SETTINGS, SOURCE, Sandbox, SandboxError

BUILD = os.path.join(SOURCE, "build", "release")


def end_on_signal(number, _frame):
    sys.exit(128 + number)


def welcome(sandbox, version):
    restart = shlex.join(["env", "-u", "BREVANE_ROOT", f"DBUS_SYSTEM_BUS_ADDRESS={sandbox.address}",
                          f"HOME={sandbox.path('home')}", *sandbox.helper_command()])
    print(f"""
Brevane runs in a sandbox below {sandbox.root}.

  The scheduler helper is process {sandbox.helper.pid}. To see what happens without it:
      kill -9 {sandbox.helper.pid}
  and to start it again:
      {restart}
  The schedule that it stores, once one was applied:
      python3 -c 'import plistlib, sys; print(plistlib.load(open(sys.argv[1], "rb")))' \\
          {shlex.quote(sandbox.path(SETTINGS))}
  The scheduled backups are real ones, of {sandbox.path('home')} in {sandbox.path('repository')}:
      BORG_BASE_DIR={shlex.quote(sandbox.path('run/borg'))} borg list {shlex.quote(sandbox.path('repository'))}
  The machine has a battery. To pull its plug, and to put it in again:
      echo 0 >{shlex.quote(sandbox.path(PLUG))}
      echo 1 >{shlex.quote(sandbox.path(PLUG))}
  A feed offers version {version}: Check for Updates in the menu installs it, and docs/updates.md says how.

Close the window, or press Control-C here, to end everything.
""", flush=True)


def use(sandbox, environment=None):
    """Until the last window is closed, also that of a version which an update has brought."""
    sandbox.start_authority(environment)
    application = sandbox.start_application(environment)
    try:
        status = application.wait()
        sandbox.wait_for_applications()
        return status if status >= 0 else 128 - status  # ended by a signal, as a shell tells it
    finally:
        sandbox.end(application)


def main(arguments):
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, end_on_signal)
    has_display = bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))
    root = os.environ.get("BREVANE_ROOT") or os.path.join(SOURCE, "build", "root")
    try:
        with Sandbox(root, BUILD, fresh="--fresh" in arguments) as sandbox:
            version = sandbox.offer_update()
            history.seed(sandbox.root)
            sandbox.choose_borg()
            sandbox.set_power("--battery" not in arguments)
            sandbox.start_bus()
            sandbox.start_helper()
            welcome(sandbox, version)
            if has_display and "--demo" not in arguments:
                return use(sandbox)
            return play(sandbox, virtual=not os.environ.get("DISPLAY"))
    except KeyboardInterrupt:
        return 130
    except (Failure, SandboxError, OSError) as failure:
        print(f"script/run: {failure}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
