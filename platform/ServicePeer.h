#pragma once

#include <cstdint>
#include <string>

namespace platform {

// A connection that has sent something to a named endpoint, as its transport itself describes it.
struct ServicePeer {
    std::string name; // unique, and never used again while the transport lives
    std::uint32_t user = 0;
    std::uint32_t process = 0; // 0 when it is not known. A courtesy, never a proof: numbers are used again
    std::string program;       // the path of its file; empty when it cannot be read
};

} // namespace platform
