#include "platform/FileDescriptor.h"
#include "platform/linux/system/conditions/ConditionsThread.h"
#include "platform/NetworkRoute.h"
#include "tests/conditions/Following.h"

#include <cstdio>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <sched.h>
#include <string>

using platform::NetworkRoute;

namespace {

// The conditions' thread in a network of its own, where shell commands run too.
class OwnNetwork {
public:
    OwnNetwork()
    {
        platform::ConditionsThread::shared().sync([this] {
            _earlier.reset(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
            _isMade = unshare(CLONE_NEWNET) == 0;
        });
    }
    ~OwnNetwork()
    {
        platform::ConditionsThread::shared().sync([this] { setns(_earlier.get(), CLONE_NEWNET); });
    }
    OwnNetwork(const OwnNetwork&) = delete;
    OwnNetwork& operator=(const OwnNetwork&) = delete;

    bool isMade() const { return _isMade; }
    static bool run(const std::string& commands)
    {
        int status = -1;
        platform::ConditionsThread::shared().sync(
            [&] { status = std::system(("{ set -e\n" + commands + "\n} >&2").c_str()); });
        return status == 0;
    }

private:
    platform::FileDescriptor _earlier;
    bool _isMade = false;
};

bool run(const std::string& commands)
{
    return OwnNetwork::run(commands);
}

bool makeNetwork(const OwnNetwork& network)
{
    if (!network.isMade())
        std::puts("SKIPPED: this process may not make a network of its own");
    else if (run("ip link add wire0 type veth peer name far0\nip link set lo up\nip link set wire0 up\n"
                 "ip link set far0 up\nip address add 192.0.2.1/24 dev wire0"))
        return true;
    else
        std::puts("SKIPPED: the kernel makes no interfaces for tests");
    return false;
}

} // namespace

TEST_CASE("the way out is wired while the default route's interface has a carrier")
{
    const OwnNetwork network;
    if (!makeNetwork(network))
        return;
    Following<NetworkRoute> route(platform::followNetworkRoute);
    CHECK(route.current() == NetworkRoute{true, false, ""});
    REQUIRE(run("ip route add default via 192.0.2.2 metric 50"));
    CHECK(route.becomes(NetworkRoute{true, true, "wire0"}));
    REQUIRE(run("ip link set far0 down"));
    CHECK(route.becomes(NetworkRoute{true, false, "wire0"}));
    REQUIRE(run("ip link set far0 up"));
    CHECK(route.becomes(NetworkRoute{true, true, "wire0"}));

    // A tunnel does not count, but what is below it.
    if (run("ip tuntap add tunnel0 mode tun\nip link set tunnel0 up\nip route add default dev tunnel0 metric 10")) {
        CHECK(route.current() == NetworkRoute{true, true, "wire0"});
    } else {
        std::puts("SKIPPED: the tunnel, the kernel makes none");
    }

    // The route that the kernel prefers counts.
    REQUIRE(run("ip link add wire1 type veth peer name far1\nip link set wire1 up\nip address add 198.51.100.1/24 dev "
                "wire1\nip route del default via 192.0.2.2\nip route add default via 192.0.2.2 metric 200\n"
                "ip route add default via 198.51.100.2 metric 100"));
    CHECK(route.becomes(NetworkRoute{true, false, "wire1"}));
    REQUIRE(run("ip link set far1 up"));
    CHECK(route.becomes(NetworkRoute{true, true, "wire1"}));
    REQUIRE(run("ip link delete wire1\nip route del default via 192.0.2.2 metric 200"));
    CHECK(route.becomes(NetworkRoute{true, false, ""}));
}
