#include "helper/Maintenance.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/installation/Installation.h"
#include "messaging/ZRKError.h"
#include "platform/linux/system/backups/BackupLock.h"
#include "protocol/ErrorCodes.h"

#include <utility>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;
using platform::Result;

namespace {

// Whoever asked is answered with it and logged by whoever answers.
std::unexpected<platform::Error> refusal(BRVErrorCode code)
{
    return std::unexpected(platform::Error{BRVErrorDomain, code, {}, nullptr});
}

} // namespace

std::shared_ptr<Maintenance> Maintenance::create(const HelperOptions& options, std::shared_ptr<Peers> peers,
                                                 EndHandler endHandler)
{
    return std::shared_ptr<Maintenance>(new Maintenance(options, std::move(peers), std::move(endHandler)));
}

Maintenance::Maintenance(const HelperOptions& options, std::shared_ptr<Peers> peers, EndHandler endHandler)
    : _updater(options.updates),
      _passwordRule(options.rulesFolder),
      _endHandler(std::move(endHandler)),
      _peers(std::move(peers)),
      _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.maintenance"))
{
    _updater.recover();
}

// Takes the one place there is, or refuses.
bool Maintenance::begin(Operation operation, const Completion& completion)
{
    auto free = Operation::None;
    if (!_operation.compare_exchange_strong(free, operation)) {
        completion(refusal(BRVErrorUpdateRunning));
        return false;
    }
    if (operation == Operation::Check)
        return true;
    if (!*_backupIsUnderWay && !platform::isBackupLockHeld()) {
        tellChange();
        return true;
    }
    finish(completion, refusal(BRVErrorBackupRunning));
    return false;
}

void Maintenance::tellChange() const
{
    if (_changeHandler)
        _changeHandler();
}

void Maintenance::finish(const Completion& completion, Result<PropertyList> result)
{
    if (_operation.exchange(Operation::None) != Operation::Check)
        tellChange();
    completion(std::move(result));
}

// The place stays taken: what comes now is for the next version, or for nobody.
void Maintenance::end(const Completion& completion, End how)
{
    completion(Dictionary{{"Applied", true}});
    _endHandler(how);
}

void Maintenance::checkForUpdates(Completion completion)
{
    if (!begin(Operation::Check, completion))
        return;
    _queue->async([self = shared_from_this(), completion = std::move(completion)] {
        auto information = self->_updater.check();
        if (information)
            self->finish(completion, PropertyList(std::move(information->reply)));
        else
            self->finish(completion, std::unexpected(std::move(information.error())));
    });
}

bool Maintenance::installUpdate(Completion completion)
{
    if (!begin(Operation::Install, completion))
        return false;
    _queue->async([self = shared_from_this(), completion = std::move(completion)] {
        if (auto installed = self->_updater.install(); !installed) {
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
        ZRKError::log({BRVErrorDomain, BRVErrorPeersConnected, {}, nullptr});
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
    if (_peers->othersConnected(sender)) {
        finish(completion, refusal(BRVErrorPeersConnected));
        return;
    }
    ZRKLogMessage(LogLevelDefault, "Uninstalling.");
    auto removed = _passwordRule.removeRules();
    if (removed)
        removed = Installation().remove();
    if (!removed)
        finish(completion, std::unexpected(std::move(removed.error())));
    else
        end(completion, End::Stop);
}

} // namespace helper
