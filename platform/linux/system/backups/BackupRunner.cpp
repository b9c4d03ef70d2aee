#include "platform/BackupRunner.h"

#include "platform/Clock.h"
#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/linux/system/backups/BackupLauncher.h"
#include "platform/linux/system/backups/BackupRecord.h"
#include "platform/linux/system/conditions/ConditionsThread.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" { // which this header forgets in older versions of the C library
#include <sys/pidfd.h>
}

namespace platform {

namespace {

// So long may a unit take to come to its first line, or to end without one.
constexpr std::chrono::seconds lineLimit{60};
static_assert(lineLimit > BackupRunner::BeginLimit);

// The same process, or none when it has ended.
FileDescriptor openProcess(pid_t number, std::uint64_t start)
{
    FileDescriptor process(::pidfd_open(number, 0));
    return process && startOfProcess(number) == start ? std::move(process) : FileDescriptor();
}

class LinuxBackupRunner final : public BackupRunner {
public:
    LinuxBackupRunner(std::shared_ptr<Queue> queue, Handler handler)
        : _telling(std::make_shared<Telling>(std::move(queue), std::move(handler)))
    {
        (void)createFolder(systemPath(BackupStateFolder));
        _overdue = ClockTimer::create(ClockTimer::Clock::SinceBoot, _telling->queue, [this] { tellOverdue(); });
        ConditionsThread::shared().sync([this] {
            watchRecord();
            if (const auto record = readBackupRecord(); record && !record->status)
                found(*record);
        });
    }

    ~LinuxBackupRunner() override
    {
        _telling->isStopped = true;
        ConditionsThread::shared().sync([this] {
            _folder.reset();
            endWatching();
        });
    }

    Result<void> start(const BackupJob& job) override
    {
        Result<void> result;
        ConditionsThread::shared().sync([&] { result = startHere(job); });
        return result;
    }

    std::optional<std::string> running() const override
    {
        const std::lock_guard lock(_mutex);
        return _running;
    }

    std::optional<BackupEvent> lastEnd() const override
    {
        const auto record = readBackupRecord();
        if (!record || !record->status)
            return std::nullopt;
        return BackupEvent{
            .kind = BackupEvent::Kind::Ended, .identifier = record->identifier, .status = record->status};
    }

private:
    struct Telling {
        Telling(std::shared_ptr<Queue> toldOn, Handler told) : queue(std::move(toldOn)), handler(std::move(told)) { }
        const std::shared_ptr<Queue> queue;
        const Handler handler;
        std::atomic<bool> isStopped = false;
    };

    void tell(const BackupEvent& event) const
    {
        _telling->queue->async([telling = _telling, event] {
            if (!telling->isStopped)
                telling->handler(event);
        });
    }

    void tellOverdue() const
    {
        if (const auto identifier = running())
            tell({.kind = BackupEvent::Kind::Overdue, .identifier = *identifier, .status = {}});
    }

    // From here on the conditions' thread.

    static std::unexpected<Error> failure(int code)
    {
        return std::unexpected(Error{POSIXErrorDomain, code, {}, nullptr});
    }

    Result<void> startHere(BackupJob job)
    {
        if (running())
            return failure(EBUSY);
        job.beginBefore = readClocks().sinceBoot + BeginLimit;
        (void)writeBackupJob(job); // a full disk is no reason to make no backup
        auto launched = launchBackup(job);
        if (!launched)
            return std::unexpected(launched.error());
        begin(job.identifier, job.overdueAfter);
        _told = std::move(launched->told);
        _words = ConditionsThread::shared().watchDescriptor(_told.get(), [this] { hear(); });
        if (launched->child) {
            _child = *launched->child;
            watchProcess(FileDescriptor(::pidfd_open(_child, 0)));
        } else {
            _limit = ConditionsThread::shared().runAfter(lineLimit, [this] { end(std::nullopt); });
        }
        return {};
    }

    void begin(const std::string& identifier, std::optional<std::chrono::nanoseconds> overdueAfter)
    {
        {
            const std::lock_guard lock(_mutex);
            _running = identifier;
        }
        if (overdueAfter)
            _overdue->set(readClocks().sinceBoot + *overdueAfter);
    }

    // One that another process has started.
    void found(const BackupRecord& record)
    {
        auto process = openProcess(record.process, record.processStart);
        if (!process)
            return;
        const auto job = readBackupJob();
        std::optional<std::chrono::nanoseconds> left;
        if (job && job->identifier == record.identifier && job->overdueAfter)
            left = *job->overdueAfter + std::chrono::seconds(record.began) - readClocks().sinceEpoch;
        begin(record.identifier, left);
        watchProcess(std::move(process));
    }

    void watchRecord()
    {
        _folder = ConditionsThread::shared().watchFile(
            systemPath(BackupStateFolder), IN_MOVED_TO, [this](const inotify_event& event) {
                if (event.len > 0 && std::string_view(event.name) == BackupRecordName)
                    recordChanged();
            });
    }

    void recordChanged()
    {
        const auto record = readBackupRecord();
        if (!record || record->status)
            return;
        // The process that has started it may have ended before this sign of life.
        if (!running())
            found(*record);
        if (running() != record->identifier || _process)
            return;
        // The unit has come to life.
        _limit.reset();
        if (auto process = openProcess(record->process, record->processStart))
            watchProcess(std::move(process));
        else
            processEnded();
    }

    // What the process says of itself.
    void hear()
    {
        if (!readTold())
            _words.reset(); // it has said all
        pid_t process = 0;
        std::uint64_t start = 0;
        if (!_process && std::sscanf(_text.c_str(), "began %d %" SCNu64, &process, &start) == 2) {
            _limit.reset();
            if (auto found = openProcess(process, start))
                watchProcess(std::move(found));
            else
                processEnded();
        }
    }

    // False at the end.
    bool readTold()
    {
        std::array<char, 256> bytes;
        ssize_t count = 0;
        while (_told && (count = ::read(_told.get(), bytes.data(), bytes.size())) > 0)
            _text.append(bytes.data(), static_cast<std::size_t>(count));
        return count < 0 && errno == EAGAIN;
    }

    std::optional<int> toldStatus()
    {
        readTold();
        int status = 0;
        const auto line = _text.find("ended ");
        const bool isTold = line != std::string::npos && _text.ends_with('\n')
            && std::sscanf(_text.c_str() + line, "ended %d", &status) == 1;
        return isTold ? std::optional(status) : std::nullopt;
    }

    void watchProcess(FileDescriptor process)
    {
        _process = std::move(process);
        _exit = ConditionsThread::shared().watchDescriptor(_process.get(), [this] { processEnded(); });
    }

    void processEnded()
    {
        std::optional<int> status;
        if (_child > 0) {
            siginfo_t information{};
            if (::waitid(P_PID, static_cast<id_t>(_child), &information, WEXITED | WNOHANG) == 0
                && information.si_code == CLD_EXITED && information.si_status != 0)
                status = information.si_status;
        }
        // The record and the process's word are exact. Without both the status of the process is left.
        if (const auto told = toldStatus())
            status = told;
        const auto record = readBackupRecord();
        if (record && running() == record->identifier && record->status)
            status = record->status;
        end(status);
    }

    void end(std::optional<int> status)
    {
        const auto identifier = running();
        endWatching();
        if (identifier)
            tell({.kind = BackupEvent::Kind::Ended, .identifier = *identifier, .status = status});
    }

    void endWatching()
    {
        _limit.reset();
        _exit.reset();
        _process.reset();
        _words.reset();
        _told.reset();
        _text.clear();
        _child = 0;
        _overdue->set(std::nullopt);
        const std::lock_guard lock(_mutex);
        _running.reset();
    }

    std::shared_ptr<Telling> _telling;
    mutable std::mutex _mutex; // of:
    std::optional<std::string> _running;
    std::unique_ptr<ClockTimer> _overdue;
    EventSource _folder;
    EventSource _limit;
    FileDescriptor _process;
    EventSource _exit;
    FileDescriptor _told;
    EventSource _words;
    std::string _text; // as far as it was told
    pid_t _child = 0;  // 0: another process's
};

} // namespace

std::unique_ptr<BackupRunner> BackupRunner::create(std::shared_ptr<Queue> queue, Handler handler)
{
    return std::make_unique<LinuxBackupRunner>(std::move(queue), std::move(handler));
}

} // namespace platform
