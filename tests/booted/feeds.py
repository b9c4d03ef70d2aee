"""A helper that no package manager owns, on a system with a service manager: it has no network, and units of their own ask a
server for it. Runs inside, after installed.py."""
import os
import plistlib
import re
import shutil
import signal
import subprocess
import threading

from inside import HELPER, HERE, PRODUCT, ask, error_of, helper_process, is_active, run, state, wait_for
from installed import INTERVAL, MOST_EXPOSED, PACKAGES, install, installed_version

CHECK, UPDATE = 26, 27
SETTINGS = INTERVAL | {"Backups": False}
UPDATER = "com.zerkolin.updater"
NOT_FETCHED, UNTRUSTED_SERVER = 1, 10
FOLDER = "/root/feed"  # which an ordinary user cannot read
SERVED = FOLDER + "/served"
FEED = SERVED + "/update.plist"
CONFIGURATION = FOLDER + "/configuration.plist"
DROP_IN = f"/etc/systemd/system/{HELPER}.d/feed.conf"
UNIT = "server.service"
MANAGERS = f"/usr/lib/systemd/system/{HELPER}.d/package.conf"


def start_anew():
    """What was answered before is forgotten."""
    run("systemctl", "reset-failed", HELPER)
    run("systemctl", "restart", HELPER, fails=False)
    wait_for(lambda: state() != "nothing", "the helper")


def make_certificate():
    run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2", "-subj", "/CN=localhost",
        "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", FOLDER + "/key", "-out", FOLDER + "/certificate", fails=False)
    os.chmod(FOLDER + "/certificate", 0o600)


def start_server():
    """Over TLS, with a certificate that nobody vouches for but the configuration. Its address."""
    output = FOLDER + "/port"
    program = f"/usr/bin/python3 -B {HERE}/tests/update-integration/server.py {SERVED} {FOLDER}/certificate {FOLDER}/key"
    run("systemd-run", "--unit=" + UNIT, "/bin/sh", "-c", f"sleep infinity | {program} > {output}", fails=False)
    wait_for(lambda: os.path.exists(output) and os.path.getsize(output), "the server")
    with open(output, encoding="ascii") as file:
        return f"https://127.0.0.1:{file.read().strip()}/"


def feed(*arguments):
    run("/usr/bin/python3", "-B", HERE + "/sandbox/feed.py", *arguments, fails=False)


def configure(url, **more):
    feed("configuration", FOLDER + "/signer", url, CONFIGURATION)
    with open(CONFIGURATION, "rb") as file:
        configuration = plistlib.load(file)
    with open(CONFIGURATION, "wb") as file:
        plistlib.dump(configuration | more, file)


def answer(what):
    with open(FEED + ".answer", "w", encoding="ascii") as file:
        file.write(what)


def serve_again():
    os.remove(FEED + ".answer")


def requests():
    path = SERVED + "/requests"
    return os.path.getsize(path) if os.path.exists(path) else 0


def downloads():
    """The units that download just now."""
    told = run("systemctl", "list-units", "--plain", "--no-legend", "--type=service", "run-*")
    return [line.split()[0] for line in told.splitlines() if "Download by Brevane" in line]


def begin_check():
    """Returns when the server has been asked."""
    before = requests()
    process = subprocess.Popen(["/usr/bin/python3", "-B", "-c", f"from inside import ask\nask({CHECK})"], cwd=HERE, stderr=subprocess.DEVNULL)
    wait_for(lambda: requests() > before, "the request")
    return process


def no_package_manager_owns_the_installation_any_more():
    wait_for(lambda: state() in ("waiting", "off"), "the backup before to end", 90)
    ask(2, SETTINGS)
    with open(PRODUCT + "/installation.plist", "rb") as file:
        manifest = plistlib.load(file)
    del manifest["Package"]
    with open(PRODUCT + "/installation.plist", "wb") as file:
        plistlib.dump(manifest, file)
    run("sh", "-c", f"rm -r /usr/lib/systemd/system/{HELPER}.d", fails=False)
    os.makedirs(SERVED)
    os.chmod(FOLDER, 0o700)
    make_certificate()
    feed("key", FOLDER + "/signer")
    feed("package", FOLDER + "/signer", "/opt/brevane", "98.0.0.1", "98.0.0", SERVED + "/Brevane.pkg")
    feed("feed", SERVED + "/Brevane.pkg", "98.0.0.1", "98.0.0", FEED)
    configure(start_server() + "update.plist", Authorities=FOLDER + "/certificate")
    os.makedirs(os.path.dirname(DROP_IN), exist_ok=True)
    with open(DROP_IN, "w", encoding="ascii") as file:
        file.write(f"[Service]\nExecStart=\nExecStart={PRODUCT}/com.zerkolin.brevane.scheduler --root /opt/brevane --updates {CONFIGURATION}\n")
    run("systemctl", "daemon-reload", fails=False)
    start_anew()


def its_helper_has_no_network_and_is_confined():
    told = run("systemd-analyze", "security", "--no-pager", HELPER)
    exposure = float(re.search(r"Overall exposure level for .*: ([0-9.]+)", told).group(1))
    print(f"systemd-analyze security, without the package: {exposure}")
    assert exposure <= MOST_EXPOSED, told
    families = run("systemctl", "show", "--property=RestrictAddressFamilies", "--value", HELPER)
    assert sorted(families.split()) == ["AF_NETLINK", "AF_UNIX"], families


def a_unit_of_its_own_asks_the_feed():
    found = ask(CHECK)
    assert (found["Version"], found["HumanVersion"]) == ("98.0.0.1", "98.0.0"), found
    assert requests() == 1
    wait_for(lambda: not downloads(), "the end of the unit")


def it_has_the_network_and_nothing_else():
    answer("trickle")
    start_anew()
    process = begin_check()
    unit, = downloads()
    told = run("systemd-analyze", "security", "--no-pager", unit)
    exposure = float(re.search(r"Overall exposure level for .*: ([0-9.]+)", told).group(1))
    print(f"systemd-analyze security of the download: {exposure}")
    assert exposure <= MOST_EXPOSED, told
    with open(f"/proc/{run('systemctl', 'show', '--property=MainPID', '--value', unit)}/status", encoding="ascii") as file:
        status = dict(line.rstrip("\n").split(":\t", 1) for line in file if ":\t" in line)
    assert "0" not in status["Uid"].split() and int(status["CapEff"], 16) == 0 == int(status["CapBnd"], 16), status
    assert status["NoNewPrivs"] == "1" and status["Seccomp"] == "2", status
    process.kill()
    process.wait()


def it_ends_when_nobody_waits():
    wait_for(lambda: not downloads(), "the end of the unit", 5)
    wait_for(lambda: os.path.exists(FEED + ".left"), "the server to see it", 5)
    assert is_active(HELPER)


def it_ends_with_the_helper():
    start_anew()
    process = begin_check()
    os.kill(int(helper_process()), signal.SIGKILL)
    wait_for(lambda: not downloads(), "the end of the unit", 5)
    process.wait()
    wait_for(lambda: state() != "nothing", "the next helper")


def a_server_that_trickles_is_told_within_the_limit():
    configure(configured_feed(), Authorities=FOLDER + "/certificate", Patience=3)
    start_anew()
    told = error_of(CHECK)
    assert told and told[:2] == (UPDATER, NOT_FETCHED), told
    wait_for(lambda: not downloads(), "the end of the unit", 5)
    serve_again()


def configured_feed():
    with open(CONFIGURATION, "rb") as file:
        return plistlib.load(file)["Feed"]


def a_server_that_nobody_vouches_for_is_not_trusted():
    configure(configured_feed())
    start_anew()
    told = error_of(CHECK)
    assert told and told[:2] == (UPDATER, UNTRUSTED_SERVER), told
    configure(configured_feed(), Authorities=FOLDER + "/certificate")


def an_install_ends_a_check_and_brings_the_new_version():
    answer("trickle")
    start_anew()
    process = begin_check()
    before = helper_process()
    outcome = []
    serve_again()
    updating = threading.Thread(target=lambda: outcome.append(error_of(UPDATE)))
    updating.start()
    assert process.wait(20) != 0  # it was refused
    updating.join(120)
    assert outcome == [None], outcome
    wait_for(lambda: installed_version() == "98.0.0.1" and state() != "nothing", "the new version")
    assert helper_process() == before  # it goes on as the same process
    wait_for(lambda: not os.path.exists("/opt/brevane/Library/.com.zerkolin.brevane.update/other"), "the end of its trial")
    assert "Running version 98.0.0.1." in run("journalctl", "--boot", "--output=cat", "_SYSTEMD_UNIT=" + HELPER)
    assert ask(1) == SETTINGS


def it_is_the_package_managers_again():
    run("systemctl", "stop", UNIT)
    os.remove(DROP_IN)
    shutil.rmtree(FOLDER)
    install(PACKAGES[0], "--reinstall")
    assert os.path.exists(MANAGERS) or os.path.exists(MANAGERS.removeprefix("/usr"))
    wait_for(lambda: state() != "nothing", "the helper")
    assert installed_version() != "98.0.0.1" and ask(1) == SETTINGS


SCENES = (
    no_package_manager_owns_the_installation_any_more,
    its_helper_has_no_network_and_is_confined,
    a_unit_of_its_own_asks_the_feed,
    it_has_the_network_and_nothing_else,
    it_ends_when_nobody_waits,
    it_ends_with_the_helper,
    a_server_that_trickles_is_told_within_the_limit,
    a_server_that_nobody_vouches_for_is_not_trusted,
    an_install_ends_a_check_and_brings_the_new_version,
    it_is_the_package_managers_again,
)
