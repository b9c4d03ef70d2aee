#include "helper/Peers.h"

#include <doctest/doctest.h>

using helper::Peers;

TEST_CASE("peers are connected from their first message until they leave")
{
    Peers peers;
    CHECK_FALSE(peers.anyConnected());
    peers.add(":1.1");
    peers.add(":1.1");
    CHECK(peers.anyConnected());
    CHECK_FALSE(peers.identified(":1.1"));
    peers.identify({":1.1", 1000, 55, "/bin/x"});
    REQUIRE(peers.identified(":1.1"));
    CHECK(peers.identified(":1.1")->user == 1000);
    peers.remove(":1.1");
    CHECK_FALSE(peers.anyConnected());
    peers.identify({":1.1", 1000, 55, "/bin/x"});
    CHECK_FALSE(peers.anyConnected());
}

TEST_CASE("another connection of the same process is no other peer, one that is not known is")
{
    Peers peers;
    peers.add(":1.1");
    CHECK_FALSE(peers.othersConnected(":1.1"));
    CHECK(peers.othersConnected(":1.2"));
    peers.identify({":1.1", 1000, 55, {}});
    peers.add(":1.2");
    CHECK(peers.othersConnected(":1.1"));
    peers.identify({":1.2", 1000, 55, {}});
    CHECK_FALSE(peers.othersConnected(":1.1"));
    peers.add(":1.3");
    peers.identify({":1.3", 1000, 56, {}});
    CHECK(peers.othersConnected(":1.1"));
    // A process that is not known vouches for nobody.
    peers.remove(":1.3");
    peers.add(":1.4");
    peers.identify({":1.4", 1000, 0, {}});
    CHECK(peers.othersConnected(":1.4"));
}
