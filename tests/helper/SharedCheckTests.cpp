#include "helper/update/SharedCheck.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <doctest/doctest.h>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using helper::SharedCheck;

using namespace std::chrono_literals;

namespace {

const platform::Error closed{platform::POSIXErrorDomain, ESHUTDOWN, {}, nullptr};

// A check whose answer is how often it was made. The first `held` of them go on until they are let go or given up.
class CountedCheck {
public:
    explicit CountedCheck(int held = 0, std::chrono::milliseconds keeping = 0ms)
        : _check(SharedCheck::create([this, held](const auto& isGivenUp) { return make(held, isGivenUp); }, keeping))
    {
    }
    ~CountedCheck()
    {
        letGo();
        settle();
    }

    SharedCheck* operator->() { return _check.get(); }

    std::future<SharedCheck::Outcome> ask(const std::string& sender)
    {
        auto promise = std::make_shared<std::promise<SharedCheck::Outcome>>();
        _promises.push_back(promise);
        _check->ask(sender, [promise](SharedCheck::Outcome outcome) { promise->set_value(std::move(outcome)); });
        return promise->get_future();
    }
    void waitForCount(int count) const
    {
        for (const auto end = std::chrono::steady_clock::now() + 20s;
             _count < count && std::chrono::steady_clock::now() < end;)
            std::this_thread::sleep_for(1ms);
        REQUIRE(_count == count);
    }
    void letGo() { _isHeld = false; }
    // Returns when no check is at work.
    void settle() const
    {
        _check->queue()->sync([] { });
    }
    int count() const { return _count; }
    int givenUp() const { return _givenUp; }

private:
    SharedCheck::Outcome make(int held, const std::function<bool()>& isGivenUp)
    {
        const int number = ++_count;
        while (number <= held && _isHeld) {
            if (isGivenUp()) {
                ++_givenUp;
                break;
            }
            std::this_thread::sleep_for(1ms);
        }
        return platform::PropertyList(number);
    }

    // Kept, since the end of one without a value looks like an answer.
    std::vector<std::shared_ptr<std::promise<SharedCheck::Outcome>>> _promises;
    std::atomic<int> _count = 0;
    std::atomic<int> _givenUp = 0;
    std::atomic<bool> _isHeld = true;
    std::shared_ptr<SharedCheck> _check;
};

bool isAnswered(std::future<SharedCheck::Outcome>& answer)
{
    return answer.wait_for(0s) == std::future_status::ready;
}

int answerIn(std::future<SharedCheck::Outcome> answer)
{
    REQUIRE(answer.wait_for(20s) == std::future_status::ready);
    const auto outcome = answer.get();
    return outcome ? static_cast<int>(outcome->integerValue()) : -static_cast<int>(outcome.error().code);
}

} // namespace

TEST_CASE("who asks while a check is under way gets its answer, and who asks after it another one")
{
    CountedCheck check(1);
    auto first = check.ask("a");
    auto second = check.ask("b");
    check.waitForCount(1);
    auto third = check.ask("a");
    CHECK_FALSE(isAnswered(first));
    check.letGo();
    CHECK(answerIn(std::move(first)) == 1);
    CHECK(answerIn(std::move(second)) == 1);
    CHECK(answerIn(std::move(third)) == 1);
    CHECK(answerIn(check.ask("a")) == 2);
    CHECK(check.count() == 2);
}

TEST_CASE("an answer that is kept is given at once, and to everybody")
{
    CountedCheck check(0, 1h);
    CHECK(answerIn(check.ask("a")) == 1);
    for (const char* sender : {"a", "b"}) {
        auto answer = check.ask(sender);
        CHECK(isAnswered(answer));
        CHECK(answerIn(std::move(answer)) == 1);
    }
    CHECK(check.count() == 1);
}

TEST_CASE("one sender may have eight questions waiting, and is refused the ninth, which delays nobody")
{
    CountedCheck check(1);
    std::vector<std::future<SharedCheck::Outcome>> waiting;
    for (int number = 0; number < 8; ++number)
        waiting.push_back(check.ask("many"));
    auto refused = check.ask("many");
    REQUIRE(isAnswered(refused));
    CHECK(answerIn(std::move(refused)) == -EBUSY);
    waiting.push_back(check.ask("other"));
    CHECK_FALSE(isAnswered(waiting.back()));
    check.letGo();
    for (auto& answer : waiting)
        CHECK(answerIn(std::move(answer)) == 1);
}

TEST_CASE("a check that nobody waits for any more is given up, and the next question has one of its own")
{
    CountedCheck check(1);
    auto gone = check.ask("gone");
    auto stays = check.ask("stays");
    check.waitForCount(1);
    check->forget("gone");
    std::this_thread::sleep_for(30ms);
    CHECK(check.givenUp() == 0);
    check->forget("stays");
    check.settle();
    CHECK(check.givenUp() == 1);
    CHECK_FALSE(isAnswered(gone));
    CHECK_FALSE(isAnswered(stays));
    CHECK(answerIn(check.ask("stays")) == 2);
}

TEST_CASE("who leaves before the check has begun is not checked for")
{
    CountedCheck check;
    std::promise<void> begin;
    check->queue()->async([wait = begin.get_future().share()] { wait.wait(); });
    auto gone = check.ask("gone");
    check->forget("gone");
    begin.set_value();
    check.settle();
    CHECK(check.count() == 0);
    CHECK_FALSE(isAnswered(gone));
    CHECK(answerIn(check.ask("stays")) == 1);
}

TEST_CASE("a closed check answers whoever waits and whoever asks with the error, until it is open again")
{
    CountedCheck check(1, 1h);
    auto waiting = check.ask("a");
    check.waitForCount(1);
    check->close(closed);
    CHECK(isAnswered(waiting));
    CHECK(answerIn(std::move(waiting)) == -ESHUTDOWN);
    check.settle();
    CHECK(check.givenUp() == 1);
    auto refused = check.ask("a");
    CHECK(isAnswered(refused));
    CHECK(answerIn(std::move(refused)) == -ESHUTDOWN);
    check->open();
    CHECK(answerIn(check.ask("a")) == 2);
    check->close(closed);
    CHECK(answerIn(check.ask("a")) == -ESHUTDOWN); // whatever is kept
    check->open();
    CHECK(answerIn(check.ask("a")) == 2);
}
