#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// What the kernel tells over rtnetlink.

struct NetworkLink {
    std::string name;
    bool isEthernet = false;
    bool isTunnel = false; // without a link layer of its own
    bool hasCarrier = false;
};

struct DefaultRoute {
    int family = 0;
    std::uint32_t metric = 0;
    int interface = 0; // index of the link; 0: there is none
};

// By their index. nullopt when the kernel does not answer.
std::optional<std::map<int, NetworkLink>> readLinks();

// Of the main table, the preferred ones first: IPv4 before IPv6, then by metric.
std::optional<std::vector<DefaultRoute>> readDefaultRoutes();

} // namespace platform
