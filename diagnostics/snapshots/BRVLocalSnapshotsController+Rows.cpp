#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "platform/Format.h"
#include "platform/Localization.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

std::optional<platform::Dictionary> BRVLocalSnapshotsController::chosenSnapshot() const
{
    const int row = _tableView->selectedRow();
    return _snapshots && row >= 0 && static_cast<std::size_t>(row) < _snapshots->size()
        ? std::optional((*_snapshots)[static_cast<std::size_t>(row)])
        : std::nullopt;
}

void BRVLocalSnapshotsController::showRows(const std::optional<platform::Dictionary>& chosen)
{
    const auto disk = selectedDisk();
    const bool isOther = disk != std::exchange(_listedDisk, disk);
    _tableView->reloadData();
    int row = -1;
    if (chosen && _snapshots && !isOther) {
        // Its size may have changed.
        const auto isChosen = [&chosen](const platform::Dictionary& snapshot) {
            return std::ranges::all_of(std::array{"Name", "Date"}, [&](const char* key) {
                const auto* const one = snapshot.find(key);
                const auto* const other = chosen->find(key);
                return one && other && *one == *other;
            });
        };
        const auto found = std::ranges::find_if(*_snapshots, isChosen);
        if (found != _snapshots->end())
            row = static_cast<int>(found - _snapshots->begin());
    }
    if (_tableView->selectedRow() != row)
        _tableView->selectRow(row);
    if (isOther)
        _tableView->scrollRowToVisible(0);
}

void BRVLocalSnapshotsController::showTitles()
{
    std::map<std::string, int> volumes;
    for (const auto& disk : _disks)
        ++volumes[disk->name()];
    for (std::size_t index = 0; index < _disks.size(); ++index) {
        auto title = _disks[index]->name();
        if (volumes[title] > 1)
            title = platform::formatString(platform::localizedString("%@ (%@)"), {title, _disks[index]->URL()})
                        .value_or(title);
        if (_disksPopup->itemTitleAtIndex(static_cast<int>(index)) != title)
            renameDiskAtIndex(index, title);
    }
}
