#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"

#include "diagnostics/snapshots/SnapshotDate.h"
#include "platform/ByteCountFormat.h"
#include "platform/Color.h"
#include "platform/DateFormat.h"
#include "platform/Localization.h"
#include "platform/Snapshots.h"
#include "platform/SystemInformation.h"
#include "platform/ui/Alert.h"
#include "platform/ui/Waiting.h"
#include "platform/Workspace.h"
#include "protocol/SnapshotList.h"
#include "version/ZRKSystemVersionManager.h"

#include <algorithm>
#include <cerrno>

using namespace platform::ui;
using platform::localizedString;
using platform::VolumeNotification;

namespace {

constexpr const char* newSnapshotNotification = "com.zerkolin.brevane.snapshot";
constexpr const char* securityPanePath = "/System/Library/PreferencePanes/Security.prefPane";
// Of the columns too.
constexpr const char* nameKey = SnapshotListKey::Name;
constexpr const char* dateKey = SnapshotListKey::Date;
constexpr const char* sizeKey = SnapshotListKey::Size;
constexpr unsigned yosemite = 0; // macOS 10.10

std::string dateText(const platform::Dictionary& snapshot)
{
    static auto format = platform::DateFormat::withStyles(platform::DateStyle::Short, platform::DateStyle::Short);
    const auto* const value = snapshot.find(dateKey);
    const auto* const date = value ? value->date() : nullptr;
    return date ? format.stringFromDate(snapshotTimeOfDate(*date)) : "";
}

std::string sizeText(const platform::Dictionary& snapshot)
{
    static platform::ByteCountFormat format;
    const auto* const size = snapshot.find(sizeKey);
    if (!size)
        return "--";
    const auto* const large = size->unsignedInteger();
    return format.stringFromByteCount(large ? *large : static_cast<std::uint64_t>(size->integerValue()));
}

bool hasRole(const platform::Array& roles, const char* role)
{
    return std::ranges::find(roles, platform::PropertyList(role)) != roles.end();
}

// What the table says where there are no rows.
std::string placeholderForList(bool hasDisk, bool isListed, bool isRefused)
{
    if (!hasDisk)
        return localizedString("No volume that can keep local snapshots is mounted.");
    if (isListed)
        return localizedString("There are no local snapshots on this volume.");
    return isRefused ? "" : localizedString("The snapshots of this volume could not be listed.");
}

void displayMissingPaneAlert(const std::shared_ptr<Window>& window)
{
    Alert alert;
    alert.setStyle(AlertStyle::Informational);
    alert.setMessageText(localizedString("The settings could not be opened."));
    alert.setInformativeText(localizedString("Ask an administrator of this computer to list the snapshots."));
    alert.beginSheet(window, nullptr);
}

} // namespace

std::shared_ptr<BRVLocalSnapshotsController> BRVLocalSnapshotsController::create()
{
    return std::shared_ptr<BRVLocalSnapshotsController>(new BRVLocalSnapshotsController);
}

std::string BRVLocalSnapshotsController::windowNibName() const
{
    return "BRVLocalSnapshotsController";
}

void BRVLocalSnapshotsController::showWindow()
{
    if (!_interface) {
        loadWindow();
        windowDidLoad();
    }
    _interface->window()->makeKeyAndOrderFront();
}

void BRVLocalSnapshotsController::loadWindow()
{
    _interface = Interface::load(windowNibName());
    _disksPopup = _interface->outlet<PopUpButton>("disksPopUp");
    _tableView = _interface->outlet<TableView>("snapshotsTable");
    _fullDiskAccessTextField = _interface->outlet<TextField>("fullDiskAccessTextField");
    _fullDiskAccessButton = _interface->outlet<Button>("fullDiskAccessButton");

    const auto weak = weak_from_this();
    _tableView->setDataSource(weak);
    _disksPopup->setAction([weak] {
        if (const auto self = weak.lock())
            self->reloadSnapshots();
    });
    const bool needsAdministrator = platform::missingSnapshotAccess() == platform::SnapshotAccess::Administrator;
    _fullDiskAccessButton->setAction([weak, needsAdministrator] {
        const auto self = weak.lock();
        if (self && needsAdministrator)
            self->listAsAdministrator();
        else if (self)
            self->showFullDiskAcccessInfo();
    });
    awakeFromNib();
}

void BRVLocalSnapshotsController::awakeFromNib()
{
    _dasession = platform::DiskSession::create();
}

void BRVLocalSnapshotsController::windowDidLoad()
{
    const bool hasSystemColors = ZRKSystemVersionManager::sharedManager().runningAtLeast(yosemite);
    _fullDiskAccessTextField->setTextColor(hasSystemColors ? platform::Color(platform::NamedColor::SystemRed)
                                                           : platform::Color(platform::FixedColor{1, 0, 0}));
    observeVolumes();
    _snapshotObserver.emplace(newSnapshotNotification, [this] { newSnapshot(); });
    _tableView->setPlaceholder(placeholderForList(false, false, false));
    reloadDisks();
    _interface->window()->layoutIfNeeded();
    _interface->window()->center();
}

void BRVLocalSnapshotsController::observeVolumes()
{
    _volumeObserver.emplace([this](const VolumeNotification& notification) {
        switch (notification.event) {
        case VolumeNotification::Event::DidMount:
            return volumeDidMount(notification);
        case VolumeNotification::Event::DidUnmount:
            return volumeDidUnmount(notification);
        case VolumeNotification::Event::DidRename:
            return volumeDidRename(notification);
        }
    });
}

void BRVLocalSnapshotsController::reloadDisks()
{
    _disks.clear();
    const int count = platform::numberOfMountedFileSystems();
    if (count < 1)
        return;
    for (const auto& mounted : platform::mountedFileSystems(count)) {
        if (!(mounted.flags & platform::MountedFileSystem::Local) || !isAPFSDataOrBackupVolumeAtURL(mounted.path))
            continue;
        const auto name = platform::localizedVolumeName(mounted.path);
        const auto icon = platform::effectiveVolumeIcon(mounted.path);
        if (name && icon)
            _addDisk(std::make_shared<KPVDisk>(mounted.path, *name, Image::imageNamed(*icon)));
    }
    showTitles();
    reloadSnapshots();
}

void BRVLocalSnapshotsController::reloadSnapshots()
{
    const auto disk = selectedDisk();
    std::optional<platform::Error> error;
    auto listed = disk ? snapshotsAtURL(disk->URL(), &error) : std::nullopt;
    const bool isRefused = error && error->domain == platform::POSIXErrorDomain && error->code == EPERM;
    if (isRefused && _usesHelper)
        askHelper(false);
    else
        showSnapshots(std::move(listed), isRefused);
}

void BRVLocalSnapshotsController::showSnapshots(std::optional<SnapshotList> snapshots, bool isRefused)
{
    const auto chosen = chosenSnapshot();
    _snapshots = std::move(snapshots);
    if (isRefused && platform::missingSnapshotAccess() == platform::SnapshotAccess::Administrator)
        explainMissingAccess();
    setFullDiskAccessHidden(!isRefused);
    _tableView->setPlaceholder(placeholderForList(selectedDisk() != nullptr, _snapshots.has_value(), isRefused));
    showRows(chosen);
}

void BRVLocalSnapshotsController::setFullDiskAccessHidden(bool hidden)
{
    _fullDiskAccessTextField->setHidden(hidden);
    _fullDiskAccessButton->setHidden(hidden);
}

void BRVLocalSnapshotsController::showFullDiskAcccessInfo()
{
    Alert alert;
    alert.setMessageText(localizedString("About Full Disk Access."));
    alert.setInformativeText(
        localizedString("You can grant access by adding Brevane in System Preferences > Security & "
                        "Privacy > Privacy > Full Disk Access."));
    alert.addButton(localizedString("Open Security & Privacy"));
    alert.addButton(localizedString("OK"));
    alert.beginSheet(_interface->window(), [weak = weak_from_this()](int response) {
        const auto self = weak.lock();
        if (!self || response != Alert::FirstButtonReturn)
            return;
        if (!waitForAnswer(localizedString("Opening the settings…"),
                           [] { return platform::openFile(platform::systemPath(securityPanePath)); }))
            displayMissingPaneAlert(self->_interface->window());
    });
}

std::shared_ptr<KPVDisk> BRVLocalSnapshotsController::selectedDisk() const
{
    const int index = _disksPopup->indexOfSelectedItem();
    return index >= 0 && static_cast<std::size_t>(index) < _disks.size() ? _disks[static_cast<std::size_t>(index)]
                                                                         : nullptr;
}

void BRVLocalSnapshotsController::addDisk(const std::shared_ptr<KPVDisk>& disk)
{
    changeDisksPopupUsingBlock([&] { _addDisk(disk); });
    showTitles();
}

void BRVLocalSnapshotsController::_addDisk(const std::shared_ptr<KPVDisk>& disk)
{
    _disks.push_back(disk);
    const auto icon = disk->icon();
    if (icon)
        icon->setSize(16, 16);
    _disksPopup->addItem(disk->name(), icon);
}

void BRVLocalSnapshotsController::removeDiskAtIndex(std::size_t index)
{
    changeDisksPopupUsingBlock([&] {
        _disks.erase(_disks.begin() + static_cast<std::ptrdiff_t>(index));
        _disksPopup->removeItemAtIndex(static_cast<int>(index));
    });
    showTitles();
}

void BRVLocalSnapshotsController::renameDiskAtIndex(std::size_t index, const std::string& name)
{
    _disksPopup->setItemTitleAtIndex(static_cast<int>(index), name);
}

void BRVLocalSnapshotsController::changeDisksPopupUsingBlock(const std::function<void()>& block)
{
    const auto before = selectedDisk();
    block();
    if (selectedDisk() != before)
        reloadSnapshots();
}

std::optional<std::size_t> BRVLocalSnapshotsController::indexOfDiskAtURL(const std::string& url) const
{
    const auto found = std::ranges::find(_disks, url, &KPVDisk::URL);
    return found == _disks.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - _disks.begin()));
}

void BRVLocalSnapshotsController::volumeDidMount(const VolumeNotification& notification)
{
    const auto& url = notification.volumeURL;
    if (!platform::isVolumeBrowsable(url).value_or(true) || !isAPFSDataOrBackupVolumeAtURL(url))
        return;
    if (const auto icon = platform::effectiveVolumeIcon(url))
        addDisk(std::make_shared<KPVDisk>(url, notification.localizedName, Image::imageNamed(*icon)));
}

void BRVLocalSnapshotsController::volumeDidUnmount(const VolumeNotification& notification)
{
    if (const auto index = indexOfDiskAtURL(notification.volumeURL))
        removeDiskAtIndex(*index);
}

void BRVLocalSnapshotsController::volumeDidRename(const VolumeNotification& notification)
{
    const auto index = indexOfDiskAtURL(notification.oldVolumeURL);
    if (!index)
        return;
    _disks[*index]->setURL(notification.volumeURL);
    _disks[*index]->setName(notification.localizedName);
    renameDiskAtIndex(*index, notification.localizedName);
    showTitles();
}

void BRVLocalSnapshotsController::newSnapshot()
{
    reloadSnapshots();
}

std::size_t BRVLocalSnapshotsController::numberOfRowsInTableView(const TableView&)
{
    return _snapshots ? _snapshots->size() : 0;
}

TableCellView BRVLocalSnapshotsController::tableView(const TableView& table, const std::string& columnIdentifier,
                                                     std::size_t row)
{
    auto cell = table.makeView(columnIdentifier);
    const auto& snapshot = _snapshots->at(row);
    if (columnIdentifier == dateKey)
        cell.stringValue = dateText(snapshot);
    else if (columnIdentifier == nameKey)
        cell.stringValue = *snapshot.stringForKey(nameKey);
    else if (columnIdentifier == sizeKey)
        cell.stringValue = sizeText(snapshot);
    return cell;
}

bool BRVLocalSnapshotsController::isAPFSDataOrBackupVolumeAtURL(const std::string& url) const
{
    const auto service = _dasession->serviceOfVolume(url);
    if (!service || !service->isSnapshotVolume)
        return false;
    if (!service->role)
        return true;
    const auto* const roles = service->role->array();
    return roles && (roles->empty() || hasRole(*roles, "Data") || hasRole(*roles, "Backup"));
}
