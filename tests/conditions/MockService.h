#pragma once

#include "tests/support/ChildProcess.h"

#include <string>
#include <systemd/sd-bus.h>

// A stand-in for a system service, on the bus of the test: one of python-dbusmock's templates, or an empty object.
class MockService {
public:
    // Returns when it has its name.
    static MockService login();
    static MockService power(bool onBattery);
    static MockService zones();

    void kill() { _process->kill(); }

    // Of its main object; the change is told, as the service would.
    template <class... Values>
    void setProperty(const char* name, const char* type, Values... values) const
    {
        sd_bus_message* call = newCall("UpdateProperties");
        sd_bus_message_append(call, "s", _interface.c_str());
        sd_bus_message_open_container(call, 'a', "{sv}");
        sd_bus_message_append(call, "{sv}", name, type, values...);
        sd_bus_message_close_container(call);
        send(call);
    }

    // A method of its main object that returns what the Python expression says.
    void setAnswer(const char* method, const char* inputs, const char* output, const std::string& expression) const;

    void addSession(const std::string& name, const std::string& seat) const;
    template <class Value>
    void setSession(const std::string& name, const char* property, const char* type, Value value) const
    {
        sd_bus_message* call = newCall("UpdateProperties", "/org/freedesktop/login1/session/" + name);
        sd_bus_message_append(call, "s", "org.freedesktop.login1.Session");
        sd_bus_message_append(call, "a{sv}", 1, property, type, value);
        send(call);
    }
    void removeSession(const std::string& name) const;

    void emit(const char* signal, bool argument) const;

private:
    MockService(std::string name, std::string path, std::string interface, const std::string& templateName,
                const std::string& parameters);
    template <class Value>
    void addProperty(const char* name, const char* type, Value value) const
    {
        sd_bus_message* call = newCall("AddProperty");
        sd_bus_message_append(call, "ssv", _interface.c_str(), name, type, value);
        send(call);
    }
    sd_bus_message* newCall(const char* member, const std::string& path = {}) const;
    static void send(sd_bus_message* call);

    std::string _name;
    std::string _path;
    std::string _interface;
    std::unique_ptr<ChildProcess> _process;
};
