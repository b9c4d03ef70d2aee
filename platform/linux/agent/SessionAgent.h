#pragma once

#include "agent/BackupWatch.h"
#include "platform/linux/agent/DesktopNotifications.h"
#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/queues/EventHandles.h"

#include <memory>
#include <optional>
#include <string>

namespace platform {

// The agent of a user's session: from its start to the end of the session.
class SessionAgent {
public:
    // Null when there is no session bus, or an agent serves it already.
    static std::unique_ptr<SessionAgent> create();
    ~SessionAgent();

    // Until the session is over, or this version of the program. The exit status.
    int run();
    // What stands now in the place of this program, when that has ended it; otherwise empty.
    std::string nextVersion() const;

private:
    SessionAgent(EventHandle event, BusHandle bus);
    void show(const agent::Notice& notice, std::function<void(bool)> shown);
    void showActivity(const std::string& token) const;
    static int handleMainQueue(sd_event_source* source, int descriptor, std::uint32_t events, void* agent);

    bool isReplaced() const;

    const std::string _program; // its path, which may get another file
    const std::string _folder;
    const EventHandle _event;
    const BusHandle _bus;
    EventSource _mainQueue;
    DesktopNotifications _notifications;
    std::shared_ptr<agent::BackupWatch> _watch;
    bool _hasEnded = false; // with its version
};

} // namespace platform
