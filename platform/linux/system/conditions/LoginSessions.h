#pragma once

#include "platform/linux/system/conditions/ConditionsBus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform {

struct LoginSession {
    std::string kind;     // "user", "greeter", ...
    std::string type;     // "x11", "wayland", "tty", ...
    std::string state;    // "active", "online", "closing"
    std::string terminal; // "tty1", "pts/0"; empty for none
    bool isLocal = false; // has a seat
    bool isIdle = false;

    bool isOfUser() const { return kind.starts_with("user") && state != "closing"; }
    bool isText() const { return type == "tty" && !terminal.empty(); }
};

// What the login manager knows of who uses the machine.
struct LoginState {
    bool isIdle = false;
    std::uint64_t idleSinceReal = 0;      // microseconds since 1970; 0: it does not know
    std::uint64_t idleSinceMonotonic = 0; // microseconds since boot without sleep
    std::string inhibited;                // what is blocked, such as "sleep:idle"
    bool isLidClosed = false;
    bool isDocked = false; // or has more than one display
    std::vector<LoginSession> sessions;
};

// Reads it all again after each change. The conditions' thread only.
class LoginSessions {
public:
    using Handler = std::function<void(const std::optional<LoginState>&)>; // nothing: there is no login manager

    explicit LoginSessions(Handler handler);
    void read() { _service.startReading(); }

private:
    void readManager();
    void readList();
    void readNextSession();
    void finish(bool isKnown);

    const Handler _handler;
    LoginState _state;
    struct Listed {
        std::string path; // of the object
        bool hasSeat = false;
    };
    static std::vector<Listed> sessionsOfList(sd_bus_message* answer);
    std::vector<Listed> _unread;
    BusService _service;
};

} // namespace platform
