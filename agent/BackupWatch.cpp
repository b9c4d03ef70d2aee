#include "agent/BackupWatch.h"

#include "agent/NoticePlan.h"

#include <algorithm>
#include <utility>

namespace agent {

using platform::Dictionary;

std::shared_ptr<BackupWatch> BackupWatch::create(Parts parts)
{
    const auto watch = std::shared_ptr<BackupWatch>(new BackupWatch(std::move(parts)));
    watch->begin();
    return watch;
}

void BackupWatch::begin()
{
    _follower = StatusFollower::create([self = weak_from_this()](const Dictionary& reply) {
        const auto watch = self.lock();
        const auto status = BackupStatus::inReply(reply);
        if (watch && status)
            watch->look(*status);
    });
}

NoticeMemory BackupWatch::remembered() const
{
    return NoticeMemory::inDictionary(_parts.load());
}

void BackupWatch::remember(const NoticeMemory& memory) const
{
    if (memory != remembered())
        _parts.save(memory.dictionary());
}

void BackupWatch::look(const BackupStatus& status)
{
    auto memory = remembered();
    memory.observe(status);
    remember(memory);
    const auto plan = NoticePlan::at(status, memory);
    const bool isWanted = _parts.isWanted();
    // Whoever wants to know nothing is not looked after either.
    _follower->askAt(isWanted ? plan.next : std::nullopt);
    for (const auto& notice : isWanted ? plan.tell : std::vector<Notice>())
        show(notice, status.now);
}

void BackupWatch::show(const Notice& notice, scheduling::Instant now)
{
    if (std::ranges::find(_showing, notice.cause) != _showing.end())
        return;
    _showing.push_back(notice.cause);
    _parts.show(notice, [self = weak_from_this(), notice, now](bool isShown) {
        const auto watch = self.lock();
        if (!watch)
            return;
        std::erase(watch->_showing, notice.cause);
        if (!isShown)
            return;
        auto memory = watch->remembered();
        memory.tell(notice, now);
        watch->remember(memory);
    });
}

} // namespace agent
