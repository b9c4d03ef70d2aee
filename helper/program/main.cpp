#include "diagnostics/log/ZRKLog.h"
#include "helper/DefaultRights.h"
#include "helper/HelperOptions.h"
#include "helper/HelperParts.h"
#include "helper/PasswordRule.h"
#include "helper/program/SystemProcess.h"
#include "helper/SchedulerHelper.h"
#include "helper/simulation/SimulationCommand.h"
#include "messaging/ZRKError.h"
#include "platform/Folder.h"
#include "platform/Root.h"
#include "platform/ServiceListener.h"
#include "platform/SignalMask.h"
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

int fail(std::string_view text)
{
    ZRKLogMessage(LogLevelError, "%@", {text});
    std::fprintf(stderr, "com.zerkolin.brevane.scheduler: %.*s\n", static_cast<int>(text.size()), text.data());
    return EX_UNAVAILABLE;
}

int serve(const HelperOptions& options, char** arguments)
{
    // The listener first: whoever has the name is the only one that touches the files.
    std::shared_ptr<SchedulerHelper> helper;
    auto listener = platform::ServiceListener::create(
        BRVSchedulerServiceName,
        {[&helper](auto request, auto reply) { helper->handle(std::move(request), std::move(reply)); },
         [&helper](const auto& peer) { helper->identify(peer); },
         [&helper](const auto& sender) { helper->forget(sender); }},
        RequestReader::form());
    if (!listener)
        return fail(listener.error());
    (*listener)->stopOnTermination();

    if (auto folder = platform::systemPath("/Library/Preferences"); !platform::createFolder(folder))
        ZRKLogMessage(LogLevelError, "Could not create the folder '%@'.", {folder});
    const auto parts = HelperParts::ofSystem(options);
    installDefaultRights();
    if (auto agreed = PasswordRule(parts.rules).takeStricter(); !agreed)
        ZRKError::log(agreed.error());
    std::atomic<bool> isReplaced = false;
    std::atomic<bool> isRemoved = false;
    helper = SchedulerHelper::create(options, parts, **listener, [&](Maintenance::End how) {
        isReplaced = how == Maintenance::End::Restart;
        isRemoved = how == Maintenance::End::Stop;
        (*listener)->stop();
    });
    ZRKLogMessage(LogLevelInfo, "Running version %@.", {platform::bundleVersion()});

    bool stopped = (*listener)->run();
    bool drained = helper->drain(drainLimit);
    (*listener)->flush();
    int status = stopped ? EXIT_SUCCESS : fail(lossOfService);
    if (isReplaced && !(*listener)->wasTerminated()) {
        listener->reset(); // the name is free for the next version
        status = startNextVersion(arguments);
    }
    ZRKLogMessage(LogLevelInfo, "Stopped.");
    if (isRemoved)
        leaveService();
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
    if (auto status = runSimulationCommand(count, arguments))
        return *status;
    if (auto status = runSystemCommand(count, arguments))
        return *status;
    ::umask(022);
    (void)platform::blockSignals({SIGTERM, SIGINT}); // be it for the next version's loop
    auto options = HelperOptions::inArguments(count, arguments);
    if (!options) {
        const bool isUnderstood = !options.error().empty();
        std::fprintf(stderr, "%s\n", isUnderstood ? options.error().c_str() : HelperOptions::usage);
        return isUnderstood ? EX_CONFIG : EX_USAGE;
    }
    prepareProcess();
    platform::setSystemRoot(options->root);
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    return serve(*options, arguments);
}
