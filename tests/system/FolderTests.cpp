#include "platform/Folder.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>

TEST_CASE("a folder is made with those above it, as the umask has them")
{
    TemporaryDirectory folder;
    const auto mask = ::umask(027);
    CHECK(platform::createFolder(folder.file("a/b/c")));
    ::umask(mask);
    for (const char* name : {"a", "a/b", "a/b/c"}) {
        struct stat status{};
        REQUIRE(::stat(folder.file(name).c_str(), &status) == 0);
        CHECK((status.st_mode & 07777) == 0750);
    }
}

TEST_CASE("a folder that is there already is a success, with a slash at its end too")
{
    TemporaryDirectory folder;
    CHECK(platform::createFolder(folder.path()));
    CHECK(platform::createFolder(folder.path() + "/"));
    CHECK(platform::createFolder("/"));
    CHECK(platform::createFolder(folder.file("new/")));
    CHECK(std::filesystem::is_directory(folder.file("new")));
}

TEST_CASE("a folder that cannot be made says why")
{
    TemporaryDirectory folder;
    auto file = folder.write("file", "");
    CHECK(platform::createFolder(file).error() == ENOTDIR);
    CHECK(platform::createFolder(file + "/below").error() == ENOTDIR);
    CHECK(platform::createFolder("/proc/none/below").error() == ENOENT);
    CHECK(platform::createFolder("").error() == ENOENT);
}

TEST_CASE("removing a folder takes everything in it, and follows no link")
{
    TemporaryDirectory folder;
    folder.write("kept/file", "kept");
    folder.write("gone/a/b/file", "text");
    folder.write("gone/.hidden", "text");
    std::filesystem::create_directories(folder.file("gone/empty/deeper"));
    std::filesystem::create_symlink(folder.file("kept"), folder.file("gone/link"));
    std::filesystem::create_symlink("nowhere", folder.file("gone/dangling"));
    CHECK(platform::removeFolder(folder.file("gone")));
    CHECK_FALSE(std::filesystem::exists(folder.file("gone")));
    CHECK(std::filesystem::exists(folder.file("kept/file")));

    std::filesystem::create_symlink(folder.file("kept"), folder.file("link"));
    CHECK(platform::removeFolder(folder.file("link")));
    CHECK_FALSE(std::filesystem::is_symlink(folder.file("link")));
    CHECK(std::filesystem::exists(folder.file("kept/file")));
    CHECK(platform::removeFolder(folder.file("kept/file")));
    CHECK_FALSE(std::filesystem::exists(folder.file("kept/file")));
}

TEST_CASE("a very deep and a very wide folder are removed")
{
    TemporaryDirectory folder;
    std::string path = folder.file("gone");
    for (int depth = 0; depth < 200; ++depth)
        path += "/deeper";
    REQUIRE(platform::createFolder(path));
    for (int i = 0; i < 1000; ++i)
        folder.write("gone/file" + std::to_string(i), "");
    CHECK(platform::removeFolder(folder.file("gone")));
    CHECK_FALSE(std::filesystem::exists(folder.file("gone")));
}

TEST_CASE("removing a folder that is not there fails with ENOENT")
{
    TemporaryDirectory folder;
    CHECK(platform::removeFolder(folder.file("none")) == std::unexpected(ENOENT));
    CHECK(platform::removeFolder("") == std::unexpected(ENOENT));
}

TEST_CASE("what cannot be removed is told, and the rest is removed")
{
    TemporaryDirectory folder;
    folder.write("gone/busy/file", "text");
    folder.write("gone/other", "text");
    const auto busy = folder.file("gone/busy");
    if (::mount("none", busy.c_str(), "tmpfs", 0, nullptr) != 0) {
        MESSAGE("SKIPPED: a file system cannot be mounted here");
        return;
    }
    std::ofstream(busy + "/file") << "on another file system";
    CHECK(platform::removeFolder(folder.file("gone")) == std::unexpected(ENOTEMPTY));
    CHECK(std::filesystem::exists(busy + "/file"));
    CHECK_FALSE(std::filesystem::exists(folder.file("gone/other")));
    ::umount2(busy.c_str(), MNT_DETACH);
}
