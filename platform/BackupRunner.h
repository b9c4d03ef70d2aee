#pragma once

#include "platform/Error.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

class Queue;

struct BackupJob {
    std::string identifier; // another one for each start: letters, digits and "-"
    // Each an absolute path and its arguments. The next one runs when the one before has ended with 0.
    std::vector<std::vector<std::string>> commands;
    std::vector<std::string> environment;             // "NAME=value", besides a plain one
    std::optional<std::chrono::seconds> overdueAfter; // more than it can be expected to take
    // Mount points, each of a disk whose contents are not to be trusted: the commands can change nothing but what is on
    // them and what they keep for themselves, and follow no link there. None: the commands are not confined.
    std::vector<std::string> confinedTo = {};
    // On the clock since boot: later it does not begin any more, since whoever started it has given it up by then. Set
    // by start().
    std::optional<std::chrono::nanoseconds> beginBefore = {};

    bool operator==(const BackupJob&) const = default;
};

struct BackupEvent {
    enum class Kind {
        Ended,
        Overdue, // it goes on: nobody ends it but itself
    };
    Kind kind = Kind::Ended;
    std::string identifier;
    // Of the last command that ran: its exit status, or the negative number of the signal that ended it. 126 and 127:
    // it cannot be run, or is not there. nullopt when the backup vanished, or never began.
    std::optional<int> status;
    // Why it failed, in words with a full stop, where more than the status is known.
    std::string reason = {};

    bool operator==(const BackupEvent&) const = default;
};

// Runs backup programs, one at a time, behind other work. A backup outlives this process: whoever comes next finds it.
// What it prints goes to the log of the system's backups, shortened when it is long. While it runs it holds the lock on
// "/var/run/backupd.lock".
class BackupRunner {
public:
    using Handler = std::function<void(const BackupEvent&)>;

    // Events are told on the serial queue, each once in the life of a runner: also the end of a backup that was found
    // running.
    static std::unique_ptr<BackupRunner> create(std::shared_ptr<Queue> queue, Handler handler);
    virtual ~BackupRunner() = default;

    // A backup that has not begun so long after its start never will.
    static constexpr std::chrono::seconds BeginLimit{20};

    // Success as soon as it is under way. EBUSY while one runs.
    virtual Result<void> start(const BackupJob& job) = 0;
    // The one that runs now, whichever process has started it.
    virtual std::optional<std::string> running() const = 0;
    // How the last one ended, if it was run to its end; also while nobody watched.
    virtual std::optional<BackupEvent> lastEnd() const = 0;
};

} // namespace platform
