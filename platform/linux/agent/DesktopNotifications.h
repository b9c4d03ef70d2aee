#pragma once

#include "platform/linux/system/bus/BusHandles.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace platform {

// The notifications of the user's desktop, over the session bus. For the thread of the bus's event loop.
class DesktopNotifications {
public:
    struct Content {
        std::string tag; // a later one with the same takes its place
        std::string title;
        std::string body;
        std::string action; // the title of the one that it has
    };
    struct Handlers {
        // Somebody chose the action. The token lets whatever it opens come to the front; it may be empty.
        std::function<void(const std::string& token)> chosen;
        // There is somebody who shows notifications, again or for the first time.
        std::function<void()> appeared;
    };

    // The bus must outlive it.
    DesktopNotifications(sd_bus* bus, Handlers handlers);
    ~DesktopNotifications();
    DesktopNotifications(const DesktopNotifications&) = delete;
    DesktopNotifications& operator=(const DesktopNotifications&) = delete;

    // Calls back with whether it is shown.
    void show(const Content& content, std::function<void(bool)> shown);

private:
    struct Showing;

    static int handleCapabilities(sd_bus_message* reply, void* showing, sd_bus_error* error);
    static int handleShown(sd_bus_message* reply, void* showing, sd_bus_error* error);
    static int handleAction(sd_bus_message* signal, void* notifications, sd_bus_error* error);
    static int handleToken(sd_bus_message* signal, void* notifications, sd_bus_error* error);
    static int handleClosed(sd_bus_message* signal, void* notifications, sd_bus_error* error);
    static int handleOwner(sd_bus_message* signal, void* notifications, sd_bus_error* error);

    BusSlot follow(const char* member, sd_bus_message_handler_t handle);
    bool sendNotification(Showing& showing, bool takesMarkup);
    void end(Showing& showing, std::uint32_t identifier);
    bool isOurs(std::uint32_t identifier) const;

    sd_bus* const _bus;
    const Handlers _handlers;
    const BusSlot _action;
    const BusSlot _token;
    const BusSlot _closed;
    BusSlot _owner;
    std::map<std::string, std::uint32_t> _identifiers;         // of what is on the screen, by tag
    std::map<std::uint32_t, std::string> _tokens;              // come before their actions
    std::map<const Showing*, std::unique_ptr<Showing>> _shows; // on their way
};

} // namespace platform
