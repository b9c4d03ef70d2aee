#pragma once

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/packages/PackageManager.h"

#include <string>
#include <vector>

namespace platform {

// One piece of PackageKit's work, from its begin to its end.
class PackageTransaction {
public:
    using Failure = PackageManager::Failure;
    using Compose = std::function<int(sd_bus_message*)>; // appends the method's arguments; negative on a failure

    // Identifiers of the packages that it told of: "name;version;architecture;origin".
    static std::expected<std::vector<std::string>, Failure> run(const char* method, const Compose& compose,
                                                                const PackageManager::GivenUp& isGivenUp);

private:
    PackageTransaction() = default;
    std::expected<void, Failure> open();
    std::expected<void, Failure> follow();
    std::expected<void, Failure> begin(const char* method, const Compose& compose);
    std::expected<void, Failure> wait(const PackageManager::GivenUp& isGivenUp);

    static int handleSignal(sd_bus_message* signal, void* transaction, sd_bus_error*);
    static int handleOwnerChange(sd_bus_message* signal, void* transaction, sd_bus_error*);

    BusHandle _bus;
    BusSlot _signals;
    BusSlot _owner;
    std::string _path;
    std::vector<std::string> _packages;
    std::optional<Failure> _failure;
    bool _isFinished = false;
};

} // namespace platform
