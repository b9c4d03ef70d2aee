#include "platform/SleepInhibitor.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/bus/SystemBus.h"
#include "platform/linux/system/conditions/LoginService.h"

#include <cerrno>
#include <fcntl.h>

namespace platform {

namespace {

constexpr std::uint64_t inhibitionLimit = 5'000'000; // microseconds

class LoginInhibitor final : public SleepInhibitor {
public:
    explicit LoginInhibitor(FileDescriptor descriptor) : _descriptor(std::move(descriptor)) { }

private:
    FileDescriptor _descriptor; // as long as it is open
};

} // namespace

Result<std::unique_ptr<SleepInhibitor>> SleepInhibitor::create(const std::string& reason)
{
    const auto bus = SystemBus::current();
    FileDescriptor inhibitor;
    const auto compose = [&](sd_bus* on, sd_bus_message** made) {
        const int result = sd_bus_message_new_method_call(on, made, LoginService::Name, LoginService::Object,
                                                          LoginService::Manager, "Inhibit");
        return result < 0 ? result : sd_bus_message_append(*made, "ssss", "sleep", "Brevane", reason.c_str(), "block");
    };
    const auto complete = [&](const SystemBus::Answer& answer) -> SystemBus::Task {
        int descriptor = -1; // the answer's
        if (answer.reply && sd_bus_message_read(answer.reply, "h", &descriptor) > 0)
            inhibitor.reset(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
        return nullptr;
    };
    if (const auto call = bus ? bus->beginCall(&inhibitor, compose, complete, inhibitionLimit) : nullptr)
        bus->wait(*call);
    if (!inhibitor)
        return std::unexpected(Error{POSIXErrorDomain, EHOSTUNREACH, {}, nullptr});
    return std::make_unique<LoginInhibitor>(std::move(inhibitor));
}

} // namespace platform
