#include "diagnostics/log/ZRKLog.h"
#include "helper/DefaultRights.h"
#include "helper/SchedulerHelper.h"
#include "messaging/BRVHelperMessager.h"
#include "platform/Folder.h"
#include "platform/linux/system/Root.h"
#include "platform/linux/system/ServiceListener.h"
#include "platform/SystemInformation.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

namespace {

constexpr const char* usage = "usage: com.zerkolin.brevane.scheduler [--root PATH]\n"
                              "Stores the backup schedule and serves it on the system bus.\n"
                              "  --root PATH   the folder below which the product's files stand (/opt/brevane)\n";

// How long requests that arrived before the end may take.
constexpr std::chrono::seconds drainLimit{2};

std::atomic<platform::ServiceListener*> stoppable = nullptr;

void stopOnSignal(int)
{
    if (auto* listener = stoppable.load())
        listener->stop();
}

void stopOnTermination(platform::ServiceListener& listener)
{
    stoppable = &listener;
    struct sigaction action{};
    action.sa_handler = stopOnSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

int fail(std::string_view text)
{
    ZRKLogMessage(LogLevelError, "%@", {text});
    std::fprintf(stderr, "com.zerkolin.brevane.scheduler: %.*s\n", static_cast<int>(text.size()), text.data());
    return EX_UNAVAILABLE;
}

std::optional<const char*> rootOfArguments(int count, char** arguments)
{
    if (count == 1)
        return platform::InstalledRoot;
    if (count == 3 && std::string_view(arguments[1]) == "--root" && *arguments[2])
        return arguments[2];
    return std::nullopt;
}

int serve()
{
    // The listener first: whoever has the name is the only one that touches the files.
    std::shared_ptr<SchedulerHelper> helper;
    auto listener = platform::ServiceListener::create(BRVSchedulerServiceName, [&helper](auto request, auto reply) {
        helper->handle(std::move(request.message), std::move(request.sender), std::move(reply));
    });
    if (!listener)
        return fail(listener.error());
    stopOnTermination(**listener);

    if (auto folder = platform::systemPath("/Library/Preferences"); !platform::createFolder(folder))
        ZRKLogMessage(LogLevelError, "Could not create the folder '%@'.", {folder});
    installDefaultRights();
    helper = SchedulerHelper::create();
    ZRKLogMessage(LogLevelInfo, "Running version %@.", {platform::bundleVersion()});

    bool stopped = (*listener)->run();
    bool drained = helper->drain(drainLimit);
    stoppable = nullptr;
    int status = stopped ? EXIT_SUCCESS : fail("The system bus is gone, or another program has taken the name.");
    ZRKLogMessage(LogLevelInfo, "Stopped.");
    // What is still at work, waiting for an authority that does not answer, must not keep the process.
    if (!drained)
        ::_exit(status);
    return status;
}

} // namespace

int main(int count, char** arguments)
{
    if (count == 2 && std::string_view(arguments[1]) == "--help") {
        std::fputs(usage, stdout);
        return EXIT_SUCCESS;
    }
    auto root = rootOfArguments(count, arguments);
    if (!root) {
        std::fputs(usage, stderr);
        return EX_USAGE;
    }
    ::umask(022);
    platform::setSystemRoot(*root);
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    return serve();
}
