#include "helper/Peers.h"

#include <doctest/doctest.h>

using helper::Peers;

namespace {

// It has sent a message that is more than a look at the status.
void addUser(Peers& peers, const char* name)
{
    peers.add(name);
    peers.setUsesHelper(name);
}

} // namespace

TEST_CASE("peers are connected from their first message until they leave")
{
    Peers peers;
    CHECK_FALSE(peers.anyConnected());
    addUser(peers, ":1.1");
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

TEST_CASE("a peer that the bus tells of before its first request is known when that comes")
{
    Peers peers;
    peers.identify({":1.1", 1000, 55, "/bin/x"}); // it has asked for something else before
    CHECK_FALSE(peers.anyConnected());
    addUser(peers, ":1.1");
    REQUIRE(peers.identified(":1.1"));
    CHECK(peers.identified(":1.1")->process == 55);
}

TEST_CASE("who only looks at the status of backups is known, and no reason to wait")
{
    Peers peers;
    peers.add(":1.1");
    peers.identify({":1.1", 1000, 55, "/bin/x"});
    REQUIRE(peers.identified(":1.1"));
    CHECK_FALSE(peers.anyConnected());
    CHECK_FALSE(peers.othersConnected(":1.2"));
    peers.setUsesHelper(":1.3"); // never added
    CHECK_FALSE(peers.anyConnected());
    peers.setUsesHelper(":1.1");
    CHECK(peers.anyConnected());
    CHECK(peers.othersConnected(":1.2"));
}

TEST_CASE("another connection of the same process is no other peer, one that is not known is")
{
    Peers peers;
    addUser(peers, ":1.1");
    CHECK_FALSE(peers.othersConnected(":1.1"));
    CHECK(peers.othersConnected(":1.2"));
    peers.identify({":1.1", 1000, 55, {}});
    addUser(peers, ":1.2");
    CHECK(peers.othersConnected(":1.1"));
    peers.identify({":1.2", 1000, 55, {}});
    CHECK_FALSE(peers.othersConnected(":1.1"));
    addUser(peers, ":1.3");
    peers.identify({":1.3", 1000, 56, {}});
    CHECK(peers.othersConnected(":1.1"));
    // A process that is not known vouches for nobody.
    peers.remove(":1.3");
    addUser(peers, ":1.4");
    peers.identify({":1.4", 1000, 0, {}});
    CHECK(peers.othersConnected(":1.4"));
}

TEST_CASE("for one who never came any process is another one, the system's first too")
{
    Peers peers;
    addUser(peers, ":1.1");
    peers.identify({":1.1", 0, 1, {}});
    CHECK(peers.othersConnected(":1.9"));
    addUser(peers, ":1.2");
    CHECK(peers.othersConnected(":1.2")); // nobody has said whose it is
    peers.remove(":1.1");
    CHECK_FALSE(peers.othersConnected(":1.2"));
}
