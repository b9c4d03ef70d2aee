#include "diagnostics/log/ZRKLog.h"
#include "helper/DefaultRights.h"
#include "helper/HelperOptions.h"
#include "helper/SchedulerHelper.h"
#include "helper/simulation/SimulationCommand.h"
#include "helper/snapshots/SnapshotCommand.h"
#include "platform/Folder.h"
#include "platform/linux/system/bus/ServiceListener.h"
#include "platform/linux/system/files/Root.h"
#include "platform/SystemInformation.h"
#include "protocol/Messages.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

using namespace helper;

namespace {

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

// The new version goes on as this process, with the same arguments. Returns when it cannot.
int startNextVersion(char** arguments)
{
    auto program = platform::systemPath("/Library/Brevane/com.zerkolin.brevane.scheduler");
    ZRKLogMessage(LogLevelInfo, "The new version takes over.");
    ::execv(program.c_str(), arguments);
    fail("The new version cannot be started.");
    return EX_TEMPFAIL;
}

int serve(const HelperOptions& options, char** arguments)
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
    std::atomic<bool> isReplaced = false;
    helper = SchedulerHelper::create(options, [&isReplaced, &listener](Maintenance::End how) {
        isReplaced = how == Maintenance::End::Restart;
        (*listener)->stop();
    });
    ZRKLogMessage(LogLevelInfo, "Running version %@.", {platform::bundleVersion()});

    bool stopped = (*listener)->run();
    bool drained = helper->drain(drainLimit);
    stoppable = nullptr;
    int status = stopped ? EXIT_SUCCESS : fail("The system bus is gone, or another program has taken the name.");
    if (isReplaced) {
        listener->reset(); // the name is free for the next version
        status = startNextVersion(arguments);
    }
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
        std::fputs(HelperOptions::usage, stdout);
        return EXIT_SUCCESS;
    }
    if (auto status = runSnapshotCommand(count, arguments))
        return *status;
    if (auto status = runSimulationCommand(count, arguments))
        return *status;
    auto options = HelperOptions::inArguments(count, arguments);
    if (!options) {
        const bool isUnderstood = !options.error().empty();
        std::fprintf(stderr, "%s\n", isUnderstood ? options.error().c_str() : HelperOptions::usage);
        return isUnderstood ? EX_CONFIG : EX_USAGE;
    }
    ::umask(022);
    platform::setSystemRoot(options->root);
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    return serve(*options, arguments);
}
