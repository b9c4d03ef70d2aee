#include "platform/SystemInformation.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <cctype>
#include <doctest/doctest.h>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>

namespace {

constexpr const char* versionVariable = "BREVANE_SYSTEM_VERSION";

bool isExactly(platform::OperatingSystemVersion version)
{
    auto next = version;
    ++next.patch;
    return platform::isOperatingSystemAtLeast(version) && !platform::isOperatingSystemAtLeast(next);
}

} // namespace

TEST_CASE("the system is 14.0.0 unless the environment says otherwise")
{
    EnvironmentVariable variable(versionVariable);
    CHECK(isExactly({14, 0, 0}));
    CHECK(platform::offersOperatingSystemQuery());
    variable.put("10.12.6");
    CHECK(isExactly({10, 12, 6}));
    variable.put("13");
    CHECK(isExactly({13, 0, 0}));
    variable.put("10.13");
    CHECK(isExactly({10, 13, 0}));
}

TEST_CASE("a malformed version is as good as none")
{
    for (const char* text : {"", ".", "10.", "10..1", "ten", "10.12.6.1", "-10.9.5", "10.-9.5", "10.9.5 ", " 10.9.5",
                             "10,9,5", "99999999999999999999.0.0"}) {
        EnvironmentVariable variable(versionVariable, text);
        CAPTURE(text);
        CHECK(isExactly({14, 0, 0}));
    }
}

TEST_CASE("versions are compared number by number")
{
    EnvironmentVariable variable(versionVariable, "10.12.6");
    CHECK(platform::isOperatingSystemAtLeast({10, 9, 9}));
    CHECK(platform::isOperatingSystemAtLeast({9, 99, 99}));
    CHECK(platform::isOperatingSystemAtLeast({10, 0, 0}));
    CHECK_FALSE(platform::isOperatingSystemAtLeast({10, 12, 7}));
    CHECK_FALSE(platform::isOperatingSystemAtLeast({10, 13, 0}));
    CHECK_FALSE(platform::isOperatingSystemAtLeast({11, 0, 0}));
}

TEST_CASE("the version query is there from 10.10 on")
{
    EnvironmentVariable variable(versionVariable, "10.9.5");
    CHECK_FALSE(platform::offersOperatingSystemQuery());
    variable.put("10.10.0");
    CHECK(platform::offersOperatingSystemQuery());
    variable.put("11.0.0");
    CHECK(platform::offersOperatingSystemQuery());
}

TEST_CASE("the home folder is HOME, otherwise the account's, without a slash at the end")
{
    EnvironmentVariable home("HOME", "/home/someone/");
    CHECK(platform::homeDirectory() == "/home/someone");
    home.put(std::nullopt);
    CHECK(platform::homeDirectory() == ::getpwuid(::geteuid())->pw_dir);
}

TEST_CASE("the bundle version is the release with the number of the build")
{
    const auto version = platform::bundleVersion();
    CAPTURE(version);
    CHECK(std::ranges::count(version, '.') == 3);
    CHECK(std::ranges::all_of(version, [](unsigned char c) { return std::isdigit(c) || c == '.'; }));
}

TEST_CASE("the process, a forked one too, and its user are the system's")
{
    CHECK(platform::processIdentifier() == ::getpid());
    CHECK(inForkedProcess([] { return platform::processIdentifier() == ::getpid() ? "its own" : "its parent's"; })
          == "its own");
    CHECK(platform::userIdentifier() == ::getuid());
    CHECK(platform::effectiveUserIdentifier() == ::geteuid());
}

TEST_CASE("files and folders exist, dangling links do not")
{
    TemporaryDirectory folder;
    auto file = folder.write("file", "");
    CHECK(platform::fileExists(file));
    CHECK(platform::fileExists(folder.path()));
    CHECK_FALSE(platform::fileExists(folder.file("none")));
    std::filesystem::create_symlink(folder.file("none"), folder.file("link"));
    CHECK_FALSE(platform::fileExists(folder.file("link")));
}
