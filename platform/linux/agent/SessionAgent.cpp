#include "platform/linux/agent/SessionAgent.h"

#include "agent/NoticeText.h"
#include "diagnostics/log/ZRKLog.h"
#include "platform/linux/agent/NoticeFile.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/linux/system/queues/MainQueue.h"
#include "platform/Localization.h"
#include "platform/ProgramPath.h"
#include "platform/SignalMask.h"
#include "platform/UserDefaults.h"
#include "protocol/SessionAgent.h"

#include <csignal>
#include <cstdlib>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr const char* name = "com.zerkolin.brevane.agent";

bool isWanted()
{
    return userDefault(BRVNotifiesOfBackups).value_or(true).boolValue();
}

void save(const Dictionary& notices)
{
    if (!writeNotices(notices))
        ZRKLogMessage(LogLevelError, "What was told about backups could not be written down.");
}

BusHandle openSessionBus(sd_event* event)
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0)
        return nullptr;
    BusHandle bus(opened);
    sd_bus_set_exit_on_disconnect(opened, 1); // the session is over
    const bool isOurs = sd_bus_request_name(opened, name, 0) >= 0;
    return isOurs && sd_bus_attach_event(opened, event, SD_EVENT_PRIORITY_NORMAL) >= 0 ? std::move(bus) : nullptr;
}

// For the event loop alone, whatever the thread.
void takeTermination(sd_event* event)
{
    (void)blockSignals({SIGTERM, SIGINT, SIGHUP});
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sd_event_add_signal(event, nullptr, number, nullptr, nullptr); // ends the loop
}

} // namespace

std::unique_ptr<SessionAgent> SessionAgent::create()
{
    sd_event* made = nullptr;
    if (sd_event_new(&made) < 0)
        return nullptr;
    EventHandle event(made);
    takeTermination(made);
    auto bus = openSessionBus(made);
    return bus ? std::unique_ptr<SessionAgent>(new SessionAgent(std::move(event), std::move(bus))) : nullptr;
}

SessionAgent::SessionAgent(EventHandle event, BusHandle bus)
    : _program(programPath()),
      _folder(programFolder()),
      _event(std::move(event)),
      _bus(std::move(bus)),
      _notifications(_bus.get(), {[this](const auto& token) { showActivity(token); }, [this] { _watch->lookAgain(); }}),
      _watch(agent::BackupWatch::create(
          {[this](const auto& notice, auto shown) { show(notice, std::move(shown)); }, isWanted, readNotices, save}))
{
    sd_event_source* source = nullptr;
    sd_event_add_io(_event.get(), &source, mainQueueDescriptor(), EPOLLIN, handleMainQueue, this);
    _mainQueue.reset(source);
}

SessionAgent::~SessionAgent() = default;

int SessionAgent::handleMainQueue(sd_event_source*, int, std::uint32_t, void* agent)
{
    serveMainQueue();
    auto& self = *static_cast<SessionAgent*>(agent);
    self._hasEnded = self.isReplaced();
    if (self._hasEnded)
        sd_event_exit(self._event.get(), EXIT_SUCCESS);
    return 0;
}

// After an update another file is in its place, after the uninstallation none.
bool SessionAgent::isReplaced() const
{
    struct stat ours{};
    struct stat present{};
    return ::stat("/proc/self/exe", &ours) == 0
        && (::stat(_program.c_str(), &present) != 0 || ours.st_ino != present.st_ino || ours.st_dev != present.st_dev);
}

std::string SessionAgent::nextVersion() const
{
    return _hasEnded && ::access(_program.c_str(), X_OK) == 0 ? _program : std::string();
}

int SessionAgent::run()
{
    return sd_event_loop(_event.get()) < 0 ? EX_OSERR : EXIT_SUCCESS;
}

void SessionAgent::show(const agent::Notice& notice, std::function<void(bool)> shown)
{
    const auto text = agent::NoticeText::of(notice);
    _notifications.show(
        {std::to_string(static_cast<int>(notice.cause)), text.title, text.body, localizedString("Show Activity")},
        [title = text.title, shown = std::move(shown)](bool isShown) {
            if (isShown)
                ZRKLogMessage(LogLevelDefault, "Told the user: %@", {title});
            shown(isShown);
        });
}

void SessionAgent::showActivity(const std::string& token) const
{
    if (!token.empty())
        ::setenv("XDG_ACTIVATION_TOKEN", token.c_str(), 1);
    if (!launch({_folder + "/brevane", BRVShowArgument, BRVShowActivity}))
        ZRKLogMessage(LogLevelError, "The application could not be started.");
    ::unsetenv("XDG_ACTIVATION_TOKEN");
}

} // namespace platform
