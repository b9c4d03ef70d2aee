#include "platform/NetworkRoute.h"

#include "platform/AtomicFile.h"
#include "platform/FileDescriptor.h"
#include "platform/linux/system/conditions/RouteTable.h"
#include "platform/linux/system/conditions/ThreadCondition.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace platform {

namespace {

// Radio in the dress of Ethernet has a type of its own.
bool isRadio(const std::string& interface)
{
    const auto folder = "/sys/class/net/" + interface;
    if (fileExists(folder + "/wireless") || fileExists(folder + "/phy80211"))
        return true;
    const auto bytes = readFile(folder + "/uevent");
    const std::string text = bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    return std::ranges::any_of(std::array{"DEVTYPE=wlan\n", "DEVTYPE=wwan\n", "DEVTYPE=bluetooth\n"},
                               [&](const char* type) { return text.find(type) != std::string::npos; });
}

NetworkRoute readRoute()
{
    const auto links = readLinks();
    const auto routes = readDefaultRoutes();
    if (!links || !routes)
        return {};
    for (const auto& route : *routes) {
        const auto found = links->find(route.interface);
        // What goes through a tunnel goes out somewhere else.
        if (found == links->end() || found->second.isTunnel)
            continue;
        const auto& link = found->second;
        return {.isKnown = true,
                .isWired = link.isEthernet && link.hasCarrier && !isRadio(link.name),
                .interface = link.name};
    }
    return {.isKnown = true, .isWired = false, .interface = {}};
}

class RouteFollower {
public:
    explicit RouteFollower(ValueTeller<NetworkRoute>& teller) : _teller(teller)
    {
        const sockaddr_nl address{.nl_family = AF_NETLINK,
                                  .nl_pad = 0,
                                  .nl_pid = 0,
                                  .nl_groups = RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE};
        if (_changes && ::bind(_changes.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            _source = ConditionsThread::shared().watchDescriptor(_changes.get(), [this] { didChange(); });
        _teller.publish(readRoute());
    }

private:
    // That there is a change is all that counts; it may also be that too many came at once.
    void didChange()
    {
        char message[8192];
        while (::recv(_changes.get(), message, sizeof message, 0) >= 0 || errno == EINTR || errno == ENOBUFS) { }
        _teller.publish(readRoute());
    }

    ValueTeller<NetworkRoute>& _teller;
    FileDescriptor _changes{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)};
    EventSource _source;
};

} // namespace

FollowedCondition<NetworkRoute> followNetworkRoute(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return ThreadCondition<NetworkRoute, RouteFollower>::follow(std::move(queue), std::move(handler));
}

} // namespace platform
