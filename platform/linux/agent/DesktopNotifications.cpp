#include "platform/linux/agent/DesktopNotifications.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace platform {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* notificationsObject = "/org/freedesktop/Notifications";
constexpr const char* application = "com.zerkolin.brevane.application"; // its desktop file and its icon
constexpr const char* actionName = "show";
constexpr const char* defaultAction = "default";  // of a click on the notification itself
constexpr std::uint64_t answerLimit = 30'000'000; // microseconds; a desktop that just starts takes some
constexpr std::uint8_t normalUrgency = 1;
constexpr int usualTime = -1;

std::string escaped(std::string_view text)
{
    std::string markup;
    for (const char each : text) {
        if (each == '&')
            markup += "&amp;";
        else if (each == '<')
            markup += "&lt;";
        else if (each == '>')
            markup += "&gt;";
        else
            markup += each;
    }
    return markup;
}

bool hasCapability(sd_bus_message* capabilities, std::string_view wanted)
{
    bool found = false;
    if (sd_bus_message_enter_container(capabilities, 'a', "s") > 0) {
        for (const char* name = nullptr; sd_bus_message_read(capabilities, "s", &name) > 0;)
            found = found || name == wanted;
    }
    return found;
}

bool isFailure(sd_bus_message* reply)
{
    return sd_bus_message_is_method_error(reply, nullptr) > 0;
}

} // namespace

struct DesktopNotifications::Showing {
    DesktopNotifications& owner;
    const Content content;
    const std::function<void(bool)> shown;
    BusSlot call;
};

DesktopNotifications::DesktopNotifications(sd_bus* bus, Handlers handlers)
    : _bus(bus),
      _handlers(std::move(handlers)),
      _action(follow("ActionInvoked", handleAction)),
      _token(follow("ActivationToken", handleToken)),
      _closed(follow("NotificationClosed", handleClosed))
{
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus, &slot,
                           "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                           "arg0='org.freedesktop.Notifications'",
                           handleOwner, nullptr, this);
    _owner.reset(slot);
}

DesktopNotifications::~DesktopNotifications() = default;

BusSlot DesktopNotifications::follow(const char* member, sd_bus_message_handler_t handle)
{
    sd_bus_slot* slot = nullptr;
    sd_bus_match_signal_async(_bus, &slot, service, notificationsObject, service, member, handle, nullptr, this);
    return BusSlot(slot);
}

void DesktopNotifications::show(const Content& content, std::function<void(bool)> shown)
{
    auto showing = std::unique_ptr<Showing>(new Showing{*this, content, std::move(shown), nullptr});
    auto& ours = *showing;
    _shows[&ours] = std::move(showing);
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(_bus, &slot, service, notificationsObject, service, "GetCapabilities",
                                                handleCapabilities, &ours, nullptr);
    ours.call.reset(slot);
    if (result < 0)
        end(ours, 0);
}

int DesktopNotifications::handleCapabilities(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& showing = *static_cast<Showing*>(data);
    if (isFailure(reply) || !showing.owner.sendNotification(showing, hasCapability(reply, "body-markup")))
        showing.owner.end(showing, 0);
    return 0;
}

bool DesktopNotifications::sendNotification(Showing& showing, bool takesMarkup)
{
    const auto& content = showing.content;
    const auto body = takesMarkup ? escaped(content.body) : content.body;
    const auto former = _identifiers.find(content.tag);
    const auto replaced = former == _identifiers.end() ? 0U : former->second;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_call(_bus, &made, service, notificationsObject, service, "Notify");
    const BusMessage message(made);
    result = result < 0
        ? result
        : sd_bus_message_append(made, "susssas", "Brevane", replaced, application, content.title.c_str(), body.c_str(),
                                4, defaultAction, content.action.c_str(), actionName, content.action.c_str());
    result = result < 0 ? result
                        : sd_bus_message_append(made, "a{sv}i", 2, "desktop-entry", "s", application, "urgency", "y",
                                                normalUrgency, usualTime);
    sd_bus_slot* slot = nullptr;
    result = result < 0 ? result : sd_bus_call_async(_bus, &slot, made, handleShown, &showing, answerLimit);
    showing.call.reset(slot);
    return result >= 0;
}

int DesktopNotifications::handleShown(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& showing = *static_cast<Showing*>(data);
    std::uint32_t identifier = 0;
    if (!isFailure(reply))
        (void)sd_bus_message_read(reply, "u", &identifier);
    showing.owner.end(showing, identifier);
    return 0;
}

// 0: it is not shown.
void DesktopNotifications::end(Showing& showing, std::uint32_t identifier)
{
    const auto ended = _shows.extract(&showing);
    if (identifier != 0)
        _identifiers[showing.content.tag] = identifier;
    showing.shown(identifier != 0);
}

bool DesktopNotifications::isOurs(std::uint32_t identifier) const
{
    return std::ranges::any_of(_identifiers, [&](const auto& each) { return each.second == identifier; });
}

int DesktopNotifications::handleAction(sd_bus_message* signal, void* data, sd_bus_error*)
{
    auto& self = *static_cast<DesktopNotifications*>(data);
    std::uint32_t identifier = 0;
    const char* action = nullptr;
    if (sd_bus_message_read(signal, "us", &identifier, &action) <= 0 || !self.isOurs(identifier))
        return 0;
    const auto token = self._tokens.extract(identifier);
    if (std::string_view(action) == actionName || std::string_view(action) == defaultAction)
        self._handlers.chosen(token ? token.mapped() : std::string());
    return 0;
}

int DesktopNotifications::handleToken(sd_bus_message* signal, void* data, sd_bus_error*)
{
    auto& self = *static_cast<DesktopNotifications*>(data);
    std::uint32_t identifier = 0;
    const char* token = nullptr;
    if (sd_bus_message_read(signal, "us", &identifier, &token) > 0 && self.isOurs(identifier))
        self._tokens[identifier] = token;
    return 0;
}

int DesktopNotifications::handleClosed(sd_bus_message* signal, void* data, sd_bus_error*)
{
    auto& self = *static_cast<DesktopNotifications*>(data);
    std::uint32_t identifier = 0;
    std::uint32_t reason = 0;
    if (sd_bus_message_read(signal, "uu", &identifier, &reason) > 0) {
        std::erase_if(self._identifiers, [&](const auto& each) { return each.second == identifier; });
        self._tokens.erase(identifier);
    }
    return 0;
}

int DesktopNotifications::handleOwner(sd_bus_message* signal, void* data, sd_bus_error*)
{
    auto& self = *static_cast<DesktopNotifications*>(data);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) <= 0)
        return 0;
    // Identifiers are worth nothing to the next one.
    self._identifiers.clear();
    self._tokens.clear();
    if (*after != '\0')
        self._handlers.appeared();
    return 0;
}

} // namespace platform
