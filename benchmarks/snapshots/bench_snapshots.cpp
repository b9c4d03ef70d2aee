// Listing 5,000 snapshots of one btrfs volume, as the window does it, as `btrfs subvolume list -s` does it and with
// libbtrfsutil's iterator, by turns; the time from the listed records to the painted table; and opening the window
// among 3,000 mounts, beside reading their table once. Prints "SKIPPED: reason" where no btrfs can be mounted.

#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"
#include "platform/linux/ui/application/ApplicationInstance.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "platform/linux/ui/windows/WindowNative.h"
#include "tests/integration/snapshots/support/BtrfsVolume.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <btrfsutil.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <libmount/libmount.h>
#include <spawn.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr int SnapshotCount = 5000;
constexpr int MountCount = 3000;
constexpr int ManyRows = 50000;
constexpr int Rounds = 15;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "bench_snapshots: %s\n", what);
    std::exit(1);
}

double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Work>
double milliseconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// From the start of the process to its end, its output thrown away.
void listWithTool(const std::string& path)
{
    std::string arguments[] = {"btrfs", "subvolume", "list", "-s", path};
    char* pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                        arguments[3].data(), arguments[4].data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    int status = 1;
    if (posix_spawnp(&child, "btrfs", &actions, nullptr, pointers, environ) != 0 || waitpid(child, &status, 0) != child
        || status != 0)
        fail("btrfs subvolume list failed");
    posix_spawn_file_actions_destroy(&actions);
}

int listWithIterator(const std::string& path)
{
    constexpr std::uint64_t topOfFileSystem = 5;
    btrfs_util_subvolume_iterator* iterator = nullptr;
    if (btrfs_util_create_subvolume_iterator(path.c_str(), topOfFileSystem, 0, &iterator) != BTRFS_UTIL_OK)
        fail("the iterator could not be made");
    int count = 0;
    char* name = nullptr;
    struct btrfs_util_subvolume_info info; // a function has this name too
    while (btrfs_util_subvolume_iterator_next_info(iterator, &name, &info) == BTRFS_UTIL_OK) {
        std::free(name);
        ++count;
    }
    btrfs_util_destroy_subvolume_iterator(iterator);
    return count;
}

void mountOne(const std::string& path)
{
    mkdir(path.c_str(), 0755);
    if (mount("tmpfs", path.c_str(), "tmpfs", 0, "size=4k") != 0)
        fail("a folder could not be mounted");
}

void mountMany(const TemporaryDirectory& folder)
{
    for (int i = 0; i < MountCount; ++i)
        mountOne(folder.path() + "/" + std::to_string(i));
}

void unmountMany(const TemporaryDirectory& folder)
{
    for (int i = 0; i < MountCount; ++i) {
        while (umount(folder.file(std::to_string(i)).c_str()) == 0) { }
    }
}

// As the library has it, with nothing made of it.
void readMountTable()
{
    libmnt_table* const table = mnt_new_table();
    if (mnt_table_parse_mtab(table, nullptr) != 0 || mnt_table_get_nents(table) < MountCount)
        fail("the mount table could not be read");
    mnt_unref_table(table);
}

// A table of the controller's own, so that only it is measured.
class ShownTable {
public:
    explicit ShownTable(BRVLocalSnapshotsController& controller) : _controller(controller)
    {
        _controller.showWindow();
        for (auto* const window : QApplication::topLevelWidgets()) {
            if (auto* const table = window->findChild<platform::ui::DataTable*>())
                _table = table;
        }
        QApplication::processEvents();
    }

    int rowCount() const { return _table->rows().rowCount(); }

    // Asks the data source anew for so many rows, of which it may have fewer, and paints.
    void show(int rows)
    {
        auto& model = _table->rows();
        const auto text = model.textOfCell;
        model.textOfCell = [text](const QString& column, int row) { return text(column, row % SnapshotCount); };
        _table->reload(rows);
        _table->window()->repaint();
        QApplication::processEvents();
        model.textOfCell = text;
    }

private:
    BRVLocalSnapshotsController& _controller;
    platform::ui::DataTable* _table = nullptr;
};

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    if (const auto reason = reasonWithoutBtrfs(); !reason.empty()) {
        std::printf("SKIPPED: %s\n", reason.c_str());
        return 0;
    }
    const BtrfsVolume volume("Benchmark", 2048);
    for (int i = 0; i < SnapshotCount; ++i) {
        if (!platform::createBtrfsSnapshot(volume.path(), "2026-11-21-" + std::to_string(100000 + i)))
            fail("a snapshot could not be made");
    }

    platform::ui::ApplicationInstance application(argc, argv);
    const auto controller = BRVLocalSnapshotsController::create();
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> iterated;
    for (int round = 0; round < Rounds; ++round) {
        theirs.push_back(milliseconds([&] { listWithTool(volume.path()); }));
        iterated.push_back(milliseconds([&] {
            if (listWithIterator(volume.path()) != SnapshotCount)
                fail("the iterator did not find every snapshot");
        }));
        ours.push_back(milliseconds([&] {
            const auto list = controller->snapshotsAtURL(volume.path(), nullptr);
            if (!list || list->size() != SnapshotCount)
                fail("not every snapshot was listed");
        }));
    }

    ShownTable table(*controller);
    if (table.rowCount() != SnapshotCount)
        fail("the window shows another volume"); // this machine's own are in the way
    std::vector<double> shown;
    for (int round = 0; round < Rounds; ++round)
        shown.push_back(milliseconds([&] { table.show(SnapshotCount); }));
    std::vector<double> manyShown;
    for (int round = 0; round < Rounds; ++round)
        manyShown.push_back(milliseconds([&] { table.show(ManyRows); }));
    table.show(SnapshotCount);

    const TemporaryDirectory folder;
    mountMany(folder);
    std::vector<double> opened;
    std::vector<double> read;
    for (int round = 0; round < Rounds; ++round) {
        read.push_back(milliseconds(readMountTable));
        const auto window = BRVLocalSnapshotsController::create();
        // Opening it with nothing new in the table is what it always takes.
        mountOne(folder.path() + "/0");
        opened.push_back(milliseconds([&] {
            window->showWindow();
            QApplication::processEvents();
        }));
    }
    unmountMany(folder);

    std::printf("snapshots.table50k %.2f ms\n", median(manyShown));
    std::printf("snapshots.open3000 %.2f ms\nsnapshots.mounts3000 %.2f ms\n", median(opened), median(read));
    std::printf("snapshots.ours %.2f ms\nsnapshots.tool %.2f ms\nsnapshots.iterator %.2f ms\nsnapshots.table %.2f ms\n",
                median(ours), median(theirs), median(iterated), median(shown));
    return 0;
}
