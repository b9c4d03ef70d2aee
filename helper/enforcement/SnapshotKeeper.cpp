#include "helper/enforcement/SnapshotKeeper.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/snapshots/LocalSnapshot.h"
#include "helper/linux/snapshots/SnapshotUnit.h"
#include "messaging/ZRKError.h"
#include "platform/Folder.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"
#include "platform/Queue.h"

#include <algorithm>
#include <future>
#include <utility>

namespace helper {

using platform::ClockTimer;
using platform::Dictionary;

namespace {

bool isAcceptable(const Dictionary& content)
{
    const auto* const list = content.arrayForKey("Snapshots");
    return list && std::ranges::all_of(*list, [](const auto& each) {
               return each.dictionary() && MadeSnapshot::inDictionary(*each.dictionary());
           });
}

} // namespace

// On the queue.
struct SnapshotKeeper::Work {
    Work(const std::string& path, std::function<std::vector<std::string>()> protectedFolders)
        : file(path, isAcceptable),
          folders(std::move(protectedFolders))
    {
        (void)platform::createFolder(path.substr(0, path.rfind('/')));
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
        const auto plan = SnapshotPlan::at(now, isEnabled ? volumes() : std::vector<std::string>(), made, tried);
        for (const auto& volume : plan.make)
            make(volume, now);
        for (const auto& snapshot : plan.remove)
            remove(snapshot);
        if (!plan.make.empty() || !plan.remove.empty())
            save();
        timer->set(plan.next ? std::optional(std::chrono::seconds(*plan.next)) : std::nullopt);
    }

    // Those with the folders on them; each once.
    std::vector<std::string> volumes() const
    {
        std::vector<std::string> found;
        for (const auto& folder : folders()) {
            const auto volume = platform::btrfsVolumeOf(folder);
            if (volume && std::ranges::find(found, *volume) == found.end())
                found.push_back(*volume);
        }
        return found;
    }

    void make(const std::string& volume, scheduling::Instant now)
    {
        std::erase_if(tried, [&](const auto& attempt) { return attempt.volume == volume; });
        tried.push_back({volume, now});
        const auto path = makeSnapshotApart(volume);
        const auto identifier = path ? platform::identifierOfBtrfsSnapshot(*path) : std::nullopt;
        if (!path) {
            ZRKLogMessage(LogLevelError, "No local snapshot of '%@' was made: %@.", {volume, path.error()});
            return;
        }
        ZRKLogMessage(LogLevelDefault, "Made the local snapshot '%@'.", {*path});
        if (identifier)
            made.push_back({volume, *path, *identifier, now});
    }

    // One that is not there any more is forgotten, and so is one in whose place something else is.
    void remove(const MadeSnapshot& snapshot)
    {
        const bool isOurs = platform::identifierOfBtrfsSnapshot(snapshot.path) == snapshot.identifier;
        if (isOurs) {
            if (const auto removed = removeSnapshotApart(snapshot.path); !removed) {
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
    std::vector<MadeSnapshot> made;
    std::vector<SnapshotPlan::Attempt> tried;
    std::unique_ptr<ClockTimer> timer;
    std::unique_ptr<platform::ClockWatch> clock;
    bool isEnabled = false;
};

SnapshotKeeper::SnapshotKeeper(std::string path, std::function<std::vector<std::string>()> folders)
    : _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.snapshots")),
      _work(std::make_shared<Work>(path, std::move(folders)))
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
