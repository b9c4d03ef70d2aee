#pragma once

#include "diagnostics/snapshots/KPVDisk.h"
#include "platform/DistributedNotifications.h"
#include "platform/Error.h"
#include "platform/ui/Button.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"
#include "platform/Volumes.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The window that lists the local snapshots of one volume at a time. The list of volumes follows mounts, unmounts and
// renames, and the table what other programs of the product tell. Main thread only; the listings are made there.
class BRVLocalSnapshotsController : public platform::ui::TableViewDataSource,
                                    public std::enable_shared_from_this<BRVLocalSnapshotsController> {
public:
    // "Name" (string), "Date" (date) and, where the file system tells, "Size" (bytes, 64 bits without a sign).
    using SnapshotList = std::vector<platform::Dictionary>;

    static std::shared_ptr<BRVLocalSnapshotsController> create();

    // Loads the window the first time. Brings it to the front.
    void showWindow();

    std::string windowNibName() const;
    void awakeFromNib();
    void windowDidLoad();
    // Asks for the volumes anew; for an empty pop-up.
    void reloadDisks();
    void reloadSnapshots();
    void showFullDiskAcccessInfo();
    // Where nobody but an administrator may list: asks the helper, for the user who authenticates.
    void listAsAdministrator();

    std::shared_ptr<KPVDisk> selectedDisk() const;
    void addDisk(const std::shared_ptr<KPVDisk>& disk);
    void removeDiskAtIndex(std::size_t index);
    void renameDiskAtIndex(std::size_t index, const std::string& name);
    // Does what changes the pop-up, and lists the snapshots anew if another volume is selected then.
    void changeDisksPopupUsingBlock(const std::function<void()>& block);

    void volumeDidMount(const platform::VolumeNotification& notification);
    void volumeDidUnmount(const platform::VolumeNotification& notification);
    void volumeDidRename(const platform::VolumeNotification& notification);
    void newSnapshot();

    std::size_t numberOfRowsInTableView(const platform::ui::TableView& table) override;
    platform::ui::TableCellView tableView(const platform::ui::TableView& table, const std::string& columnIdentifier,
                                          std::size_t row) override;

    bool isAPFSDataOrBackupVolumeAtURL(const std::string& url) const;
    // In the order of the file system. None when the volume cannot be opened; an error is then made, and logged, only
    // for who asks for it.
    std::optional<SnapshotList> snapshotsAtURL(const std::string& url, std::optional<platform::Error>* error) const;

private:
    BRVLocalSnapshotsController() = default;

    void loadWindow();
    void observeVolumes();
    void _addDisk(const std::shared_ptr<KPVDisk>& disk);
    void setFullDiskAccessHidden(bool hidden);
    void showSnapshots(std::optional<SnapshotList> snapshots, bool isRefused);
    void explainMissingAccess();
    void askHelper(bool mayAuthenticate);
    void finishAsking(const std::string& url, bool mayAuthenticate,
                      const platform::Result<platform::Dictionary>& reply);
    void presentFailureToList(const platform::Error& error);
    // Of the list as it is; nullopt when none is selected.
    std::optional<platform::Dictionary> chosenSnapshot() const;
    // Shows the list with this snapshot selected, if it is still there. Another volume's list begins at the top.
    void showRows(const std::optional<platform::Dictionary>& chosen);
    // Volumes of one name are told apart by their paths.
    void showTitles();
    std::optional<std::size_t> indexOfDiskAtURL(const std::string& url) const;

    std::unique_ptr<platform::ui::Interface> _interface;
    std::shared_ptr<platform::ui::PopUpButton> _disksPopup; // one item for each of _disks
    std::shared_ptr<platform::ui::TableView> _tableView;
    std::shared_ptr<platform::ui::TextField> _fullDiskAccessTextField;
    std::shared_ptr<platform::ui::Button> _fullDiskAccessButton;
    std::vector<std::shared_ptr<KPVDisk>> _disks;
    std::optional<SnapshotList> _snapshots; // of the selected volume
    bool _usesHelper = false;               // the user has asked for it, and it has not refused since
    bool _isAsking = false;                 // the helper
    bool _asksAgain = false;
    std::shared_ptr<KPVDisk> _listedDisk; // the volume whose rows are shown
    std::shared_ptr<platform::DiskSession> _dasession;
    std::optional<platform::VolumeObserver> _volumeObserver;
    std::optional<platform::DistributedNotificationObserver> _snapshotObserver;
};
