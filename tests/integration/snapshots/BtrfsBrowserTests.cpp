#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "platform/linux/system/volumes/MountTable.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"
#include "tests/platform/ui/User.h"
#include "tests/support/PrivateBus.h"

#include <algorithm>
#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <QApplication>
#include <regex>
#include <sysexits.h>
#include <unistd.h>

#define NEEDS_BTRFS()                                                                                                  \
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {                                                   \
        std::printf("SKIPPED: %s\n", reason.c_str());                                                                  \
        return;                                                                                                        \
    }

TEST_SUITE_BEGIN("windows");

using Names = std::vector<std::string>;
using namespace platform::ui;

namespace {

constexpr int Soon = 5000; // milliseconds

// The window on this machine itself, which may have btrfs volumes of its own.
class OpenBrowser {
public:
    OpenBrowser()
    {
        _controller->showWindow();
        user::runEvents();
    }

    int indexOfVolume(const std::string& name) const
    {
        const auto& popUp = control<PopUpButton>("disksPopUp");
        for (int i = 0; i < popUp.numberOfItems(); ++i) {
            if (popUp.itemTitleAtIndex(i) == name)
                return i;
        }
        return -1;
    }
    bool hasVolume(const std::string& name) const { return indexOfVolume(name) >= 0; }
    std::string selectedVolume() const
    {
        const auto& popUp = control<PopUpButton>("disksPopUp");
        return popUp.itemTitleAtIndex(popUp.indexOfSelectedItem());
    }
    void choose(const std::string& name) const
    {
        user::choose(control<PopUpButton>("disksPopUp"), indexOfVolume(name));
        user::runEvents();
    }

    Names names() const
    {
        const auto& model = control<TableView>("snapshotsTable").native().as<DataTable>()->rows();
        Names names;
        for (int row = 0; row < model.rowCount(); ++row)
            names.push_back(model.index(row, 1).data().toString().toStdString());
        return names;
    }

    const BRVLocalSnapshotsController& controller() const { return *_controller; }

private:
    template <class T>
    T& control(const char* identifier) const
    {
        for (auto* const window : QApplication::topLevelWidgets()) {
            auto* const widget = window->findChild<QWidget*>(QString::fromLatin1(identifier));
            if (widget && window->isVisible())
                return dynamic_cast<T&>(*viewForWidget(widget));
        }
        throw std::logic_error(std::string("Not on the screen: ") + identifier);
    }

    std::shared_ptr<BRVLocalSnapshotsController> _controller = BRVLocalSnapshotsController::create();
};

// Stays when what is mounted from it is unmounted.
class LoopDevice {
public:
    explicit LoopDevice(const BtrfsVolume& unmounted)
        : _device(linesOf({"losetup", "--find", "--show", folderOf(unmounted) + "/image"}).at(0))
    {
    }
    ~LoopDevice() { run({"losetup", "--detach", _device}); }
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;

    const std::string& device() const { return _device; }
    static std::string folderOf(const BtrfsVolume& volume) { return volume.path().substr(0, volume.path().rfind('/')); }

private:
    std::string _device;
};

std::string folderBeside(const BtrfsVolume& volume, const std::string& name)
{
    const auto path = LoopDevice::folderOf(volume) + "/" + name;
    std::filesystem::create_directories(path);
    return path;
}

bool soon(const std::function<bool()>& holds)
{
    return user::runEventsUntil(holds, Soon);
}

} // namespace

TEST_CASE("mounted volumes are listed by their labels, and each with its own snapshots")
{
    NEEDS_BTRFS();
    const BtrfsVolume first("First Disk");
    const BtrfsVolume second("Second Disk");
    first.createSubvolume("work");
    first.createSnapshot("work", "one");
    first.createSnapshot("work", "two");
    second.createSnapshot("", "three");
    const OpenBrowser browser;
    REQUIRE(browser.hasVolume("First Disk"));
    REQUIRE(browser.hasVolume("Second Disk"));
    browser.choose("Second Disk");
    CHECK(browser.names() == Names{"three"});
    browser.choose("First Disk");
    CHECK(browser.names() == Names{"one", "two"});
}

TEST_CASE("a volume without a label goes by the name of its folder")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("");
    const OpenBrowser browser;
    CHECK(browser.hasVolume("mounted"));
}

TEST_CASE("the list follows an unmount of the selected volume and a new mount")
{
    NEEDS_BTRFS();
    const BtrfsVolume staying("Staying");
    BtrfsVolume going("Going");
    staying.createSnapshot("", "kept");
    going.createSnapshot("", "gone");
    const OpenBrowser browser;
    browser.choose("Going");
    CHECK(browser.names() == Names{"gone"});
    going.unmount();
    CHECK(soon([&] { return !browser.hasVolume("Going"); }));
    CHECK(browser.selectedVolume() != "Going");
    CHECK(std::ranges::count(browser.names(), "gone") == 0);
    going.mount();
    CHECK(soon([&] { return browser.hasVolume("Going"); }));
    browser.choose("Going");
    CHECK(browser.names() == Names{"gone"});
}

TEST_CASE("a volume that is mounted while the window loads is in the list once")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Once");
    const OpenBrowser browser;
    const BtrfsVolume next("Next");
    CHECK(soon([&] { return browser.hasVolume("Next"); }));
    next.announceChange();
    user::runEventsUntil([] { return false; }, 200);
    int count = 0;
    for (int i = 0; i < 20; ++i)
        count += browser.indexOfVolume("Next") >= 0;
    CHECK(count == 20);
    CHECK(browser.hasVolume("Once"));
}

TEST_CASE("a new label shows when the kernel tells of a change to the device")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Before");
    volume.createSnapshot("", "one");
    const OpenBrowser browser;
    browser.choose("Before");
    run({"btrfs", "filesystem", "label", volume.path(), "After"});
    volume.announceChange();
    CHECK(soon([&] { return browser.hasVolume("After"); }));
    CHECK_FALSE(browser.hasVolume("Before"));
    CHECK(browser.selectedVolume() == "After");
    CHECK(browser.names() == Names{"one"});
}

TEST_CASE("a volume that moves to another folder stays the same volume")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Moving");
    const TemporaryDirectory other;
    const OpenBrowser browser;
    browser.choose("Moving");
    const auto disk = browser.controller().selectedDisk();
    run({"mount", "--move", volume.path(), other.path()});
    CHECK(soon([&] { return disk->URL() == other.path(); }));
    CHECK(browser.controller().selectedDisk() == disk);
    run({"mount", "--move", other.path(), volume.path()});
    CHECK(soon([&] { return disk->URL() == volume.path(); }));
}

TEST_CASE(
    "a volume that is mounted hidden joins the list when it is mounted in sight too, and leaves it with that mount")
{
    NEEDS_BTRFS();
    BtrfsVolume volume("Seen Later");
    volume.unmount();
    const LoopDevice loop(volume);
    const auto& device = loop.device();
    const auto hidden = folderBeside(volume, ".hidden");
    const auto seen = folderBeside(volume, "seen");
    const OpenBrowser browser;
    run({"mount", device, hidden});
    CHECK_FALSE(user::runEventsUntil([&] { return browser.hasVolume("Seen Later"); }, 300));
    run({"mount", device, seen});
    CHECK(soon([&] { return browser.hasVolume("Seen Later"); }));
    CHECK(browser.controller().selectedDisk());
    run({"umount", seen});
    CHECK(soon([&] { return !browser.hasVolume("Seen Later"); }));
    run({"umount", hidden});
}

TEST_CASE("the option that hides a volume is heeded, though it is written after the mount")
{
    NEEDS_BTRFS();
    BtrfsVolume volume("Optional");
    volume.unmount();
    const LoopDevice loop(volume);
    const auto seen = folderBeside(volume, "by-option");
    const OpenBrowser browser;
    run({"mount", loop.device(), seen});
    CHECK(soon([&] { return browser.hasVolume("Optional"); }));
    run({"umount", seen});
    CHECK(soon([&] { return !browser.hasVolume("Optional"); }));
    // First as the kernel shows it, before mount(8) has written its file.
    run({"mount", "-i", "-n", loop.device(), seen});
    CHECK(soon([&] { return browser.hasVolume("Optional"); }));
    run({"umount", seen});
    for (int turn = 0; turn < 5; ++turn) {
        run({"mount", "-o", "x-gvfs-hide", loop.device(), seen});
        user::runEventsUntil([] { return false; }, 200);
        CHECK_FALSE(browser.hasVolume("Optional"));
        run({"umount", seen});
    }
}

TEST_CASE("the mount table is read once for all volumes, and again when something is mounted")
{
    NEEDS_BTRFS();
    const BtrfsVolume first("Once");
    const BtrfsVolume second("Twice");
    const auto folder = folderBeside(first, "more");
    const auto before = platform::MountTable::timesRead();
    {
        const OpenBrowser browser;
        CHECK(browser.hasVolume("Once"));
        CHECK(browser.hasVolume("Twice"));
        CHECK(platform::MountTable::timesRead() - before <= 2);
        const auto settled = platform::MountTable::timesRead();
        CHECK(platform::localizedVolumeName(first.path()) == "Once");
        CHECK(platform::MountTable::timesRead() == settled);
    }
    const auto settled = platform::MountTable::timesRead();
    CHECK_FALSE(platform::localizedVolumeName(folder));
    run({"mount", "-t", "tmpfs", "tmpfs", folder});
    CHECK(platform::localizedVolumeName(folder) == "more");
    run({"umount", folder});
    CHECK_FALSE(platform::localizedVolumeName(folder));
    CHECK(platform::MountTable::timesRead() == settled + 2);
}

TEST_CASE("when the whole is unmounted a subvolume that is mounted too takes its place")
{
    NEEDS_BTRFS();
    BtrfsVolume volume("Both");
    volume.createSubvolume("work");
    volume.createSnapshot("work", "one");
    const TemporaryDirectory other;
    run({"mount", "-o", "subvol=work", volume.device(), other.path()});
    const OpenBrowser browser;
    browser.choose("Both");
    const auto disk = browser.controller().selectedDisk();
    CHECK(disk->URL() == volume.path());
    volume.unmount();
    CHECK(soon([&] { return disk->URL() == other.path(); }));
    CHECK(browser.selectedVolume() == "Both");
    run({"umount", other.path()});
    CHECK(soon([&] { return !browser.hasVolume("Both"); }));
}

TEST_CASE("a snapshot that the helper makes appears in the window")
{
    NEEDS_BTRFS();
    const PrivateBus bus;
    const BtrfsVolume volume("Made");
    const OpenBrowser browser;
    browser.choose("Made");
    CHECK(browser.names().empty());
    const auto path = linesOf({BREVANE_SCHEDULER_HELPER, "--snapshot", volume.path()}).at(0);
    CHECK(soon([&] { return browser.names().size() == 1; }));
    REQUIRE(browser.names().size() == 1);
    CHECK(path == volume.file(browser.names()[0]));
    CHECK(std::regex_match(browser.names()[0], std::regex(R"(\.brevane-snapshots/\d{4}-\d\d-\d\d-\d{6})")));
    CHECK(linesOf({"btrfs", "property", "get", path, "ro"}).at(0) == "ro=true");
}

TEST_CASE("snapshots that the helper makes in one second have names of their own")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Quick");
    for (int i = 0; i < 5; ++i)
        run({BREVANE_SCHEDULER_HELPER, "--snapshot", volume.path()});
    CHECK(snapshotsListedByTool(volume.path()).size() == 5);
}

TEST_CASE("the helper removes a snapshot of its own, and no other volume")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Removed");
    const auto path = linesOf({BREVANE_SCHEDULER_HELPER, "--snapshot", volume.path()}).at(0);
    const auto status = [](const std::string& named) {
        ChildProcess child({BREVANE_SCHEDULER_HELPER, "--remove-snapshot", named});
        child.readAll();
        return child.wait();
    };
    const auto other = volume.file("other");
    run({"btrfs", "subvolume", "snapshot", "-r", volume.path(), other});
    CHECK(status(other) == EX_DATAERR);
    CHECK(status(volume.path()) == EX_DATAERR);
    CHECK(status(volume.file(".brevane-snapshots/none")) == EX_DATAERR);
    CHECK(snapshotsListedByTool(volume.path()).size() == 2);
    CHECK(status(path) == EX_OK);
    CHECK(snapshotsListedByTool(volume.path()).size() == 1);
    CHECK(std::filesystem::exists(other));
}

TEST_CASE("the helper makes no snapshot of a folder, through a link, or for an ordinary user")
{
    NEEDS_BTRFS();
    const BtrfsVolume volume("Careful");
    const auto status = [](std::vector<std::string> command) {
        ChildProcess child(command);
        child.readAll();
        return child.wait();
    };
    const std::string helper = BREVANE_SCHEDULER_HELPER;
    CHECK(status({helper, "--snapshot", volume.folder("folder")}) == EX_DATAERR);
    CHECK(status({helper, "--snapshot", "/proc"}) == EX_DATAERR);
    CHECK(status({helper, "--snapshot", "/no/such/volume"}) == EX_DATAERR);
    const TemporaryDirectory elsewhere;
    std::filesystem::create_directory_symlink(elsewhere.path(), volume.file(".brevane-snapshots"));
    CHECK(status({helper, "--snapshot", volume.path()}) == EX_DATAERR);
    std::filesystem::remove(volume.file(".brevane-snapshots"));
    std::filesystem::permissions(volume.path().substr(0, volume.path().rfind('/')), std::filesystem::perms(0755));
    CHECK(status({"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", helper, "--snapshot",
                  volume.path()})
          == EX_NOPERM);
    CHECK(snapshotsListedByTool(volume.path()).empty());
}

TEST_SUITE_END();
