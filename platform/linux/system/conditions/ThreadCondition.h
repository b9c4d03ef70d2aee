#pragma once

#include "platform/Condition.h"
#include "platform/linux/system/conditions/ConditionsThread.h"
#include "platform/linux/system/conditions/ValueTeller.h"

#include <memory>
#include <utility>

namespace platform {

// A condition whose follower works on the conditions' thread: it is made and destroyed there, and publishes what it
// finds through the teller that it is made with.
template <class Value, class Follower>
class ThreadCondition final : public Condition<Value> {
public:
    static FollowedCondition<Value> follow(std::shared_ptr<Queue> queue, std::function<void()> handler)
    {
        auto condition = std::make_unique<ThreadCondition>(std::move(queue), std::move(handler));
        condition->_teller->waitForFirst();
        return condition;
    }

    ThreadCondition(std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _teller(std::make_shared<ValueTeller<Value>>(std::move(queue), std::move(handler)))
    {
        ConditionsThread::shared().sync([this] { _follower = std::make_unique<Follower>(*_teller); });
    }

    ~ThreadCondition() override
    {
        _teller->stop();
        ConditionsThread::shared().sync([this] { _follower.reset(); });
    }

    Value current() const override { return _teller->current(); }

private:
    std::shared_ptr<ValueTeller<Value>> _teller;
    std::unique_ptr<Follower> _follower;
};

} // namespace platform
