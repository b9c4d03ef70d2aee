#pragma once

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace platform {

// Who wants to hear of events of one kind. One thread.
template <class Event>
class ObserverList {
public:
    using Handler = std::function<void(const Event&)>;

    void add(const void* observer, Handler handler) { _entries.emplace_back(observer, std::move(handler)); }
    void remove(const void* observer)
    {
        std::erase_if(_entries, [&](const auto& entry) { return entry.first == observer; });
    }

    // In the order in which they were added. A handler may add and remove observers: the added ones do not hear of this
    // event, the removed ones not any more.
    void tell(const Event& event) const
    {
        const auto present = _entries;
        for (const auto& told : present) {
            if (std::ranges::any_of(_entries, [&](const auto& entry) { return entry.first == told.first; }))
                told.second(event);
        }
    }

private:
    std::vector<std::pair<const void*, Handler>> _entries;
};

} // namespace platform
