#include "platform/Queue.h"
#include "platform/ui/Waiting.h"
#include "tests/platform/ui/User.h"

#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

// Does it on the main thread, so much later.
void after(int milliseconds, std::function<void()> task)
{
    platform::Queue::global()->async([milliseconds, task = std::move(task)] {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        platform::Queue::main()->async(task);
    });
}

void waitUntil(const std::atomic<bool>& isTrue)
{
    while (!isTrue)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

} // namespace

TEST_CASE("what takes a moment is waited for without a word, on another thread")
{
    std::thread::id worker;
    Texts shown;
    after(50, [&shown] { shown = user::windows(); });
    CHECK(platform::ui::waitFor("Waiting", [&worker] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        worker = std::this_thread::get_id();
    }));
    CHECK(worker != std::this_thread::get_id());
    CHECK(shown.empty());
    CHECK(user::windows().empty());
}

TEST_CASE("what takes longer than three seconds is named by a window, which goes when it is there")
{
    std::atomic<bool> isThere = false;
    Texts before, shown, texts;
    after(2500, [&before] { before = user::windows(); });
    after(3500, [&] {
        shown = user::windows();
        texts = user::textsIn("waitingWindow");
        isThere = true;
    });
    CHECK(platform::ui::waitFor("Waiting for <somebody>", [&isThere] { waitUntil(isThere); }));
    CHECK(before.empty());
    CHECK(shown == Texts{"waitingWindow"});
    CHECK(texts == Texts{"Waiting for <somebody>"});
    CHECK(user::windows().empty());
}

TEST_CASE("closing the window gives up, and the work ends by itself")
{
    const auto isThere = std::make_shared<std::atomic<bool>>(false);
    const auto hasEnded = std::make_shared<std::atomic<bool>>(false);
    after(3500, [] { user::pressButton("waitingWindow", "Cancel"); });
    CHECK_FALSE(platform::ui::waitFor("Waiting", [isThere, hasEnded] {
        waitUntil(*isThere);
        *hasEnded = true;
    }));
    CHECK(user::windows().empty());
    CHECK_FALSE(*hasEnded);
    *isThere = true;
    CHECK(user::runEventsUntil([&] { return hasEnded->load(); }, 5000));
    user::runEvents();
}
