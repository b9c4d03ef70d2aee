#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace platform {
class Queue;
}

namespace helper {

// Backups that hold the backup facility's lock. Nothing tells when one begins, so that is looked at whenever it
// matters; its end is waited for.
class OtherBackups {
public:
    // The handler runs on the serial queue when a backup that look() found has ended. For that queue alone.
    OtherBackups(std::shared_ptr<platform::Queue> queue, std::function<void()> ended);
    ~OtherBackups();
    OtherBackups(const OtherBackups&) = delete;
    OtherBackups& operator=(const OtherBackups&) = delete;

    bool look();

private:
    struct State {
        std::shared_ptr<platform::Queue> queue;
        std::function<void()> ended;
        bool isWaiting = false;
        bool isStopped = false;
    };
    std::shared_ptr<State> _state;
};

} // namespace helper
