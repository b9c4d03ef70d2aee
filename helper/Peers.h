#pragma once

#include <cstddef>
#include <mutex>
#include <set>
#include <string>

namespace helper {

// Who has sent messages, by the unique names that the bus reports. Any thread.
class Peers {
public:
    void add(const std::string& name);

    // Whether anybody who has sent messages is still connected.
    bool anyConnected();
    // Whether another program than that of `name` has sent messages and is still connected.
    bool othersConnected(const std::string& name);

private:
    static constexpr std::size_t maximumNames = 256;

    void forgetThoseGone();

    std::mutex _lock;
    std::set<std::string> _names;
};

} // namespace helper
