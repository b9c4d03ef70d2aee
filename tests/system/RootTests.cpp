#include "platform/Root.h"
#include "platform/SystemInformation.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ForkedProcess.h"

#include <doctest/doctest.h>
#include <unistd.h>

TEST_CASE("without a variable the product's paths stand below the folder that it is installed in")
{
    EnvironmentVariable variable("BREVANE_ROOT");
    CHECK(platform::systemRoot() == "/opt/brevane");
    CHECK(platform::systemPath("/Library/Logs/Brevane") == "/opt/brevane/Library/Logs/Brevane");
    CHECK_FALSE(platform::usesSandboxStore());
    variable.put("");
    CHECK(platform::systemRoot() == "/opt/brevane");
}

TEST_CASE("the variable names another root, with or without a slash at its end")
{
    EnvironmentVariable variable("BREVANE_ROOT", "/srv/sandbox");
    CHECK(platform::systemPath("/usr/bin/log") == "/srv/sandbox/usr/bin/log");
    CHECK(platform::usesSandboxStore());
    variable.put("/srv/sandbox//");
    CHECK(platform::systemPath("/usr/bin/log") == "/srv/sandbox/usr/bin/log");
    variable.put("/");
    CHECK(platform::systemPath("/usr/bin/log") == "/usr/bin/log");
    variable.put("/opt/brevane/");
    CHECK_FALSE(platform::usesSandboxStore());
}

TEST_CASE("a relative root is taken from the current folder")
{
    EnvironmentVariable variable("BREVANE_ROOT", "build/root");
    char folder[4096];
    REQUIRE(::getcwd(folder, sizeof folder));
    CHECK(platform::systemRoot() == std::string(folder) + "/build/root");
}

TEST_CASE("a root that the program fixes wins over the variable")
{
    EnvironmentVariable variable("BREVANE_ROOT", "/srv/sandbox");
    CHECK(inForkedProcess([] {
              platform::setSystemRoot("/srv/other/");
              return platform::systemPath("/Library");
          })
          == "/srv/other/Library");
    CHECK(inForkedProcess([] {
              platform::setSystemRoot(platform::installedRoot());
              return platform::systemRoot() + (platform::usesSandboxStore() ? " sandbox" : " installed");
          })
          == "/opt/brevane installed");
}
