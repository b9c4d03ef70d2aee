#include "agent/StatusFollower.h"
#include "messaging/BRVHelperMessager.h"
#include "platform/linux/system/queues/MainQueue.h"
#include "platform/PropertyListCoding.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <doctest/doctest.h>
#include <poll.h>

namespace service = scripted::service;
using agent::StatusFollower;
using platform::Dictionary;
using std::chrono::seconds;

namespace {

constexpr const char* changed = "com.zerkolin.brevane.status";
constexpr scheduling::Instant begin = 1'767'225'600; // of the scripted clock

// Until the main queue has had nothing to do for a moment.
void serve()
{
    for (pollfd tasks{platform::mainQueueDescriptor(), POLLIN, 0}; ::poll(&tasks, 1, 50) > 0;)
        platform::serveMainQueue();
}

struct Following {
    Following()
    {
        scripted::reset();
        BRVHelperMessager::sharedMessager()->cancel();
        service::setHandler([](const auto&) -> platform::ServiceReply {
            return platform::ServiceDictionary{{"payload", platform::binaryPropertyList(Dictionary{{"a", 1}}).value()}};
        });
        follower = StatusFollower::create([this](const Dictionary&) { ++replies; });
        serve();
    }

    static std::size_t asked() { return service::requests().size(); }
    static void pass(seconds time)
    {
        scripted::clock::advance(time);
        serve();
    }
    static void arrive()
    {
        scripted::notifications::arrive(changed);
        serve();
    }

    int replies = 0;
    std::shared_ptr<StatusFollower> follower;
};

} // namespace

TEST_CASE_FIXTURE(Following, "the status is asked for at once, and then once for all changes within two seconds")
{
    CHECK(replies == 1);
    arrive();
    pass(seconds(1));
    arrive();
    CHECK(asked() == 1);
    pass(seconds(1));
    CHECK(asked() == 2);
    CHECK(replies == 2);
    pass(seconds(100'000));
    CHECK(asked() == 2);
}

TEST_CASE_FIXTURE(Following, "at an instant that was asked for the status is asked for, and not twice")
{
    follower->askAt(begin + 100);
    pass(seconds(99));
    CHECK(asked() == 1);
    pass(seconds(1));
    CHECK(asked() == 2);
    pass(seconds(1000));
    CHECK(asked() == 2);
    follower->askAt(begin + 5000);
    follower->askAt(std::nullopt);
    pass(seconds(10'000));
    CHECK(asked() == 2);
}

TEST_CASE_FIXTURE(Following, "a helper that does not answer is asked again less and less often, and then waited for")
{
    service::setHandler([](const auto&) { return std::unexpected(platform::ServiceError::Invalid); });
    arrive();
    pass(seconds(2));
    CHECK(asked() == 2);
    std::size_t expected = 2;
    for (const int pause : {10, 20, 40, 80, 160, 320, 640, 1280}) {
        pass(seconds(pause - 1));
        CHECK(asked() == expected);
        pass(seconds(1));
        CHECK(asked() == ++expected);
    }
    pass(seconds(100'000));
    CHECK(asked() == expected);
    CHECK(replies == 1);
    arrive();
    pass(seconds(2));
    CHECK(asked() == ++expected);
    pass(seconds(10));
    CHECK(asked() == ++expected);
}

TEST_CASE_FIXTURE(Following, "what comes after its end is not told")
{
    arrive();
    follower.reset();
    pass(seconds(2));
    CHECK(replies == 1);
    CHECK(asked() == 1);
}
