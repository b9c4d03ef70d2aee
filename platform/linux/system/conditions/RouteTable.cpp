#include "platform/linux/system/conditions/RouteTable.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <tuple>

namespace platform {

namespace {

template <class Body>
struct Request {
    nlmsghdr header;
    Body body;
};

using Visit = std::function<void(const nlmsghdr&)>;

// False at the end of the answer or on an error, which `failed` tells.
bool visitMessages(const char* bytes, std::size_t size, const Visit& visit, bool& failed)
{
    auto length = static_cast<unsigned>(size);
    for (const auto* message = reinterpret_cast<const nlmsghdr*>(bytes); NLMSG_OK(message, length);
         message = NLMSG_NEXT(message, length)) {
        if (message->nlmsg_type == NLMSG_DONE)
            return false;
        failed = message->nlmsg_type == NLMSG_ERROR;
        if (failed)
            return false;
        visit(*message);
    }
    return true;
}

// Asks for all objects of a kind and visits each.
template <class Body>
bool dump(std::uint16_t type, Body body, const Visit& visit)
{
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    Request<Body> request{};
    request.header.nlmsg_len = NLMSG_LENGTH(sizeof(Body));
    request.header.nlmsg_type = type;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.body = body;
    if (!socket || ::send(socket.get(), &request, request.header.nlmsg_len, 0) < 0)
        return false;
    alignas(nlmsghdr) char bytes[32768];
    for (;;) {
        const auto size = ::recv(socket.get(), bytes, sizeof bytes, 0);
        if (size < 0 && errno == EINTR)
            continue;
        bool failed = size <= 0;
        if (failed || !visitMessages(bytes, static_cast<std::size_t>(size), visit, failed))
            return !failed;
    }
}

using VisitAttribute = std::function<void(unsigned short type, const rtattr&)>;

template <class Body>
void visitAttributes(const nlmsghdr& message, const VisitAttribute& visit)
{
    const auto* const start = reinterpret_cast<const char*>(&message) + NLMSG_LENGTH(NLMSG_ALIGN(sizeof(Body)));
    if (message.nlmsg_len < NLMSG_LENGTH(sizeof(Body)))
        return;
    auto length = static_cast<int>(message.nlmsg_len - NLMSG_LENGTH(NLMSG_ALIGN(sizeof(Body))));
    for (const auto* attribute = reinterpret_cast<const rtattr*>(start); RTA_OK(attribute, length);
         attribute = RTA_NEXT(attribute, length))
        visit(attribute->rta_type, *attribute);
}

std::uint32_t numberOf(const rtattr& attribute)
{
    std::uint32_t number = 0;
    if (RTA_PAYLOAD(&attribute) >= sizeof number)
        std::memcpy(&number, RTA_DATA(&attribute), sizeof number);
    return number;
}

std::string textOf(const rtattr& attribute)
{
    const auto* const text = static_cast<const char*>(RTA_DATA(&attribute));
    return {text, ::strnlen(text, RTA_PAYLOAD(&attribute))};
}

// Of several ways that share the load, the first.
int firstHop(const rtattr& attribute)
{
    rtnexthop hop{};
    if (RTA_PAYLOAD(&attribute) < sizeof hop)
        return 0;
    std::memcpy(&hop, RTA_DATA(&attribute), sizeof hop);
    return hop.rtnh_ifindex;
}

NetworkLink linkOf(const nlmsghdr& message, const ifinfomsg& body)
{
    NetworkLink link;
    link.isEthernet = body.ifi_type == ARPHRD_ETHER;
    link.isTunnel = body.ifi_type == ARPHRD_NONE || body.ifi_type == ARPHRD_TUNNEL || body.ifi_type == ARPHRD_TUNNEL6
        || body.ifi_type == ARPHRD_SIT || body.ifi_type == ARPHRD_IPGRE;
    link.hasCarrier = (body.ifi_flags & IFF_LOWER_UP) != 0 && (body.ifi_flags & IFF_UP) != 0;
    visitAttributes<ifinfomsg>(message, [&](unsigned short type, const rtattr& attribute) {
        if (type == IFLA_IFNAME)
            link.name = textOf(attribute);
    });
    return link;
}

std::optional<DefaultRoute> defaultRouteOf(const nlmsghdr& message, const rtmsg& body)
{
    if (body.rtm_dst_len != 0 || body.rtm_type != RTN_UNICAST || (body.rtm_flags & RTM_F_CLONED) != 0)
        return std::nullopt;
    DefaultRoute route{.family = body.rtm_family, .metric = 0, .interface = 0};
    std::uint32_t table = body.rtm_table;
    visitAttributes<rtmsg>(message, [&](unsigned short type, const rtattr& attribute) {
        if (type == RTA_TABLE)
            table = numberOf(attribute);
        else if (type == RTA_PRIORITY)
            route.metric = numberOf(attribute);
        else if (type == RTA_OIF)
            route.interface = static_cast<int>(numberOf(attribute));
        else if (type == RTA_MULTIPATH)
            route.interface = firstHop(attribute);
    });
    return table == RT_TABLE_MAIN ? std::optional(route) : std::nullopt;
}

template <class Body>
Body bodyOf(const nlmsghdr& message)
{
    Body body{};
    if (message.nlmsg_len >= NLMSG_LENGTH(sizeof body))
        std::memcpy(&body, reinterpret_cast<const char*>(&message) + NLMSG_HDRLEN, sizeof body);
    return body;
}

} // namespace

std::optional<std::map<int, NetworkLink>> readLinks()
{
    std::map<int, NetworkLink> links;
    const bool isComplete = dump(RTM_GETLINK, ifinfomsg{}, [&](const nlmsghdr& message) {
        const auto body = bodyOf<ifinfomsg>(message);
        if (message.nlmsg_type == RTM_NEWLINK)
            links[body.ifi_index] = linkOf(message, body);
    });
    return isComplete ? std::optional(std::move(links)) : std::nullopt;
}

std::optional<std::vector<DefaultRoute>> readDefaultRoutes()
{
    std::vector<DefaultRoute> routes;
    const bool isComplete = dump(RTM_GETROUTE, rtmsg{}, [&](const nlmsghdr& message) {
        const auto route = defaultRouteOf(message, bodyOf<rtmsg>(message));
        if (message.nlmsg_type == RTM_NEWROUTE && route)
            routes.push_back(*route);
    });
    if (!isComplete)
        return std::nullopt;
    std::ranges::stable_sort(
        routes, {}, [](const DefaultRoute& route) { return std::tuple(route.family != AF_INET, route.metric); });
    return routes;
}

} // namespace platform
