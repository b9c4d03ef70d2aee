#pragma once

#include <functional>
#include <memory>

namespace platform {

class Queue;

// A fact about the machine that the system itself tells changes of: nothing is ever polled. The handler runs on a
// serial queue after the value has changed, once for several changes in a row, and asks current(). It does not run any
// more once the object has gone, if it goes on that queue; otherwise it may just be running.
template <class Value>
class Condition {
public:
    using Handler = std::function<void()>;

    Condition() = default;
    virtual ~Condition() = default;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    // As far as it is known now. Any thread; never waits.
    virtual Value current() const = 0;
};

// How functions that begin to follow a fact hand it over: with its first value known, unless the system takes more than
// two seconds to tell it.
template <class Value>
using FollowedCondition = std::unique_ptr<Condition<Value>>;

} // namespace platform
