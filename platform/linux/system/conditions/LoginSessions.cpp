#include "platform/linux/system/conditions/LoginSessions.h"

#include "platform/linux/system/conditions/LoginService.h"

#include <utility>

namespace platform {

namespace {

constexpr const char* Properties = "org.freedesktop.DBus.Properties";

} // namespace

std::vector<LoginSessions::Listed> LoginSessions::sessionsOfList(sd_bus_message* answer)
{
    std::vector<Listed> sessions;
    if (sd_bus_message_enter_container(answer, 'a', "(susso)") < 0)
        return sessions;
    const char* seat = nullptr;
    const char* path = nullptr;
    while (sd_bus_message_read(answer, "(susso)", nullptr, nullptr, nullptr, &seat, &path) > 0)
        sessions.push_back({path, *seat != '\0'});
    return sessions;
}

LoginSessions::LoginSessions(Handler handler)
    : _handler(std::move(handler)),
      _service(LoginService::Name,
               {propertiesChanged(LoginService::Object),
                "path='/org/freedesktop/login1',interface='org.freedesktop.login1.Manager',member='SessionNew'",
                "path='/org/freedesktop/login1',interface='org.freedesktop.login1.Manager',member='SessionRemoved'",
                "path_namespace='/org/freedesktop/login1/session',interface='org.freedesktop.DBus.Properties',"
                "member='PropertiesChanged'"},
               [this] { readManager(); })
{
    _service.follow();
}

void LoginSessions::readManager()
{
    _state = {};
    _service.call(LoginService::Object, Properties, "GetAll", {LoginService::Manager}, [this](sd_bus_message* answer) {
        if (!answer) {
            finish(false);
            return;
        }
        readProperties(answer,
                       {{"IdleHint", &_state.isIdle},
                        {"IdleSinceHint", &_state.idleSinceReal},
                        {"IdleSinceHintMonotonic", &_state.idleSinceMonotonic},
                        {"BlockInhibited", &_state.inhibited},
                        {"LidClosed", &_state.isLidClosed},
                        {"Docked", &_state.isDocked}});
        readList();
    });
}

void LoginSessions::readList()
{
    _service.call(LoginService::Object, LoginService::Manager, "ListSessions", {}, [this](sd_bus_message* answer) {
        if (!answer) {
            finish(false);
            return;
        }
        _unread = sessionsOfList(answer);
        readNextSession();
    });
}

void LoginSessions::readNextSession()
{
    if (_unread.empty()) {
        finish(true);
        return;
    }
    const auto next = std::move(_unread.back());
    _unread.pop_back();
    _service.call(next.path.c_str(), Properties, "GetAll", {LoginService::Session},
                  [this, next](sd_bus_message* answer) {
                      // It may have ended meanwhile.
                      if (answer) {
                          LoginSession session;
                          bool isRemote = false;
                          readProperties(answer,
                                         {{"Class", &session.kind},
                                          {"Type", &session.type},
                                          {"State", &session.state},
                                          {"TTY", &session.terminal},
                                          {"IdleHint", &session.isIdle},
                                          {"Remote", &isRemote}});
                          session.isLocal = next.hasSeat && !isRemote;
                          _state.sessions.push_back(std::move(session));
                      }
                      readNextSession();
                  });
}

void LoginSessions::finish(bool isKnown)
{
    _handler(isKnown ? std::optional(std::exchange(_state, {})) : std::nullopt);
    _service.finishReading();
}

} // namespace platform
