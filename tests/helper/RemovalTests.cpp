#include "helper/linux/installation/FileTree.h"
#include "helper/linux/installation/RemovalPlan.h"
#include "platform/Error.h"
#include "tests/helper/support/DescriptorLimit.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <utility>

using helper::RemovalPlan;

namespace files = std::filesystem;

namespace {

std::string reasonOf(const platform::Result<void>& result)
{
    return result ? "" : platform::localizedDescription(result.error());
}

bool isThere(const std::string& path)
{
    return files::symlink_status(path).type() != files::file_type::not_found;
}

// A folder in which nothing can be made or removed, as long as it lasts.
class FixedFolder {
public:
    explicit FixedFolder(std::string path)
        : _path(std::move(path)),
          _isFixed(::geteuid() == 0 && ChildProcess({"chattr", "+i", _path}).wait() == 0)
    {
    }
    ~FixedFolder() { release(); }
    FixedFolder(const FixedFolder&) = delete;
    FixedFolder& operator=(const FixedFolder&) = delete;

    bool isFixed() const { return _isFixed; }
    void release()
    {
        if (std::exchange(_isFixed, false))
            ChildProcess({"chattr", "-i", _path}).wait();
    }

private:
    std::string _path;
    bool _isFixed;
};

} // namespace

TEST_CASE("a plan removes its files, links that lead where it says, and folders that are empty by then")
{
    const TemporaryDirectory folder;
    RemovalPlan plan;
    plan.addFile(folder.write("full/file", ""));
    plan.addFile(folder.file("full/none"));
    plan.addFile(folder.file("none/none"));
    plan.addLink(folder.file("link"), "full/file");
    plan.addLink(folder.file("other"), "full/file");
    plan.addLink(folder.file("longer"), "full");
    plan.addLink(folder.write("no-link", ""), "full");
    files::create_symlink("full/file", folder.file("link"));
    files::create_symlink("elsewhere", folder.file("other"));
    files::create_symlink("full/file", folder.file("longer"));
    files::create_directories(folder.file("empty/inner"));
    folder.write("full/somebody's", "");
    for (const char* name : {"empty/inner", "empty", "full", "none"})
        plan.addFolder(folder.file(name));
    CHECK(plan.check().has_value());
    CHECK(isThere(folder.file("full/file"))); // it has only looked
    CHECK(plan.carryOut().has_value());
    for (const char* name : {"full/file", "link", "empty"})
        CHECK_FALSE_MESSAGE(isThere(folder.file(name)), name);
    for (const char* name : {"full/somebody's", "other", "longer", "no-link"})
        CHECK_MESSAGE(isThere(folder.file(name)), name);
}

TEST_CASE("what cannot be removed is told first, and a plan that goes on removes the rest")
{
    const TemporaryDirectory folder;
    RemovalPlan plan;
    const auto inTheWay = folder.file("folder");
    files::create_directory(inTheWay);
    plan.addFile(folder.write("first", ""));
    plan.addFile(inTheWay);
    plan.addFile(folder.file("folder too"));
    plan.addFile(folder.write("last", ""));
    files::create_directory(folder.file("folder too"));
    const auto text = "'" + inTheWay + "' could not be removed. Is a directory.";
    CHECK(reasonOf(plan.check()) == text);
    CHECK(isThere(folder.file("first")));
    CHECK(reasonOf(plan.carryOut()) == text);
    CHECK_FALSE(isThere(folder.file("first")));
    CHECK_FALSE(isThere(folder.file("last")));
}

TEST_CASE("a link in a folder that is fixed cannot be removed, and is told before anything is removed")
{
    const TemporaryDirectory folder;
    const auto link = folder.file("fixed/link");
    files::create_directory(folder.file("fixed"));
    files::create_symlink("target", link);
    files::create_symlink("elsewhere", folder.file("fixed/other"));
    FixedFolder fixed(folder.file("fixed"));
    if (!fixed.isFixed()) {
        MESSAGE("SKIPPED: no folder can be fixed here");
        return;
    }
    RemovalPlan plan;
    plan.addLink(folder.file("fixed/other"), "target"); // another one's
    CHECK(plan.check().has_value());
    plan.addLink(link, "target");
    const auto text = "'" + link + "' could not be removed. Operation not permitted.";
    CHECK(reasonOf(plan.check()) == text);
    CHECK(reasonOf(plan.carryOut()) == text);
    fixed.release();
    CHECK(plan.check().has_value());
    CHECK(plan.carryOut().has_value());
    CHECK_FALSE(isThere(link));
}

TEST_CASE("a tree is removed with all that is in it, but through no link")
{
    const TemporaryDirectory folder;
    folder.write("tree/a/b/c", "");
    folder.write("outside/kept", "");
    files::create_directories(folder.file("tree/empty"));
    files::create_symlink("../outside", folder.file("tree/link"));
    CHECK(helper::removeTree(folder.file("tree")).has_value());
    CHECK_FALSE(isThere(folder.file("tree")));
    CHECK(isThere(folder.file("outside/kept")));
    CHECK(helper::removeTree(folder.file("tree")).has_value()); // it is removed already
    files::create_symlink("outside", folder.file("tree"));
    CHECK_FALSE(helper::removeTree(folder.file("tree")).has_value());
    CHECK(isThere(folder.file("outside/kept")));
}

TEST_CASE("of a tree everything goes that can, and the first reason is told")
{
    const TemporaryDirectory folder;
    for (const char* name : {"tree/a", "tree/fixed/kept", "tree/z/z"})
        folder.write(name, "");
    FixedFolder fixed(folder.file("tree/fixed"));
    if (!fixed.isFixed()) {
        MESSAGE("SKIPPED: no folder can be fixed here");
        return;
    }
    CHECK(helper::removeTree(folder.file("tree")) == std::unexpected(EPERM));
    CHECK(isThere(folder.file("tree/fixed/kept")));
    CHECK_FALSE(isThere(folder.file("tree/a")));
    CHECK_FALSE(isThere(folder.file("tree/z")));
}

TEST_CASE("a tree that cannot be read is told with the system's reason, and stays")
{
    const TemporaryDirectory folder;
    folder.write("tree/file", "");
    {
        const DescriptorLimit one(1); // the folder itself, and none to list it
        CHECK(helper::removeTree(folder.file("tree")) == std::unexpected(EMFILE));
    }
    CHECK(isThere(folder.file("tree/file")));
    {
        const DescriptorLimit none(0);
        CHECK(helper::removeTree(folder.file("tree")) == std::unexpected(EMFILE));
        CHECK(helper::syncTree(folder.file("tree")) == std::unexpected(EMFILE));
    }
    CHECK(helper::syncTree(folder.file("tree")).has_value());
    CHECK(helper::syncTree(folder.file("none")) == std::unexpected(ENOENT));
}
