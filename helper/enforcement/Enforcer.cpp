#include "helper/enforcement/Enforcer.h"

#include "platform/Queue.h"
#include "protocol/Messages.h"

#include <future>
#include <optional>
#include <utility>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;

// Lives as long as tasks do.
struct Enforcer::Holder {
    std::optional<EnforcementLoop> loop;
};

Enforcer::Enforcer(EnforcementParts parts)
    : _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.enforcing")),
      _holder(std::make_shared<Holder>())
{
    // The machine may take seconds to tell how it stands.
    _queue->async([holder = _holder, queue = std::weak_ptr(_queue), parts = std::move(parts)] {
        if (const auto ours = queue.lock())
            holder->loop.emplace(parts, ours);
    });
}

Enforcer::~Enforcer()
{
    _queue->async([holder = _holder] { holder->loop.reset(); });
}

void Enforcer::onLoop(std::function<void(EnforcementLoop&)> task)
{
    _queue->async([holder = _holder, task = std::move(task)] {
        if (holder->loop)
            task(*holder->loop);
    });
}

void Enforcer::apply(const ScheduleSettings& record)
{
    onLoop([record](EnforcementLoop& loop) { loop.apply(record); });
}

void Enforcer::conditionsChanged()
{
    onLoop([](EnforcementLoop& loop) { loop.happen(); });
}

void Enforcer::startNow(Completion completion)
{
    onLoop([completion = std::move(completion)](EnforcementLoop& loop) {
        if (const auto started = loop.startNow(); !started)
            completion(std::unexpected(started.error()));
        else
            completion(PropertyList(Dictionary{{PayloadKey::Applied, true}}));
    });
}

void Enforcer::status(Completion completion)
{
    onLoop([completion = std::move(completion)](EnforcementLoop& loop) { completion(PropertyList(loop.status())); });
}

bool Enforcer::stop(std::chrono::milliseconds limit)
{
    auto done = std::make_shared<std::promise<void>>();
    _queue->async([holder = _holder, done] {
        holder->loop.reset();
        done->set_value();
    });
    return done->get_future().wait_for(limit) == std::future_status::ready;
}

} // namespace helper
