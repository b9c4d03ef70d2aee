#include "helper/postupdate/PostUpdate.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/BRVHelperMessager.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace helper {

namespace {

constexpr std::chrono::minutes installLimit{70}; // more than a download may take
constexpr std::chrono::minutes trialLimit{2};    // more than a new version has until it must serve
constexpr std::chrono::milliseconds askAgain{50};
constexpr std::chrono::seconds lookAgain{1};

} // namespace

PostUpdate::PostUpdate(std::unique_ptr<ProductWatch> watch, std::chrono::milliseconds helperLimit)
    : _watch(std::move(watch)),
      _helperLimit(helperLimit),
      _oldVersion(_watch->installedVersion())
{
}

bool PostUpdate::isReplaced() const
{
    auto version = _watch->installedVersion();
    return version && version > _oldVersion;
}

PostUpdate::Outcome PostUpdate::run()
{
    if (!waitForNewVersion())
        return Outcome::NoNewVersion;
    ZRKLogMessage(LogLevelInfo, "The new version is in place.");
    if (!waitForHelper())
        ZRKLogMessage(LogLevelError, "The new scheduler helper does not answer.");
    _watch->endApplication();
    return _watch->startApplication() ? Outcome::Started : Outcome::NotStarted;
}

bool PostUpdate::waitForNewVersion()
{
    const auto end = Clock::now() + installLimit;
    while (!isReplaced()) {
        if (!_watch->waitForChange(end) || Clock::now() >= end)
            return isReplaced();
    }
    const auto trialEnd = Clock::now() + trialLimit;
    while (isReplaced() && _watch->isOnTrial() && Clock::now() < trialEnd)
        _watch->waitForChange(std::min(trialEnd, Clock::now() + lookAgain));
    return isReplaced();
}

// The application would say that there is none if it were started before.
bool PostUpdate::waitForHelper() const
{
    auto messager = BRVHelperMessager::create();
    for (const auto end = Clock::now() + _helperLimit; Clock::now() < end; std::this_thread::sleep_for(askAgain)) {
        if (messager->sendSynchronousMessage(BRVMessageGetAutoUpdates))
            return true;
    }
    return false;
}

} // namespace helper
