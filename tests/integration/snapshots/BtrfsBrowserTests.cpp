#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
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
