#include "helper/enforcement/SnapshotKeeper.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/ZRKError.h"
#include "platform/Folder.h"
#include "platform/Queue.h"

#include <algorithm>
#include <future>
#include <utility>

namespace helper {

using platform::ClockTimer;
using platform::Dictionary;

namespace {

bool isSnapshotsRecord(const Dictionary& content)
{
    const auto* const list = content.arrayForKey("Snapshots");
    return list && std::ranges::all_of(*list, [](const auto& each) {
               return each.dictionary() && MadeSnapshot::inDictionary(*each.dictionary());
           });
}

} // namespace

// On the queue.
struct SnapshotKeeper::Work {
    Work(const std::string& path, std::function<std::vector<std::string>()> protectedFolders,
         std::shared_ptr<LocalSnapshots> system)
        : file(path, isSnapshotsRecord),
          folders(std::move(protectedFolders)),
          snapshots(std::move(system))
    {
        (void)platform::createFolder(platform::parentOf(path));
        const auto content = file.open();
        const auto* const list = content ? content->arrayForKey("Snapshots") : nullptr;
        for (const auto& each : list ? *list : platform::Array())
            made.push_back(*MadeSnapshot::inDictionary(*each.dictionary()));
    }

    void look()
    {
        const auto now = std::chrono::floor<std::chrono::seconds>(platform::readClocks().sinceEpoch).count();
        // A clock that was put back makes nobody wait for a far future.
        for (auto& snapshot : made)
            snapshot.at = std::min<scheduling::Instant>(snapshot.at, now);
        for (auto& attempt : tried)
            attempt.at = std::min<scheduling::Instant>(attempt.at, now);
        const auto plan = SnapshotPlan::at(
            now, isEnabled ? snapshots->volumesOf(folders()) : std::vector<std::string>(), made, tried);
        for (const auto& volume : plan.make)
            make(volume, now);
        for (const auto& snapshot : plan.remove)
            remove(snapshot);
        if (!plan.make.empty() || !plan.remove.empty())
            save();
        timer->set(plan.next ? std::optional(std::chrono::seconds(*plan.next)) : std::nullopt);
    }

    void make(const std::string& volume, scheduling::Instant now)
    {
        std::erase_if(tried, [&](const auto& attempt) { return attempt.volume == volume; });
        tried.push_back({volume, now});
        const auto snapshot = snapshots->make(volume);
        if (!snapshot) {
            ZRKLogMessage(LogLevelError, "No local snapshot of '%@' was made: %@.", {volume, snapshot.error()});
            return;
        }
        ZRKLogMessage(LogLevelDefault, "Made the local snapshot '%@'.", {snapshot->path});
        if (snapshot->identifier)
            made.push_back({volume, snapshot->path, *snapshot->identifier, now});
    }

    // One that is not there any more is forgotten, and so is one in whose place something else is.
    void remove(const MadeSnapshot& snapshot)
    {
        const bool isOurs = snapshots->identifierOf(snapshot.path) == snapshot.identifier;
        if (isOurs) {
            if (const auto removed = snapshots->remove(snapshot.path); !removed) {
                ZRKLogMessage(LogLevelError, "The old local snapshot '%@' could not be removed: %@.",
                              {snapshot.path, removed.error()});
            } else {
                ZRKLogMessage(LogLevelDefault, "Removed the old local snapshot '%@'.", {snapshot.path});
                tellOfSnapshots();
            }
        }
        std::erase(made, snapshot);
    }

    void save()
    {
        platform::Array list;
        for (const auto& snapshot : made)
            list.emplace_back(snapshot.dictionary());
        if (const auto written = file.write(Dictionary{{"Snapshots", std::move(list)}}); !written)
            ZRKError::log(written.error());
    }

    PropertyListFile file;
    const std::function<std::vector<std::string>()> folders;
    const std::shared_ptr<LocalSnapshots> snapshots;
    std::vector<MadeSnapshot> made;
    std::vector<SnapshotPlan::Attempt> tried;
    std::unique_ptr<ClockTimer> timer;
    std::unique_ptr<platform::ClockWatch> clock;
    bool isEnabled = false;
};

SnapshotKeeper::SnapshotKeeper(const std::string& path, std::function<std::vector<std::string>()> folders,
                               std::shared_ptr<LocalSnapshots> snapshots)
    : _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.snapshots")),
      _work(std::make_shared<Work>(path, std::move(folders), std::move(snapshots)))
{
    const auto look = [work = std::weak_ptr(_work)] {
        if (const auto ours = work.lock(); ours && ours->timer)
            ours->look();
    };
    _work->timer = ClockTimer::create(ClockTimer::Clock::SinceEpoch, _queue, look);
    _work->clock = platform::ClockWatch::create(_queue, [look](platform::ClockEvent event) {
        if (event == platform::ClockEvent::Set)
            look();
    });
    this->look();
}

SnapshotKeeper::~SnapshotKeeper()
{
    _queue->async([work = _work] {
        work->timer.reset();
        work->clock.reset();
    });
}

void SnapshotKeeper::setEnabled(bool isEnabled)
{
    _queue->async([work = _work, isEnabled] {
        work->isEnabled = isEnabled;
        if (work->timer)
            work->look();
    });
}

void SnapshotKeeper::look()
{
    _queue->async([work = _work] {
        if (work->timer)
            work->look();
    });
}

bool SnapshotKeeper::stop(std::chrono::milliseconds limit)
{
    auto done = std::make_shared<std::promise<void>>();
    _queue->async([work = _work, done] {
        work->timer.reset();
        work->clock.reset();
        done->set_value();
    });
    return done->get_future().wait_for(limit) == std::future_status::ready;
}

} // namespace helper
