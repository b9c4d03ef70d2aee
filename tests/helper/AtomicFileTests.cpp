#include "platform/AtomicFile.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <dirent.h>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using platform::Data;

namespace {

int entriesIn(const std::string& folder)
{
    int count = 0;
    auto* directory = ::opendir(folder.c_str());
    while (auto* entry = ::readdir(directory))
        count += std::string_view(entry->d_name) != "." && std::string_view(entry->d_name) != "..";
    ::closedir(directory);
    return count;
}

// Of one byte all through, so that a mixture of two shows.
Data content(std::uint8_t byte)
{
    return Data(20'000 + byte, byte);
}

bool isWhole(const Data& bytes)
{
    return !bytes.empty() && bytes == content(bytes.front());
}

pid_t startWriter(const std::string& path)
{
    auto child = ::fork();
    if (child != 0)
        return child;
    for (std::uint8_t byte = 1;; ++byte) {
        if (!platform::replaceFile(path, content(byte)))
            ::_exit(1);
    }
}

void killWriter(pid_t child)
{
    ::kill(child, SIGKILL);
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    CHECK(WIFSIGNALED(status)); // it was still writing
}

} // namespace

TEST_CASE("a replaced file has the new content and mode and leaves nothing beside it")
{
    TemporaryDirectory folder;
    auto path = folder.write("file", "old");
    REQUIRE(platform::replaceFile(path, content(1), 0640).has_value());
    CHECK(platform::readFile(path) == content(1));
    struct stat status{};
    REQUIRE(::stat(path.c_str(), &status) == 0);
    CHECK((status.st_mode & 07777) == 0640);
    CHECK(entriesIn(folder.path()) == 1);
}

TEST_CASE("the umask does not change the mode of a replaced file")
{
    TemporaryDirectory folder;
    auto before = ::umask(077);
    auto written = platform::replaceFile(folder.file("file"), content(1));
    ::umask(before);
    REQUIRE(written.has_value());
    struct stat status{};
    REQUIRE(::stat(folder.file("file").c_str(), &status) == 0);
    CHECK((status.st_mode & 07777) == 0644);
}

TEST_CASE("a file in a folder that is not there cannot be replaced")
{
    TemporaryDirectory folder;
    CHECK(platform::replaceFile(folder.file("none/file"), content(1)) == std::unexpected(ENOENT));
}

TEST_CASE("a failed replacement leaves the old file and nothing beside it")
{
    TemporaryDirectory folder;
    folder.write("file/inside", "a folder cannot be replaced by a file");
    CHECK_FALSE(platform::replaceFile(folder.file("file"), content(1)).has_value());
    CHECK(entriesIn(folder.path()) == 1);
    CHECK(platform::readFile(folder.file("file/inside")).has_value());
}

TEST_CASE("a writer killed at any moment leaves the old or the new content")
{
    TemporaryDirectory folder;
    auto path = folder.file("file");
    REQUIRE(platform::replaceFile(path, content(0)).has_value());
    std::mt19937 random(20'261'121);
    std::uniform_int_distribution<useconds_t> microseconds(0, 8'000);
    int changed = 0;
    for (int round = 0; round < 200; ++round) {
        auto before = platform::readFile(path);
        auto writer = startWriter(path);
        ::usleep(microseconds(random));
        killWriter(writer);
        auto after = platform::readFile(path);
        REQUIRE(after.has_value());
        CHECK(isWhole(*after));
        changed += after != before;
    }
    CHECK(changed > 0);
    platform::removeInterruptedReplacements(path);
    CHECK(entriesIn(folder.path()) == 1);
}

TEST_CASE("only what an interrupted replacement of the same file left is removed")
{
    TemporaryDirectory folder;
    for (const auto* name : {".a.plist.123456", ".a.plist.12345", ".a.plist.1234567", ".b.plist.123456", "a.plist"})
        folder.write(name, "");
    platform::removeInterruptedReplacements(folder.file("a.plist"));
    CHECK(entriesIn(folder.path()) == 4);
    CHECK(platform::readFile(folder.file(".a.plist.123456")) == std::unexpected(ENOENT));
}

TEST_CASE("a file is read whole or not at all")
{
    TemporaryDirectory folder;
    auto path = folder.write("file", std::string(100'000, 'x'));
    CHECK(platform::readFile(path, 100'000) == Data(100'000, 'x'));
    CHECK(platform::readFile(path, 99'999) == std::unexpected(EFBIG));
    CHECK(platform::readFile(folder.write("empty", "")) == Data());
    CHECK(platform::readFile(folder.file("none")) == std::unexpected(ENOENT));
}

TEST_CASE("what is not a regular file is not read, and does not hold the reader up")
{
    TemporaryDirectory folder;
    CHECK(platform::readFile(folder.path()) == std::unexpected(EINVAL));
    REQUIRE(::mkfifo(folder.file("pipe").c_str(), 0600) == 0);
    CHECK(platform::readFile(folder.file("pipe")) == std::unexpected(EINVAL));
}
