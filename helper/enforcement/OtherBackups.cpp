#include "helper/enforcement/OtherBackups.h"

#include "helper/BackupActivity.h"
#include "platform/Queue.h"

#include <system_error>
#include <thread>
#include <utility>

namespace helper {

OtherBackups::OtherBackups(std::shared_ptr<platform::Queue> queue, std::function<void()> ended)
    : _state(std::make_shared<State>(std::move(queue), std::move(ended)))
{
}

OtherBackups::~OtherBackups()
{
    _state->isStopped = true;
}

bool OtherBackups::look()
{
    if (!isBackupRunning())
        return false;
    if (_state->isWaiting)
        return true;
    // A thread of its own: it waits for as long as somebody else's backup takes.
    const auto wait = [state = _state] {
        waitForBackup();
        state->queue->async([state] {
            state->isWaiting = false;
            if (!state->isStopped)
                state->ended();
        });
    };
    try {
        std::thread(wait).detach();
        _state->isWaiting = true;
    } catch (const std::system_error&) {
        return true; // seen again at the next look
    }
    return true;
}

} // namespace helper
