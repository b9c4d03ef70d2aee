#include "tests/integration/system-bus/PrivateMachine.h"

#include "tests/support/BusOwner.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pwd.h>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

namespace files = std::filesystem;

constexpr const char* SystemServices = "/usr/share/dbus-1/system-services";
constexpr const char* SystemPolicies = "/usr/share/dbus-1/system.d";
constexpr const char* Actions = "/usr/share/polkit-1/actions";
constexpr const char* LocalRules = "/etc/polkit-1/rules.d";
constexpr const char* Resources = BREVANE_SOURCE "/resources/linux/";

void check(int result, const std::string& what)
{
    if (result < 0)
        throw std::runtime_error(what + ": " + std::strerror(errno));
}

std::string contentOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw std::runtime_error(path + " is missing");
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    const std::size_t at = text.find(from);
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

} // namespace

PrivateMachine* PrivateMachine::shared()
{
    static bool isTried = false;
    static std::unique_ptr<PrivateMachine> machine;
    if (std::exchange(isTried, true))
        return machine.get();
    if (geteuid() != 0) {
        std::puts("SKIPPED: needs root, for a system bus of its own");
        return nullptr;
    }
    for (const char* program : {"/usr/lib/polkit-1/polkitd", "/usr/lib/dbus-1.0/dbus-daemon-launch-helper"}) {
        if (!files::exists(program)) {
            std::printf("SKIPPED: %s is not installed\n", program);
            return nullptr;
        }
    }
    if (unshare(CLONE_NEWNS) < 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) < 0) {
        std::printf("SKIPPED: no mount namespace can be made here (%s)\n", std::strerror(errno));
        return nullptr;
    }
    machine.reset(new PrivateMachine);
    return machine.get();
}

PrivateMachine::PrivateMachine()
{
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    check(mount("tmpfs", _directory.path().c_str(), "tmpfs", 0, "mode=0755"), "a private folder");
    layOut();
    addUsers();
    // The bus leaves root behind and with that forgets whose child it is. A second process outlives this one just long
    // enough to see its input close, and ends the bus; everything else ends with the bus.
    _bus = std::make_unique<ChildProcess>(
        ChildProcess::Arguments{"sh", "-c",
                                "exec 3<&0; dbus-daemon --system --nofork --nopidfile --syslog-only --print-address "
                                "</dev/null 2>/dev/null 3<&- & "
                                "(cat <&3 >/dev/null; kill -9 $!) & wait"});
    if (!_bus->readLine())
        throw std::runtime_error("the system bus did not start");
}

PrivateMachine::~PrivateMachine()
{
    if (_bus) {
        _bus->closeInput();
        _bus->wait();
    }
    umount2(_directory.path().c_str(), MNT_DETACH);
}

void PrivateMachine::layOut()
{
    check(mount("tmpfs", "/run", "tmpfs", 0, "mode=0755"), "/run");
    for (const char* folder : {"dbus", "systemd/sessions", "systemd/users", "systemd/seats", "systemd/machines"})
        files::create_directories(std::string("/run/") + folder);

    const std::string name = "com.zerkolin.brevane.scheduler";
    const std::string service = contentOf(std::string(SystemServices) + "/org.freedesktop.PolicyKit1.service");
    const std::string policy = contentOf(std::string(SystemPolicies) + "/org.freedesktop.PolicyKit1.conf");
    const std::string actions = contentOf(std::string(Actions) + "/org.freedesktop.policykit.policy");
    for (const char* folder :
         {SystemServices, SystemPolicies, "/etc/dbus-1/system.d", Actions, LocalRules, "/usr/share/polkit-1/rules.d"})
        bindFolder(folder);

    const auto write = [](const std::string& path, const std::string& content) {
        if (!(std::ofstream(path, std::ios::binary) << content).flush())
            throw std::runtime_error("cannot write " + path);
    };
    write(std::string(SystemServices) + "/org.freedesktop.PolicyKit1.service", service);
    write(std::string(SystemPolicies) + "/org.freedesktop.PolicyKit1.conf", policy);
    write(std::string(Actions) + "/org.freedesktop.policykit.policy", actions);
    write(std::string(Actions) + "/com.zerkolin.brevane.policy",
          contentOf(std::string(Resources) + "com.zerkolin.brevane.policy"));
    write(std::string(SystemPolicies) + "/" + name + ".conf", contentOf(Resources + name + ".conf"));
    write(std::string(SystemServices) + "/" + name + ".service",
          replaced(contentOf(Resources + name + ".service.dbus"),
                   "Exec=/opt/brevane/Library/Brevane/" + name + " --root /opt/brevane",
                   "Exec=" BREVANE_SCHEDULER_HELPER " --root " + _directory.file("root") + " --rules " + LocalRules));
    write(std::string(LocalRules) + "/10-administrators.rules",
          "polkit.addAdminRule(function(action, subject) { return [\"unix-group:sudo\"]; });\n");

    const passwd* authority = getpwnam("polkitd");
    if (!authority)
        throw std::runtime_error("there is no user polkitd");
    check(chown(LocalRules, authority->pw_uid, authority->pw_gid), LocalRules);
    check(chmod(LocalRules, 0700), LocalRules);
}

void PrivateMachine::addUsers()
{
    std::string users = contentOf("/etc/passwd");
    const auto add = [&](const char* name, unsigned id) {
        users += std::string(name) + ":x:" + std::to_string(id) + ":100::/nonexistent:/bin/sh\n";
    };
    add("brevane-plain", PlainUser);
    add("brevane-other", OtherUser);
    add("brevane-admin", Administrator);
    bind(users, "/etc/passwd");

    const std::string groups = contentOf("/etc/group");
    const std::size_t line = ("\n" + groups).find("\nsudo:");
    if (line == std::string::npos)
        throw std::runtime_error("there is no group sudo");
    const std::size_t end = groups.find('\n', line);
    const bool isEmpty = groups[end - 1] == ':';
    bind(groups.substr(0, end) + (isEmpty ? "" : ",") + "brevane-admin" + groups.substr(end), "/etc/group");
}

void PrivateMachine::bind(const std::string& content, const std::string& over) const
{
    const std::string path = _directory.write("files" + over, content);
    check(mount(path.c_str(), over.c_str(), nullptr, MS_BIND, nullptr), over);
}

void PrivateMachine::bindFolder(const std::string& over)
{
    const std::string path = _directory.file("folders" + over);
    files::create_directories(path);
    if (files::is_directory(over))
        check(mount(path.c_str(), over.c_str(), nullptr, MS_BIND, nullptr), over);
}

std::unique_ptr<ChildProcess> PrivateMachine::startClient(unsigned user) const
{
    const std::string id = std::to_string(user);
    return std::make_unique<ChildProcess>(
        ChildProcess::Arguments{"setpriv", "--reuid", id, "--regid", "100", "--init-groups", BREVANE_TEST_CLIENT},
        ChildProcess::Environment{{"HOME", "/nonexistent"}, {"LC_ALL", "C.UTF-8"}});
}

std::unique_ptr<ChildProcess> PrivateMachine::startAgent(const ChildProcess& client, const std::string& mode,
                                                         unsigned user) const
{
    const std::string id = std::to_string(client.pid());
    // The start time is the 22nd field, the 20th after the name in brackets.
    std::string status = contentOf("/proc/" + id + "/stat");
    status.erase(0, status.rfind(')') + 2);
    for (int field = 3; field < 22; ++field)
        status.erase(0, status.find(' ') + 1);
    auto agent = std::make_unique<ChildProcess>(
        ChildProcess::Arguments{BREVANE_TEST_AGENT, id, status.substr(0, status.find(' ')), std::to_string(user),
                                std::to_string(Administrator), mode});
    if (const auto line = agent->readLine(); line != "ready")
        throw std::runtime_error("the agent: " + line.value_or("nothing"));
    return agent;
}

pid_t PrivateMachine::ownerOf(const std::string& name) const
{
    return ownerOfBusName(name);
}
