#pragma once

#include "platform/BackupRunner.h"
#include "platform/linux/system/backups/BackupRecord.h"
#include "platform/Queue.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

// Backups below a root of the test's own, by processes.
class RunnerFixture {
public:
    using Command = std::vector<std::string>;

    static platform::BackupJob job(const std::string& identifier, std::vector<Command> commands)
    {
        return {.identifier = identifier, .commands = std::move(commands), .environment = {}, .overdueAfter = {}};
    }
    static Command shell(const std::string& line) { return {"/bin/sh", "-c", line}; }

    std::unique_ptr<platform::BackupRunner> makeRunner()
    {
        return platform::BackupRunner::create(queue, [this](const platform::BackupEvent& event) {
            const std::lock_guard lock(_mutex);
            _events.push_back(event);
            _changed.notify_all();
        });
    }

    // The event of that number, from 0; nothing when it does not come.
    std::optional<platform::BackupEvent> event(std::size_t number,
                                               std::chrono::seconds limit = std::chrono::seconds(20))
    {
        std::unique_lock lock(_mutex);
        _changed.wait_for(lock, limit, [&] { return _events.size() > number; });
        return _events.size() > number ? std::optional(_events[number]) : std::nullopt;
    }
    std::size_t countOfEvents()
    {
        const std::lock_guard lock(_mutex);
        return _events.size();
    }

    static platform::BackupEvent ended(const std::string& identifier, std::optional<int> status)
    {
        return {.kind = platform::BackupEvent::Kind::Ended, .identifier = identifier, .status = status};
    }

    std::string log() const { return contentOfFile(root.file("var/log/system.jsonl")); }

    // The process that runs the backup, once it does.
    static pid_t backupProcess(const std::string& identifier)
    {
        for (int attempt = 0; attempt < 500; ++attempt) {
            const auto record = platform::readBackupRecord();
            if (record && record->identifier == identifier)
                return record->process;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return 0;
    }

    TemporaryDirectory root;
    EnvironmentVariable rootVariable{"BREVANE_ROOT", root.path()};
    EnvironmentVariable daemonVariable{"BREVANE_BACKUP_PROGRAM", BREVANE_BACKUP_DAEMON};
    std::shared_ptr<platform::Queue> queue = platform::Queue::createSerial("test");

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<platform::BackupEvent> _events;
};
