#include "platform/linux/system/packages/PackageTransaction.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

namespace {

using Failure = PackageManager::Failure;
using Kind = Failure::Kind;

constexpr const char* PackageKit = "org.freedesktop.PackageKit";
constexpr const char* ServicePath = "/org/freedesktop/PackageKit";
constexpr const char* Interface = "org.freedesktop.PackageKit.Transaction";
constexpr std::uint64_t packageKitLimit = 30'000'000; // microseconds
constexpr std::uint64_t askAgain = 100'000;
constexpr std::uint32_t exitOfSuccess = 1;

// PackageKit's numbers of errors.
Kind kindOfCode(std::uint32_t code)
{
    switch (code) {
    case 2:  // no network
    case 37: // a source is not available
    case 64: // the sources could not be fetched
        return Kind::Network;
    case 10: // a download failed
        return Kind::Download;
    case 5:  // signatures could not be checked
    case 30: // a bad signature
    case 31: // no signature
    case 40: // a damaged package
    case 50: // a source without a signature, of a package to install
    case 51: // and of one to update
        return Kind::Untrusted;
    case 26: // no lock
        return Kind::Busy;
    default:
        return Kind::Other;
    }
}

// Without the lines' ends after it.
std::string trimmed(std::string_view text)
{
    return std::string(text.substr(0, text.find_last_not_of(" \n") + 1));
}

std::unexpected<Failure> failure(int code)
{
    return std::unexpected(Failure{Kind::Other, std::string(std::strerror(-code)) + "."});
}

std::unexpected<Failure> failure(const sd_bus_error& error)
{
    const std::string_view name = error.name ? error.name : "";
    const bool isMissing = name == SD_BUS_ERROR_SERVICE_UNKNOWN || name.starts_with("org.freedesktop.DBus.Error.Spawn.")
        || name.starts_with("org.freedesktop.systemd1.");
    return std::unexpected(Failure{isMissing ? Kind::Missing : Kind::Other, error.message ? error.message : ""});
}

} // namespace

std::expected<std::vector<std::string>, Failure> PackageTransaction::run(const char* method, const Compose& compose,
                                                                         const PackageManager::GivenUp& isGivenUp)
{
    PackageTransaction transaction;
    auto done = transaction.open();
    done = done ? transaction.follow() : done;
    done = done ? transaction.begin(method, compose) : done;
    done = done ? transaction.wait(isGivenUp) : done;
    if (!done)
        return std::unexpected(std::move(done.error()));
    return std::move(transaction._packages);
}

std::expected<void, Failure> PackageTransaction::open()
{
    sd_bus* bus = nullptr;
    if (const int result = sd_bus_open_system(&bus); result < 0)
        return failure(result);
    _bus.reset(bus);
    sd_bus_set_method_call_timeout(bus, packageKitLimit);
    BusError error;
    sd_bus_message* received = nullptr;
    const int result =
        sd_bus_call_method(bus, PackageKit, ServicePath, PackageKit, "CreateTransaction", &error.error, &received, "");
    const BusMessage reply(received);
    const char* path = nullptr;
    if (result < 0)
        return failure(error.error);
    if (const int read = sd_bus_message_read(received, "o", &path); read < 0)
        return failure(read);
    _path = path;
    return {};
}

std::expected<void, Failure> PackageTransaction::follow()
{
    sd_bus_slot* slot = nullptr;
    int result =
        sd_bus_match_signal(_bus.get(), &slot, PackageKit, _path.c_str(), Interface, nullptr, handleSignal, this);
    _signals.reset(slot);
    if (result < 0)
        return failure(result);
    slot = nullptr;
    result = sd_bus_add_match(_bus.get(), &slot,
                              "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                              "arg0='org.freedesktop.PackageKit'",
                              handleOwnerChange, this);
    _owner.reset(slot);
    if (result < 0)
        return failure(result);
    return {};
}

std::expected<void, Failure> PackageTransaction::begin(const char* method, const Compose& compose)
{
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_call(_bus.get(), &made, PackageKit, _path.c_str(), Interface, method);
    const BusMessage call(made);
    result = result < 0 ? result : compose(made);
    if (result < 0)
        return failure(result);
    BusError error;
    sd_bus_message* reply = nullptr;
    result = sd_bus_call(_bus.get(), made, 0, &error.error, &reply);
    const BusMessage received(reply);
    if (result < 0)
        return failure(error.error);
    return {};
}

std::expected<void, Failure> PackageTransaction::wait(const PackageManager::GivenUp& isGivenUp)
{
    while (!_isFinished) {
        int result = sd_bus_process(_bus.get(), nullptr);
        if (result == 0)
            result = sd_bus_wait(_bus.get(), askAgain);
        if (result < 0 && result != -EINTR)
            return failure(result);
        if (!_isFinished && isGivenUp && isGivenUp())
            return std::unexpected(Failure{Kind::GivenUp, ""});
    }
    if (_failure)
        return std::unexpected(*_failure);
    return {};
}

int PackageTransaction::handleSignal(sd_bus_message* signal, void* context, sd_bus_error*)
{
    auto& self = *static_cast<PackageTransaction*>(context);
    std::uint32_t number = 0;
    const char* text = nullptr;
    if (sd_bus_message_is_signal(signal, Interface, "Package") > 0) {
        if (sd_bus_message_read(signal, "us", &number, &text) >= 0)
            self._packages.emplace_back(text);
    } else if (sd_bus_message_is_signal(signal, Interface, "ErrorCode") > 0) {
        if (sd_bus_message_read(signal, "us", &number, &text) >= 0)
            self._failure = Failure{kindOfCode(number), trimmed(text)};
    } else if (sd_bus_message_is_signal(signal, Interface, "Finished") > 0) {
        self._isFinished = true;
        if ((sd_bus_message_read(signal, "u", &number) < 0 || number != exitOfSuccess) && !self._failure)
            self._failure = Failure{Kind::Other, ""};
    }
    return 0;
}

int PackageTransaction::handleOwnerChange(sd_bus_message* signal, void* context, sd_bus_error*)
{
    auto& self = *static_cast<PackageTransaction*>(context);
    const char* owner = nullptr;
    if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) < 0 || *owner || self._isFinished)
        return 0;
    self._isFinished = true;
    self._failure = Failure{Kind::Other, "PackageKit ended before its work."};
    return 0;
}

} // namespace platform
