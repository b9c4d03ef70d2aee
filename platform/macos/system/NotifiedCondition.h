#pragma once

#include "platform/Condition.h"
#include "platform/macos/system/MachineEvents.h"
#include "platform/QueueTelling.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {

// A condition that is read anew after the system's notifications of these names.
template <class Value>
class NotifiedCondition final : public Condition<Value> {
public:
    using Read = Value (*)();

    NotifiedCondition(Read read, const std::vector<const char*>& names, std::shared_ptr<Queue> queue,
                      std::function<void()> handler)
        : _state(std::make_shared<State>(read, std::move(queue), std::move(handler)))
    {
        for (const char* const name : names)
            _registrations.push_back(std::make_unique<NotifyRegistration>(name, [state = _state] { state->update(); }));
        _state->update();
    }

    Value current() const override
    {
        const std::lock_guard lock(_state->mutex);
        return _state->value;
    }

private:
    struct State {
        State(Read reader, std::shared_ptr<Queue> queue, std::function<void()> handler)
            : read(reader),
              telling(std::move(queue), std::move(handler)),
              value(reader())
        {
        }
        void update()
        {
            Value found = read();
            const std::lock_guard lock(mutex);
            if (found == value)
                return;
            value = std::move(found);
            telling.tell();
        }
        const Read read;
        QueueTelling<> telling;
        std::mutex mutex;
        Value value;
    };
    std::shared_ptr<State> _state;
    std::vector<std::unique_ptr<NotifyRegistration>> _registrations; // end first
};

} // namespace platform
