#include "tests/support/PrivateBus.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <systemd/sd-bus.h>

namespace {

constexpr const char* Variable = "DBUS_SYSTEM_BUS_ADDRESS";

} // namespace

PrivateBus::PrivateBus() : _address("unix:path=" + _directory.file("bus"))
{
    std::filesystem::create_directory(_directory.file("services"));
    writeConfiguration();
    setenv(Variable, _address.c_str(), 1);
    start();
}

PrivateBus::~PrivateBus()
{
    unsetenv(Variable);
}

void PrivateBus::kill()
{
    _daemon->kill();
}

void PrivateBus::restart()
{
    _daemon->kill();
    start();
}

void PrivateBus::start()
{
    _daemon = std::make_unique<ChildProcess>(
        ChildProcess::Arguments{"dbus-daemon", "--config-file=" + _directory.file("bus.conf"), "--nofork",
                                "--nopidfile", "--syslog-only", "--print-address"});
    if (!_daemon->readLine())
        throw std::runtime_error("dbus-daemon did not start");
}

void PrivateBus::addActivatable(const std::string& name, const std::string& command)
{
    _directory.write("services/" + name + ".service",
                     "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\nUser=root\n");
    reload();
}

void PrivateBus::addPolicy(const std::string& rules)
{
    _rules += rules;
    writeConfiguration();
    reload();
}

void PrivateBus::writeConfiguration() const
{
    _directory.write("bus.conf",
                     R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>)" + _address + R"(</listen>
  <auth>EXTERNAL</auth>
  <servicedir>)" + _directory.file("services")
                         + R"(</servicedir>
  <limit name="service_start_timeout">)"
                         + std::to_string(ActivationMilliseconds) + R"(</limit>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
    )" + _rules + R"(
  </policy>
</busconfig>
)");
}

void PrivateBus::reload() const
{
    sd_bus* bus = nullptr;
    const int result = sd_bus_open_system(&bus) < 0
        ? -1
        : sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                             "ReloadConfig", nullptr, nullptr, nullptr);
    sd_bus_unref(bus);
    if (result < 0)
        throw std::runtime_error("the bus refused its new configuration");
}
