#include "tests/conditions/MockService.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace {

// Of this thread, and opened anew for each bus.
sd_bus* openBus()
{
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0)
        throw std::runtime_error("there is no bus for the stand-in");
    return bus;
}

} // namespace

MockService::MockService(std::string name, std::string path, std::string interface, const std::string& templateName,
                         const std::string& parameters)
    : _name(std::move(name)),
      _path(std::move(path)),
      _interface(std::move(interface))
{
    ChildProcess::Arguments command{"/usr/bin/python3", "-m", "dbusmock", "--system"};
    if (templateName.empty())
        command.insert(command.end(), {_name, _path, _interface});
    else
        command.insert(command.end(), {"--template", templateName, "--parameters", parameters});
    _process = std::make_unique<ChildProcess>(command);
    sd_bus* bus = openBus();
    int owned = -1;
    for (int attempt = 0; attempt < 500 && owned < 0; ++attempt) {
        owned = sd_bus_get_name_creds(bus, _name.c_str(), 0, nullptr);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    sd_bus_flush_close_unref(bus);
    if (owned < 0)
        throw std::runtime_error(_name + " did not start");
}

MockService MockService::login()
{
    MockService service("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "logind",
                        "{}");
    service.addProperty("BlockInhibited", "s", "");
    service.addProperty("LidClosed", "b", 0);
    service.addProperty("Docked", "b", 0);
    return service;
}

MockService MockService::power(bool onBattery)
{
    return {"org.freedesktop.UPower", "/org/freedesktop/UPower", "org.freedesktop.UPower", "upower",
            onBattery ? "{\"OnBattery\": true}" : "{\"OnBattery\": false}"};
}

MockService MockService::zones()
{
    return {"org.freedesktop.timedate1", "/org/freedesktop/timedate1", "org.freedesktop.timedate1", "timedated", "{}"};
}

sd_bus_message* MockService::newCall(const char* member, const std::string& path) const
{
    sd_bus* bus = openBus();
    sd_bus_message* call = nullptr;
    if (sd_bus_message_new_method_call(bus, &call, _name.c_str(), path.empty() ? _path.c_str() : path.c_str(),
                                       "org.freedesktop.DBus.Mock", member)
        < 0)
        throw std::runtime_error("a call to the stand-in could not be made");
    sd_bus_unref(bus); // the message keeps it
    return call;
}

void MockService::send(sd_bus_message* call)
{
    sd_bus* bus = sd_bus_ref(sd_bus_message_get_bus(call));
    sd_bus_error error{};
    const int result = sd_bus_call(bus, call, 0, &error, nullptr);
    const std::string text = error.message ? error.message : "";
    sd_bus_error_free(&error);
    sd_bus_message_unref(call);
    sd_bus_flush_close_unref(bus);
    if (result < 0)
        throw std::runtime_error("the stand-in refused: " + text);
}

void MockService::setAnswer(const char* method, const char* inputs, const char* output,
                            const std::string& expression) const
{
    sd_bus_message* call = newCall("AddMethod");
    sd_bus_message_append(call, "sssss", _interface.c_str(), method, inputs, output, ("ret = " + expression).c_str());
    send(call);
}

void MockService::addSession(const std::string& name, const std::string& seat) const
{
    sd_bus_message* call = newCall("AddSession");
    sd_bus_message_append(call, "ssusb", name.c_str(), seat.c_str(), 1000, "somebody", 1);
    send(call);
    sd_bus_message* signal = newCall("EmitSignal");
    sd_bus_message_append(signal, "sssav", _interface.c_str(), "SessionNew", "so", 2, "s", name.c_str(), "o",
                          ("/org/freedesktop/login1/session/" + name).c_str());
    send(signal);
}

void MockService::removeSession(const std::string& name) const
{
    const auto path = "/org/freedesktop/login1/session/" + name;
    sd_bus_message* call = newCall("RemoveObject");
    sd_bus_message_append(call, "s", path.c_str());
    send(call);
    sd_bus_message* signal = newCall("EmitSignal");
    sd_bus_message_append(signal, "sssav", _interface.c_str(), "SessionRemoved", "so", 2, "s", name.c_str(), "o",
                          path.c_str());
    send(signal);
}

void MockService::emit(const char* signal, bool argument) const
{
    sd_bus_message* call = newCall("EmitSignal");
    sd_bus_message_append(call, "sssav", _interface.c_str(), signal, "b", 1, "b", argument ? 1 : 0);
    send(call);
}
