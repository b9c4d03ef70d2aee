#include "platform/PropertyListCoding.h"
#include "platform/UserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <sys/stat.h>

using platform::PropertyList;

namespace {

struct HomeFixture {
    std::string path() const { return _home.file("Library/Preferences/com.zerkolin.brevane.application.plist"); }
    std::string content() const { return contentOfFile(path()); }

    TemporaryDirectory _home;
    EnvironmentVariable _variable{"HOME", _home.path()};
};

} // namespace

TEST_CASE_FIXTURE(HomeFixture, "a user default that was never set is absent, and false as a boolean")
{
    CHECK_FALSE(platform::userDefault("DidAskAboutAutoUpdates"));
    CHECK_FALSE(platform::userDefaultBool("DidAskAboutAutoUpdates"));
    CHECK_FALSE(std::filesystem::exists(path()));
}

TEST_CASE_FIXTURE(HomeFixture, "user defaults are kept beside each other, each with its latest value")
{
    CHECK(platform::setUserDefault("DidAskAboutAutoUpdates", true));
    CHECK(platform::setUserDefault("Other", "text"));
    CHECK(platform::userDefaultBool("DidAskAboutAutoUpdates"));
    CHECK(platform::userDefault("Other") == PropertyList("text"));
    CHECK(platform::setUserDefault("DidAskAboutAutoUpdates", false));
    CHECK_FALSE(platform::userDefaultBool("DidAskAboutAutoUpdates"));
    CHECK(platform::userDefault("DidAskAboutAutoUpdates") == PropertyList(false));
    CHECK(content().starts_with("bplist00"));
}

TEST_CASE_FIXTURE(HomeFixture, "user defaults are for the user's eyes alone")
{
    CHECK(platform::setUserDefault("Key", 1));
    struct stat status{};
    REQUIRE(::stat(path().c_str(), &status) == 0);
    CHECK((status.st_mode & 07777) == 0600);
}

TEST_CASE_FIXTURE(HomeFixture, "user defaults that another program wrote as XML are read and kept")
{
    _home.write("Library/Preferences/com.zerkolin.brevane.application.plist",
                R"(<plist version="1.0"><dict><key>Theirs</key><integer>5</integer></dict></plist>)");
    CHECK(platform::setUserDefault("Mine", true));
    CHECK(platform::userDefault("Theirs") == PropertyList(5));
}

TEST_CASE_FIXTURE(HomeFixture, "damaged user defaults count as none and are replaced by the next change")
{
    for (const char* const damage : {"", "bplist00 but not really", "<plist><array/></plist>"}) {
        _home.write("Library/Preferences/com.zerkolin.brevane.application.plist", damage);
        CHECK_FALSE(platform::userDefault("Key"));
        CHECK(platform::setUserDefault("Key", true));
        CHECK(platform::userDefaultBool("Key"));
    }
}

TEST_CASE_FIXTURE(HomeFixture, "removing the user defaults forgets all of them for good")
{
    CHECK(platform::setUserDefault("Key", true));
    CHECK(platform::removeUserDefaults());
    CHECK_FALSE(platform::userDefault("Key"));
    CHECK_FALSE(std::filesystem::exists(path()));
    CHECK_FALSE(platform::setUserDefault("Key", true));
    CHECK_FALSE(std::filesystem::exists(path()));
    CHECK(platform::removeUserDefaults());
}

TEST_CASE_FIXTURE(HomeFixture, "user defaults that were never set can be removed")
{
    CHECK(platform::removeUserDefaults());
    CHECK_FALSE(std::filesystem::exists(path()));
}

TEST_CASE("without a home that can be written nothing is kept, and that is told")
{
    const EnvironmentVariable home("HOME", "/dev/null/home");
    CHECK_FALSE(platform::setUserDefault("Key", true));
    CHECK_FALSE(platform::userDefault("Key"));
    CHECK_FALSE(platform::removeUserDefaults());
}
