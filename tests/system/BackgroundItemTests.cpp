#include "platform/BackgroundItem.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"

#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <systemd/sd-bus.h>
#include <thread>

using platform::BackgroundItemStatus;

namespace {

constexpr const char* launchDaemon = "/opt/brevane/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist";

// Stands in for the service manager on the private bus: knows one unit, in one state. An empty state is no unit, and
// "error:NAME" fails with that error.
class ServiceManager {
public:
    explicit ServiceManager(std::string state) : _state(std::move(state))
    {
        static const sd_bus_vtable methods[] = {
            SD_BUS_VTABLE_START(0), SD_BUS_METHOD("GetUnitFileState", "s", "s", answer, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END};
        REQUIRE(sd_bus_open_system(&_bus) >= 0);
        REQUIRE(sd_bus_add_object_vtable(_bus, nullptr, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                                         methods, this)
                >= 0);
        REQUIRE(sd_bus_request_name(_bus, "org.freedesktop.systemd1", 0) >= 0);
        _thread = std::thread([this] {
            while (!_stop) {
                if (sd_bus_process(_bus, nullptr) == 0)
                    sd_bus_wait(_bus, 20'000);
            }
        });
    }
    ~ServiceManager()
    {
        _stop = true;
        _thread.join();
        sd_bus_flush_close_unref(_bus);
    }
    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;

private:
    static int answer(sd_bus_message* call, void* self, sd_bus_error* error)
    {
        const auto& state = static_cast<ServiceManager*>(self)->_state;
        const char* unit = nullptr;
        sd_bus_message_read(call, "s", &unit);
        if (state.starts_with("error:"))
            return sd_bus_error_set(error, state.c_str() + 6, "refused");
        if (state.empty() || std::string(unit) != "com.zerkolin.brevane.scheduler.service")
            return sd_bus_error_set(error, SD_BUS_ERROR_FILE_NOT_FOUND, "No such file or directory");
        return sd_bus_reply_method_return(call, "s", state.c_str());
    }

    const std::string _state;
    sd_bus* _bus = nullptr;
    std::atomic<bool> _stop = false;
    std::thread _thread;
};

} // namespace

TEST_CASE("a unit that may start is enabled, one that was switched off requires approval")
{
    PrivateBus bus;
    for (const char* state : {"enabled", "enabled-runtime", "static", "linked", "indirect", "alias", "generated"}) {
        ServiceManager manager(state);
        CAPTURE(state);
        CHECK(platform::backgroundItemStatus(launchDaemon) == BackgroundItemStatus::Enabled);
    }
    for (const char* state : {"disabled", "masked", "masked-runtime"}) {
        ServiceManager manager(state);
        CAPTURE(state);
        CHECK(platform::backgroundItemStatus(launchDaemon) == BackgroundItemStatus::RequiresApproval);
    }
}

TEST_CASE("a unit that the service manager does not know is not found")
{
    PrivateBus bus;
    for (const char* state : {"", "bad", "error:org.freedesktop.systemd1.NoSuchUnit", "error:System.Error.ENOENT"}) {
        ServiceManager manager(state);
        CAPTURE(state);
        CHECK(platform::backgroundItemStatus(launchDaemon) == BackgroundItemStatus::NotFound);
    }
    ServiceManager manager("enabled");
    CHECK(platform::backgroundItemStatus("/Library/LaunchDaemons/other.plist") == BackgroundItemStatus::NotFound);
}

TEST_CASE("without a service manager, or with one that refuses, there is no answer")
{
    PrivateBus bus;
    CHECK_FALSE(platform::backgroundItemStatus(launchDaemon));
    ServiceManager manager("error:org.freedesktop.DBus.Error.AccessDenied");
    CHECK_FALSE(platform::backgroundItemStatus(launchDaemon));
}

TEST_CASE("without a bus there is no answer")
{
    EnvironmentVariable address("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    CHECK_FALSE(platform::backgroundItemStatus(launchDaemon));
}

TEST_CASE("a service manager that hangs is not waited for without end")
{
    PrivateBus bus;
    sd_bus* silent = nullptr;
    REQUIRE(sd_bus_open_system(&silent) >= 0);
    REQUIRE(sd_bus_request_name(silent, "org.freedesktop.systemd1", 0) >= 0);
    const auto start = std::chrono::steady_clock::now();
    CHECK_FALSE(platform::backgroundItemStatus(launchDaemon));
    CHECK(std::chrono::steady_clock::now() - start < std::chrono::seconds(20));
    sd_bus_unref(silent);
}
