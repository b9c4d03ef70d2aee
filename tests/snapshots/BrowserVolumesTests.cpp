#include "tests/snapshots/support/BrowserTest.h"

#include <doctest/doctest.h>

using namespace scripted;
using Names = std::vector<std::string>;
using platform::VolumeService;

namespace {

volumes::Volume volume(std::string path, std::string name)
{
    volumes::Volume volume{.path = std::move(path)};
    volume.name = std::move(name);
    return volume;
}

volumes::Volume volumeWithRole(std::string name, platform::PropertyList role)
{
    auto found = volume("/Volumes/" + name, name);
    found.service->role = std::move(role);
    return found;
}

// "One" with the snapshot "a", which is selected, and "Two" with "b".
struct TwoVolumes : BrowserTest {
    TwoVolumes()
    {
        volumes::add(volume("/one", "One"));
        volumes::add(volume("/two", "Two"));
        snapshots::set("/one", snapshotsNamed({"a"}));
        snapshots::set("/two", snapshotsNamed({"b"}));
        open();
    }
};

platform::Array roles(std::initializer_list<const char*> names)
{
    return platform::Array(names.begin(), names.end());
}

} // namespace

TEST_CASE("volumes without a role, with no roles, or with Data or Backup among them are listed, others are not")
{
    BrowserTest test;
    volumes::add(volume("/", "No Role"));
    volumes::add(volumeWithRole("Empty", platform::Array{}));
    volumes::add(volumeWithRole("Data", roles({"Data"})));
    volumes::add(volumeWithRole("Backup", roles({"Preboot", "Backup"})));
    volumes::add(volumeWithRole("System", roles({"System"})));
    volumes::add(volumeWithRole("Lower Case", roles({"data", "backup"})));
    volumes::add(volumeWithRole("Text", "Data"));
    volumes::add(volumeWithRole("Number", platform::Array{1}));
    volumes::add(volumeWithRole("Dictionary", platform::Dictionary{{"Data", true}}));
    test.open();
    CHECK(test.volumes() == Names{"No Role", "Empty", "Data", "Backup"});
}

TEST_CASE("a volume of another kind, or that the registry does not know, is not listed")
{
    BrowserTest test;
    auto other = volume("/other", "Other");
    other.service->isSnapshotVolume = false;
    volumes::add(other);
    auto unknown = volume("/unknown", "Unknown");
    unknown.service.reset();
    volumes::add(unknown);
    test.open();
    CHECK(test.volumes().empty());
    CHECK(test.placeholder() == "No volume that can keep local snapshots is mounted.");
    CHECK(snapshots::timesOpened() == 0);
}

TEST_CASE("a volume whose name or icon cannot be read is left out")
{
    BrowserTest test;
    auto nameless = volume("/nameless", "");
    nameless.name.reset();
    volumes::add(nameless);
    auto faceless = volume("/faceless", "Faceless");
    faceless.icon.reset();
    volumes::add(faceless);
    volumes::add(volume("/whole", "Whole"));
    test.open();
    CHECK(test.volumes() == Names{"Whole"});
}

TEST_CASE("a file system over a network is not listed at first, but one that is mounted later is")
{
    BrowserTest test;
    auto remote = volume("/remote", "Remote");
    remote.flags = ~platform::MountedFileSystem::Local;
    volumes::add(remote);
    test.open();
    CHECK(test.volumes().empty());
    auto later = volume("/later", "Later");
    later.flags = 0;
    volumes::mount(later);
    CHECK(test.volumes() == Names{"Later"});
}

TEST_CASE("when the system does not tell how many file systems there are, nothing else is asked")
{
    BrowserTest test;
    volumes::add(volume("/", "Root"));
    for (const int count : {0, -1}) {
        volumes::setTable(count, true);
        test.open();
        CHECK(volumes::timesRead() == 0);
        CHECK(test.volumes().empty());
        CHECK(test.rows().empty());
        CHECK(test.placeholder() == "No volume that can keep local snapshots is mounted.");
    }
}

TEST_CASE("when the system does not tell the file systems, the table is empty")
{
    BrowserTest test;
    volumes::add(volume("/", "Root"));
    volumes::setTable(3, false);
    test.open();
    CHECK(volumes::timesRead() == 1);
    CHECK(test.volumes().empty());
    CHECK(test.placeholder() == "No volume that can keep local snapshots is mounted.");
}

TEST_CASE("no more file systems are taken than there were when they were counted")
{
    BrowserTest test;
    volumes::add(volume("/one", "One"));
    volumes::add(volume("/two", "Two"));
    volumes::setTable(1, true);
    test.open();
    CHECK(test.volumes() == Names{"One"});
}

TEST_CASE("the first volume is selected and its snapshots are listed")
{
    TwoVolumes test;
    CHECK(test.selectedVolume() == "One");
    CHECK(test.names() == Names{"a"});
    CHECK(snapshots::timesOpened() == 1);
    test.choose(1);
    CHECK(test.selectedVolume() == "Two");
    CHECK(test.names() == Names{"b"});
    CHECK(snapshots::timesOpened() == 2);
}

TEST_CASE("the first volume that is mounted is selected and listed, a second one only joins the list")
{
    BrowserTest test;
    test.open();
    CHECK(test.selectedVolume().empty());
    snapshots::set("/one", snapshotsNamed({"a"}));
    volumes::mount(volume("/one", "One"));
    CHECK(test.selectedVolume() == "One");
    CHECK(test.names() == Names{"a"});
    volumes::mount(volume("/two", "Two"));
    CHECK(test.volumes() == Names{"One", "Two"});
    CHECK(test.selectedVolume() == "One");
    CHECK(snapshots::timesOpened() == 1);
}

TEST_CASE("a volume that is mounted hidden, without an icon or without a right role does not join the list")
{
    BrowserTest test;
    test.open();
    auto hidden = volume("/hidden", "Hidden");
    hidden.browsable = false;
    volumes::mount(hidden);
    auto faceless = volume("/faceless", "Faceless");
    faceless.icon.reset();
    volumes::mount(faceless);
    volumes::mount(volumeWithRole("System", roles({"System"})));
    CHECK(test.volumes().empty());
    auto unsure = volume("/unsure", "Unsure");
    unsure.browsable.reset();
    volumes::mount(unsure);
    CHECK(test.volumes() == Names{"Unsure"});
}

TEST_CASE("a hidden volume that is mounted already is listed all the same")
{
    BrowserTest test;
    auto hidden = volume("/hidden", "Hidden");
    hidden.browsable = false;
    volumes::add(hidden);
    test.open();
    CHECK(test.volumes() == Names{"Hidden"});
}

TEST_CASE("unmounting the selected volume lists the one that is selected then")
{
    TwoVolumes test;
    volumes::unmount("/one");
    CHECK(test.volumes() == Names{"Two"});
    CHECK(test.selectedVolume() == "Two");
    CHECK(test.names() == Names{"b"});
    volumes::unmount("/two");
    CHECK(test.volumes().empty());
    CHECK(test.rows().empty());
    CHECK(test.controller->selectedDisk() == nullptr);
    CHECK(test.placeholder() == "No volume that can keep local snapshots is mounted.");
}

TEST_CASE("unmounting the last one of several while it is selected selects the one before")
{
    TwoVolumes test;
    test.choose(1);
    volumes::unmount("/two");
    CHECK(test.selectedVolume() == "One");
    CHECK(test.names() == Names{"a"});
}

TEST_CASE("unmounting another volume than the selected one keeps the selection and lists nothing anew")
{
    BrowserTest test;
    volumes::add(volume("/one", "One"));
    volumes::add(volume("/two", "Two"));
    volumes::add(volume("/three", "Three"));
    snapshots::set("/two", snapshotsNamed({"b"}));
    test.open();
    test.choose(1);
    const int opened = snapshots::timesOpened();
    volumes::unmount("/one");
    CHECK(test.volumes() == Names{"Two", "Three"});
    CHECK(test.selectedVolume() == "Two");
    CHECK(test.controller->selectedDisk()->URL() == "/two");
    volumes::unmount("/three");
    CHECK(test.selectedVolume() == "Two");
    CHECK(test.names() == Names{"b"});
    CHECK(snapshots::timesOpened() == opened);
}

TEST_CASE("unmounting what is not in the list changes nothing")
{
    BrowserTest test;
    volumes::add(volume("/one", "One"));
    test.open();
    volumes::unmount("/elsewhere");
    CHECK(test.volumes() == Names{"One"});
}

TEST_CASE("renaming keeps the selection, lists nothing anew, and the volume is known by its new path")
{
    TwoVolumes test;
    test.choose(1);
    const int opened = snapshots::timesOpened();
    volumes::rename("/two", "/second", "Second");
    CHECK(test.volumes() == Names{"One", "Second"});
    CHECK(test.selectedVolume() == "Second");
    CHECK(test.names() == Names{"b"});
    CHECK(snapshots::timesOpened() == opened);
    CHECK(test.controller->selectedDisk()->URL() == "/second");
    CHECK(test.controller->selectedDisk()->name() == "Second");
    volumes::unmount("/two");
    CHECK(test.volumes() == Names{"One", "Second"});
    volumes::unmount("/second");
    CHECK(test.volumes() == Names{"One"});
}

TEST_CASE("renaming what is not in the list changes nothing")
{
    BrowserTest test;
    volumes::add(volume("/one", "One"));
    test.open();
    volumes::rename("/elsewhere", "/one", "Else");
    CHECK(test.volumes() == Names{"One"});
}

TEST_CASE("two volumes of one name are two items, which their paths tell apart while there are two")
{
    BrowserTest test;
    volumes::add(volume("/one", "Same"));
    volumes::add(volume("/two", "Same"));
    volumes::add(volume("/other", "Other"));
    snapshots::set("/two", snapshotsNamed({"b"}));
    test.open();
    CHECK(test.volumes() == Names{"Same (/one)", "Same (/two)", "Other"});
    test.choose(1);
    CHECK(test.names() == Names{"b"});
    volumes::rename("/two", "/moved", "Same");
    CHECK(test.volumes() == Names{"Same (/one)", "Same (/moved)", "Other"});
    volumes::rename("/other", "/other", "Same");
    CHECK(test.volumes() == Names{"Same (/one)", "Same (/moved)", "Same (/other)"});
    volumes::rename("/other", "/other", "Third");
    volumes::unmount("/one");
    CHECK(test.volumes() == Names{"Same", "Third"});
    volumes::mount(volume("/four", "Third"));
    CHECK(test.volumes() == Names{"Same", "Third (/other)", "Third (/four)"});
    volumes::unmount("/other");
    volumes::unmount("/four");
    CHECK(test.volumes() == Names{"Same"});
    volumes::rename("/moved", "/two", "Same");
    CHECK(test.controller->selectedDisk()->URL() == "/two");
}

TEST_CASE("a controller that is gone hears of nothing any more")
{
    BrowserTest test;
    test.open();
    test.controller.reset();
    volumes::mount(volume("/one", "One"));
    CHECK(snapshots::timesOpened() == 0);
}
