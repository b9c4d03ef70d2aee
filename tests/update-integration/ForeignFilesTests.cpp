#include "messaging/BRVHelperMessager.h"
#include "tests/support/FileContent.h"
#include "tests/update-integration/UpdateMachine.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <unistd.h>

namespace files = std::filesystem;

namespace {

void write(const std::string& path, const std::string& content)
{
    files::create_directories(files::path(path).parent_path());
    std::ofstream stream(path);
    REQUIRE((stream << content).flush());
}

void update(UpdateMachine& machine)
{
    machine.offer("2.0");
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    REQUIRE(machine.waitForTrial());
}

// What is left of versions that were replaced.
std::vector<std::string> remainders(const std::string& root)
{
    std::vector<std::string> found;
    for (const auto& entry : files::directory_iterator(root + "/Library")) {
        if (entry.path().filename().string().starts_with(".com.zerkolin.brevane"))
            found.push_back(entry.path());
    }
    return found;
}

// A shell that does this in a mount namespace of its own and then becomes the helper; none where that cannot be.
ChildProcess::Arguments inOwnMounts(const std::string& commands)
{
    if (::geteuid() != 0 || ChildProcess({"unshare", "-m", "mount", "-t", "tmpfs", "none", "/mnt"}).wait() != 0)
        return {};
    return {"unshare", "-m", "--propagation", "private", "sh", "-ec", commands + "\nexec \"$0\" \"$@\""};
}

} // namespace

TEST_CASE("an update keeps foreign files, folders and links, at the same place and as they are")
{
    UpdateMachine machine;
    machine.start();
    write(machine.product() + "/share/mine", "mine");
    write(machine.product() + "/share/only-in-1.0/deeper/mine", "deep");
    files::create_directories(machine.product() + "/empty/emptier");
    files::create_directories(machine.product() + "/bin/empty");
    files::create_symlink("/nonexistent", machine.product() + "/share/dangling");
    files::permissions(machine.product() + "/empty", files::perms(0700));
    update(machine);
    CHECK(contentOfFile(machine.product() + "/share/mine") == "mine");
    CHECK(contentOfFile(machine.product() + "/share/only-in-1.0/deeper/mine") == "deep");
    CHECK_FALSE(files::exists(machine.product() + "/share/only-in-1.0/file"));
    CHECK(files::is_directory(machine.product() + "/empty/emptier"));
    CHECK(files::status(machine.product() + "/empty").permissions() == files::perms(0700));
    CHECK(files::is_directory(machine.product() + "/bin/empty"));
    CHECK(files::read_symlink(machine.product() + "/share/dangling") == "/nonexistent");
    CHECK(remainders(machine.root()).empty());
}

TEST_CASE("a foreign file whose name the new version has too is kept beside it, and the log says where")
{
    UpdateMachine machine;
    machine.start();
    const auto place = machine.product() + "/share/only-in-2.0/file";
    write(place, "mine");
    write(place + ".kept", "older");
    update(machine);
    CHECK(contentOfFile(place) == "2.0");
    std::set<std::string> kept;
    for (const auto& entry : files::directory_iterator(files::path(place).parent_path()))
        kept.insert(contentOfFile(entry.path()));
    CHECK(kept == std::set<std::string>{"2.0", "mine", "older"});
    CHECK(machine.log().contains("The new version has a '" + place + "' of its own; what was there is now '" + place
                                 + ".kept"));
    CHECK(remainders(machine.root()).empty());
}

TEST_CASE("an update touches nothing that a foreign link in a folder's place leads to, and no folder in a file's place")
{
    UpdateMachine machine;
    machine.start();
    const auto outside = machine.file("outside");
    files::rename(machine.product() + "/share", outside);
    files::create_symlink(outside, machine.product() + "/share");
    files::remove(machine.product() + "/bin/log");
    write(machine.product() + "/bin/log/mine", "mine");
    const auto before = treeBelow(outside);
    update(machine);
    CHECK(treeBelow(outside) == before);
    CHECK(files::read_symlink(machine.product() + "/share.kept") == outside);
    CHECK(contentOfFile(machine.product() + "/bin/log.kept/mine") == "mine");
    CHECK(contentOfFile(machine.product() + "/share/text") == "the text of version 2.0");
}

TEST_CASE("an update removes nothing on a disk or mount below the product's folder, and the next start tidies up")
{
    UpdateMachine machine;
    const auto product = machine.product();
    write(machine.file("bound/share/text"), "bound");
    for (const char* name : {"/disk", "/share/bound", "/mine/disk"})
        files::create_directories(product + name);
    const auto command = inOwnMounts("mount -t tmpfs none " + product + "/disk\nmount -t tmpfs none " + product
                                     + "/mine/disk\nmount --bind " + machine.file("bound") + " " + product
                                     + "/share/bound\nmkdir " + product + "/disk/folder\necho a >" + product
                                     + "/disk/folder/file\necho b >" + product + "/mine/disk/file");
    if (command.empty()) {
        MESSAGE("SKIPPED: nothing can be mounted here");
        return;
    }
    machine.start(command);
    const auto seen = "/proc/" + std::to_string(machine.helperProcess()) + "/root";
    REQUIRE(contentOfFile(seen + product + "/disk/folder/file") == "a\n");
    update(machine);
    CHECK(machine.waitForHelper("2.0"));

    // A mount itself cannot be moved, a folder that holds one can.
    const auto left = remainders(machine.root());
    REQUIRE(left.size() == 1);
    CHECK(contentOfFile(seen + left[0] + "/disk/folder/file") == "a\n");
    CHECK(contentOfFile(seen + left[0] + "/share/bound/share/text") == "bound");
    CHECK(contentOfFile(seen + product + "/mine/disk/file") == "b\n");
    CHECK(contentOfFile(machine.file("bound/share/text")) == "bound");
    for (const char* name : {"/disk", "/share/bound"})
        CHECK(machine.log().contains("'" + left[0] + name
                                     + "' could not be moved to the new version, and stays where it is."));

    // Here nothing is mounted.
    machine.killHelper();
    machine.start();
    CHECK(machine.waitForTrial());
    CHECK(remainders(machine.root()).empty());
    CHECK(files::is_directory(product + "/disk"));
    CHECK(files::is_directory(product + "/share/bound"));
}

TEST_CASE("a link that only the new version has comes with it, but never in the place of what somebody else put there")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    machine.makePackage(machine.keyPath(), "2.0", "more-links");
    machine.serveFeed({{"Version", "2.0"}, {"HumanVersion", "2"}, {"Package", "Brevane.pkg"}});
    write(machine.root() + "/usr/bin/brevane", "another program");
    files::remove(machine.root() + "/usr/bin/log");
    write(machine.root() + "/usr/bin/log", "another tool");
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    REQUIRE(machine.waitForTrial());
    CHECK(contentOfFile(machine.root() + "/usr/bin/brevane") == "another program");
    CHECK(contentOfFile(machine.root() + "/usr/bin/log") == "another tool");
    CHECK(contentOfFile(machine.root() + "/usr/share/text") == "the text of version 2.0");
    CHECK(machine.log().contains("'" + machine.root() + "/usr/bin/brevane' could not be made. File exists."));

    // It goes with the version that had it, and so does the folder that was made for it.
    machine.offer("2.1");
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    REQUIRE(machine.waitForTrial());
    CHECK_FALSE(files::is_symlink(machine.root() + "/usr/share/text"));
    CHECK(contentOfFile(machine.root() + "/usr/bin/brevane") == "another program");
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK_FALSE(files::exists(machine.root() + "/usr/share"));
}
