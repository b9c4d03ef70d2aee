#include "platform/Folder.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <doctest/doctest.h>
#include <filesystem>
#include <sys/stat.h>

TEST_CASE("A folder is made with those above it, as the umask has them")
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

TEST_CASE("A folder that is there already is a success, with a slash at its end too")
{
    TemporaryDirectory folder;
    CHECK(platform::createFolder(folder.path()));
    CHECK(platform::createFolder(folder.path() + "/"));
    CHECK(platform::createFolder("/"));
    CHECK(platform::createFolder(folder.file("new/")));
    CHECK(std::filesystem::is_directory(folder.file("new")));
}

TEST_CASE("A folder that cannot be made says why")
{
    TemporaryDirectory folder;
    auto file = folder.write("file", "");
    CHECK(platform::createFolder(file).error() == ENOTDIR);
    CHECK(platform::createFolder(file + "/below").error() == ENOTDIR);
    CHECK(platform::createFolder("/proc/none/below").error() == ENOENT);
    CHECK(platform::createFolder("").error() == ENOENT);
}
