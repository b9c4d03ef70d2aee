#pragma once

#include "agent/BackupStatus.h"
#include "agent/Notice.h"
#include "agent/NoticeMemory.h"
#include "agent/StatusFollower.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace agent {

// Tells the user of trouble with backups, for the time of a session. Main thread.
class BackupWatch : public std::enable_shared_from_this<BackupWatch> {
public:
    struct Parts {
        // Shows the notice, and later calls back with whether somebody can see it.
        std::function<void(const Notice& notice, std::function<void(bool)> shown)> show;
        std::function<bool()> isWanted; // by the user
        // What is remembered of earlier sessions, and may have changed since: a user can have several at a time.
        std::function<platform::Dictionary()> load;
        std::function<void(const platform::Dictionary&)> save;
    };

    static std::shared_ptr<BackupWatch> create(Parts parts);

    // Notices can be shown again.
    void lookAgain() { _follower->askSoon(); }

private:
    explicit BackupWatch(Parts parts) : _parts(std::move(parts)) { }
    void begin();
    void look(const BackupStatus& status);
    void show(const Notice& notice, scheduling::Instant now);
    NoticeMemory remembered() const;
    void remember(const NoticeMemory& memory) const;

    const Parts _parts;
    std::shared_ptr<StatusFollower> _follower;
    std::vector<Cause> _showing;
};

} // namespace agent
