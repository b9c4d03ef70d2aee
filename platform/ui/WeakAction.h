#pragma once

#include <memory>

namespace platform::ui {

// Makes actions of controls out of operations on their owner: void(Owner&). A control may outlive the owner; its
// action does nothing then.
template <typename Owner>
auto weakActions(std::weak_ptr<Owner> owner)
{
    return [owner](auto operation) {
        return [owner, operation] {
            if (const auto self = owner.lock())
                operation(*self);
        };
    };
}

} // namespace platform::ui
