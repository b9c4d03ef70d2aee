#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/Localization.h"
#include "platform/Queue.h"
#include "platform/ui/Alert.h"
#include "protocol/ErrorCodes.h"
#include "protocol/SnapshotList.h"

using platform::localizedString;

// Listing by the helper, where this process may not.

namespace {

std::string sentenceForFailureToList(const platform::Error& error)
{
    if (error.domain == ZRKMessagerErrorDomain && error.code == ZRKMessagerErrorServiceUnavailable)
        return localizedString("The background scheduler does not run, or is not installed.");
    if (helperDoesNotServeMessage(error))
        return localizedString("The background scheduler is of another version, which does not list snapshots. Install "
                               "the latest version of Brevane.");
    return ZRKError::localizedDescriptionForError(error);
}

// Without what has no name or date, as in the list that this process makes.
BRVLocalSnapshotsController::SnapshotList snapshotsInReply(const platform::Dictionary& reply)
{
    BRVLocalSnapshotsController::SnapshotList snapshots;
    const auto* const list = reply.arrayForKey(SnapshotListKey::Snapshots);
    for (const auto& each : list ? *list : platform::Array()) {
        const auto* const snapshot = each.dictionary();
        const auto* const date = snapshot ? snapshot->find(SnapshotListKey::Date) : nullptr;
        if (!date || !date->date() || !snapshot->stringForKey(SnapshotListKey::Name))
            continue;
        platform::Dictionary shown{{SnapshotListKey::Name, *snapshot->stringForKey(SnapshotListKey::Name)},
                                   {SnapshotListKey::Date, *date}};
        if (const auto* const size = snapshot->find(SnapshotListKey::Size))
            shown.set(SnapshotListKey::Size, *size);
        snapshots.push_back(std::move(shown));
    }
    return snapshots;
}

} // namespace

void BRVLocalSnapshotsController::explainMissingAccess()
{
    _fullDiskAccessTextField->setStringValue(
        localizedString("Listing the snapshots of this volume needs administrator rights."));
    _fullDiskAccessButton->setTitle(localizedString("List as Administrator…"));
}

void BRVLocalSnapshotsController::listAsAdministrator()
{
    askHelper(true);
}

// One request at a time. What the user did not ask for shows no authentication.
void BRVLocalSnapshotsController::askHelper(bool mayAuthenticate)
{
    const auto disk = selectedDisk();
    _asksAgain = _isAsking;
    if (!disk)
        return;
    if (mayAuthenticate || _listedDisk != disk) {
        showSnapshots(std::nullopt, mayAuthenticate);
        _tableView->setPlaceholder(localizedString("Listing the snapshots…"));
    }
    if (_isAsking)
        return;
    _isAsking = true;
    _fullDiskAccessButton->setEnabled(false);
    auto& manager = ZRKAuthorizationManager::sharedManager();
    const bool allowsUserInteraction = manager.allowsUserInteraction();
    manager.setAllowsUserInteraction(allowsUserInteraction && mayAuthenticate);
    BRVHelperMessager::sharedMessager()->listSnapshots(
        disk->URL(), platform::Queue::main(),
        [weak = weak_from_this(), url = disk->URL(), mayAuthenticate](const auto& reply) {
            if (const auto self = weak.lock())
                self->finishAsking(url, mayAuthenticate, reply);
        });
    manager.setAllowsUserInteraction(allowsUserInteraction);
}

void BRVLocalSnapshotsController::finishAsking(const std::string& url, bool mayAuthenticate,
                                               const platform::Result<platform::Dictionary>& reply)
{
    _isAsking = false;
    _usesHelper = reply.has_value();
    _fullDiskAccessButton->setEnabled(true);
    const auto disk = selectedDisk();
    if (!disk || disk->URL() != url)
        return reloadSnapshots(); // another volume was chosen meanwhile
    if (!reply) {
        showSnapshots(std::nullopt, true);
        if (mayAuthenticate && !userCanceledAuthentication(reply.error()))
            presentFailureToList(reply.error());
        return;
    }
    showSnapshots(snapshotsInReply(*reply), false);
    const auto* const complete = reply->find(SnapshotListKey::Complete);
    if (complete && !complete->boolValue()) {
        _fullDiskAccessTextField->setStringValue(localizedString("There are more snapshots than are listed here."));
        _fullDiskAccessTextField->setHidden(false);
    }
    if (_asksAgain)
        askHelper(false);
}

void BRVLocalSnapshotsController::presentFailureToList(const platform::Error& error)
{
    platform::ui::Alert alert;
    alert.setMessageText(localizedString("The snapshots of this volume could not be listed."));
    alert.setInformativeText(sentenceForFailureToList(error));
    alert.addButton(localizedString("OK"));
    alert.beginSheet(_interface->window(), nullptr);
}
