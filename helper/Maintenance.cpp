#include "helper/Maintenance.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/ZRKError.h"
#include "platform/RunningBackup.h"
#include "protocol/ErrorCodes.h"

#include <chrono>
#include <utility>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;
using platform::Result;

namespace {

// A version that serves has proved itself long before.
constexpr std::chrono::seconds trialLimit{2};

// Whoever asked is answered with it and logged by whoever answers.
platform::Error error(BRVErrorCode code)
{
    return {BRVErrorDomain, code, {}, nullptr};
}

SharedCheck::Check checkOf(const std::shared_ptr<const ProductInstallation>& installation)
{
    return [installation](const std::function<bool()>& isGivenUp) { return installation->check(isGivenUp); };
}

} // namespace

std::shared_ptr<Maintenance> Maintenance::create(const HelperOptions& options, const HelperParts& parts,
                                                 std::shared_ptr<Peers> peers, EndHandler endHandler)
{
    return std::shared_ptr<Maintenance>(new Maintenance(options, parts, std::move(peers), std::move(endHandler)));
}

Maintenance::Maintenance(const HelperOptions& options, const HelperParts& parts, std::shared_ptr<Peers> peers,
                         EndHandler endHandler)
    : _installation(parts.installation),
      _check(SharedCheck::create(checkOf(_installation), options.updates.keeping)),
      _passwordRule(parts.rules),
      _endHandler(std::move(endHandler)),
      _peers(std::move(peers)),
      _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.maintenance"))
{
    _installation->recover();
}

std::function<bool()> Maintenance::isEnding() const
{
    return [isEnding = _isEnding] { return isEnding->load(); };
}

// Takes the one place there is, or refuses.
bool Maintenance::begin(Operation operation, const Completion& completion)
{
    auto free = Operation::None;
    if (!_operation.compare_exchange_strong(free, operation)) {
        completion(std::unexpected(error(BRVErrorUpdateRunning)));
        return false;
    }
    if (!*_backupIsUnderWay && !platform::isBackupRunning()) {
        tellChange();
        _check->close(error(BRVErrorUpdateRunning));
        return true;
    }
    finish(completion, std::unexpected(error(BRVErrorBackupRunning)));
    return false;
}

void Maintenance::tellChange() const
{
    if (_changeHandler)
        _changeHandler();
}

void Maintenance::finish(const Completion& completion, Result<PropertyList> result)
{
    _check->open();
    _operation = Operation::None;
    tellChange();
    completion(std::move(result));
}

// The place stays taken: what comes now is for the next version, or for nobody.
void Maintenance::end(const Completion& completion, End how)
{
    completion(Dictionary{{"Applied", true}});
    _endHandler(how);
}

void Maintenance::checkForUpdates(const std::string& sender, const Completion& completion)
{
    _check->ask(sender, completion);
    if (!_peers->identified(sender))
        _check->forget(sender); // it has left meanwhile
}

void Maintenance::endChecks()
{
    _check->close(error(BRVErrorUpdateRunning));
}

bool Maintenance::installUpdate(Completion completion)
{
    if (!begin(Operation::Install, completion))
        return false;
    _queue->async([self = shared_from_this(), completion = std::move(completion)] {
        if (auto installed = self->_installation->install(self->isEnding()); !installed) {
            self->finish(completion, std::unexpected(std::move(installed.error())));
            return;
        }
        ZRKLogMessage(LogLevelDefault, "The new version is installed.");
        self->end(completion, End::Restart);
    });
    return true;
}

bool Maintenance::installUpdateUnasked()
{
    if (_peers->anyConnected()) {
        ZRKError::log(error(BRVErrorPeersConnected));
        return false;
    }
    return installUpdate([](const Result<PropertyList>& result) {
        // A refusal is logged where it is answered, and nobody waits for this answer.
        if (!result && result.error().domain == BRVErrorDomain)
            ZRKError::log(result.error());
    });
}

void Maintenance::uninstall(const std::string& sender, const Completion& completion)
{
    if (!begin(Operation::Uninstall, completion))
        return;
    if (_installation->isManagedElsewhere() && !_peers->othersConnected(sender)) {
        _queue->async([self = shared_from_this(), completion] { self->remove(completion); });
        return;
    }
    // Whoever watches a new version asks it something, and is no program that needs it.
    if (!_installation->waitForTrial(trialLimit)) {
        finish(completion, std::unexpected(error(BRVErrorUpdateRunning)));
        return;
    }
    if (_peers->othersConnected(sender)) {
        finish(completion, std::unexpected(error(BRVErrorPeersConnected)));
        return;
    }
    remove(completion);
}

void Maintenance::remove(const Completion& completion)
{
    ZRKLogMessage(LogLevelDefault, "%@",
                  {_installation->isManagedElsewhere() ? "The package is being removed." : "Uninstalling."});
    if (auto removed = _installation->remove(_passwordRule, isEnding()); !removed)
        finish(completion, std::unexpected(std::move(removed.error())));
    else
        end(completion, End::Stop);
}

} // namespace helper
