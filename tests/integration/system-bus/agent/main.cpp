// An authentication agent for one process, run by root, who vouches for the administrator without a password:
//
//   brevane_test_agent PROCESS START-TIME PROCESS-UID ADMIN-UID yes|cancel|fail|crash|hang
//
// Prints "ready", then the message of each dialog that it would show.

#include "platform/linux/system/bus/BusHandles.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

constexpr const char* Authority = "org.freedesktop.PolicyKit1";
constexpr const char* AuthorityPath = "/org/freedesktop/PolicyKit1/Authority";
constexpr const char* AuthorityInterface = "org.freedesktop.PolicyKit1.Authority";
constexpr const char* AgentPath = "/com/zerkolin/test/agent";

std::uint32_t administrator = 0;
std::string mode;

int confirm(sd_bus_message* request, const char* cookie)
{
    return sd_bus_call_method(sd_bus_message_get_bus(request), Authority, AuthorityPath, AuthorityInterface,
                              "AuthenticationAgentResponse2", nullptr, nullptr, "us(sa{sv})", 0U, cookie, "unix-user",
                              1, "uid", "u", administrator);
}

int begin(sd_bus_message* request, void*, sd_bus_error* error)
{
    const char* message = nullptr;
    const char* cookie = nullptr;
    int result = sd_bus_message_read(request, "sss", nullptr, &message, nullptr);
    if (result >= 0)
        result = sd_bus_message_skip(request, "a{ss}");
    if (result >= 0)
        result = sd_bus_message_read(request, "s", &cookie);
    if (result < 0)
        return result;
    std::puts(message);
    std::fflush(stdout);
    if (mode == "crash")
        _exit(0);
    if (mode == "cancel")
        return sd_bus_error_set(error, "org.freedesktop.PolicyKit1.Error.Cancelled", "The dialog was dismissed");
    if (mode == "hang")
        return 1;
    if (mode == "yes")
        result = confirm(request, cookie);
    return result < 0 ? result : sd_bus_reply_method_return(request, "");
}

int cancel(sd_bus_message* request, void*, sd_bus_error*)
{
    return sd_bus_reply_method_return(request, "");
}

} // namespace

int main(int count, char** arguments)
{
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("BeginAuthentication", "sssa{ss}sa(sa{sv})", "", begin, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("CancelAuthentication", "s", "", cancel, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    if (count != 6)
        return 2;
    administrator = static_cast<std::uint32_t>(std::atol(arguments[4]));
    mode = arguments[5];
    sd_bus* bus = nullptr;
    if (sd_bus_open_system(&bus) < 0)
        return 1;
    const platform::BusHandle owner(bus);
    sd_bus_error error{};
    if (sd_bus_add_object_vtable(bus, nullptr, AgentPath, "org.freedesktop.PolicyKit1.AuthenticationAgent", methods,
                                 nullptr)
            < 0
        || sd_bus_call_method(bus, Authority, AuthorityPath, AuthorityInterface, "RegisterAuthenticationAgent", &error,
                              nullptr, "(sa{sv})ss", "unix-process", 3, "pid", "u",
                              static_cast<std::uint32_t>(std::atol(arguments[1])), "start-time", "t",
                              static_cast<std::uint64_t>(std::atoll(arguments[2])), "uid", "i", std::atoi(arguments[3]),
                              "C", AgentPath)
            < 0) {
        std::printf("not registered: %s\n", error.message ? error.message : "");
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    while (sd_bus_process(bus, nullptr) >= 0 && sd_bus_wait(bus, UINT64_MAX) >= 0) { }
    return 0;
}
