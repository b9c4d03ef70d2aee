#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <memory>
#include <string>

// A message bus of the test's own, which stands in for the system bus: DBUS_SYSTEM_BUS_ADDRESS names it while it lives.
// Make it before other threads start, since they may read the environment.
class PrivateBus {
public:
    // Everyone may own, send and receive everything.
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return _address; }

    // kill -9; every connection is cut.
    void kill();
    // Starts it again at the same address.
    void restart();

    // Lets the bus start a program when the name is first used. It has to take the name within the activation time.
    void addActivatable(const std::string& name, const std::string& command);
    static constexpr int ActivationMilliseconds = 400;

    // More rules of the default policy, as in "<deny own=\"a.b\"/>". Takes effect at once.
    void addPolicy(const std::string& rules);

private:
    void start();
    void writeConfiguration() const;
    void reload() const;

    TemporaryDirectory _directory;
    std::string _address;
    std::string _rules;
    std::unique_ptr<ChildProcess> _daemon;
};
