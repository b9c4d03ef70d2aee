#include "platform/linux/ui/application/StartupNotification.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <QGuiApplication>
#include <QWidget>
#include <xcb/xcb.h>

namespace platform::ui {

namespace {

constexpr std::uint32_t fromUser = 2; // as a pager asks, rather than a program of its own accord

xcb_connection_t* displayConnection()
{
    const auto* const x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_screen_t& screenOf(xcb_connection_t* connection)
{
    return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name)
{
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const auto cookie = xcb_intern_atom(connection, false, length, name);
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void sendToRoot(xcb_connection_t* connection, const xcb_client_message_event_t& event, std::uint32_t mask)
{
    xcb_send_event(connection, false, screenOf(connection).root, mask, reinterpret_cast<const char*>(&event));
}

// The number of the virtual desktop that is in sight; nullopt where there is but one.
std::optional<std::uint32_t> currentDesktop(xcb_connection_t* connection)
{
    const auto cookie = xcb_get_property(connection, false, screenOf(connection).root,
                                         atom(connection, "_NET_CURRENT_DESKTOP"), XCB_ATOM_CARDINAL, 0, 1);
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection, cookie, nullptr), &std::free);
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

QByteArray quoted(QByteArray value)
{
    value.replace('\\', "\\\\").replace('"', "\\\"");
    return '"' + value + '"';
}

// The moment of the user's doing, which the identifier ends with.
std::uint32_t momentIn(const QByteArray& identifier)
{
    const auto at = identifier.lastIndexOf("_TIME");
    return at < 0 ? XCB_CURRENT_TIME : identifier.mid(at + 5).toUInt();
}

} // namespace

QByteArray startupIdentifier()
{
    return qgetenv("DESKTOP_STARTUP_ID");
}

void completeStartup(const QByteArray& identifier)
{
    auto* const connection = displayConnection();
    if (!connection || identifier.isEmpty())
        return;
    const auto& screen = screenOf(connection);
    const auto sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, screen.root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, 0, nullptr);
    const auto further = atom(connection, "_NET_STARTUP_INFO");
    const QByteArray message = "remove: ID=" + quoted(identifier);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = sender;
    event.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    // With the zero that ends it.
    for (qsizetype at = 0; at <= message.size(); at += qsizetype(sizeof event.data.data8)) {
        std::memset(event.data.data8, 0, sizeof event.data.data8);
        const auto part = std::min(message.size() - at, qsizetype(sizeof event.data.data8));
        std::memcpy(event.data.data8, message.constData() + at, static_cast<std::size_t>(part));
        sendToRoot(connection, event, XCB_EVENT_MASK_PROPERTY_CHANGE);
        event.type = further;
    }
    xcb_destroy_window(connection, sender);
    xcb_flush(connection);
}

void bringForward(const QWidget& window, const QByteArray& identifier)
{
    auto* const connection = displayConnection();
    if (!connection)
        return;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = static_cast<xcb_window_t>(window.winId());
    constexpr std::uint32_t toManager = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    // Some managers would only mark a window elsewhere as wanting attention.
    if (const auto desktop = currentDesktop(connection)) {
        event.type = atom(connection, "_NET_WM_DESKTOP");
        event.data.data32[0] = *desktop;
        event.data.data32[1] = fromUser;
        sendToRoot(connection, event, toManager);
    }
    event.type = atom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = fromUser;
    event.data.data32[1] = momentIn(identifier);
    sendToRoot(connection, event, toManager);
    xcb_flush(connection);
}

} // namespace platform::ui
