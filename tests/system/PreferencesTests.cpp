#include "platform/Preferences.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>

namespace {

struct PreferencesFixture {
    void write(std::string_view content) const
    {
        _root.write("Library/Preferences/com.apple.TimeMachine.plist", content);
    }
    static std::optional<platform::PropertyList> value(const std::string& key)
    {
        return platform::preferenceValue(key, "com.apple.TimeMachine");
    }

    TemporaryDirectory _root;
    EnvironmentVariable _variable{"BREVANE_ROOT", _root.path()};
};

} // namespace

TEST_CASE_FIXTURE(PreferencesFixture, "preferences are read from the domain's file below the root")
{
    write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
          "<key>AutoBackup</key><true/><key>RequiresACPower</key><integer>0</integer></dict></plist>");
    CHECK(value("AutoBackup") == platform::PropertyList(true));
    CHECK(value("RequiresACPower") == platform::PropertyList(0));
    CHECK_FALSE(value("Unknown"));
    CHECK_FALSE(platform::preferenceValue("AutoBackup", "com.apple.Other"));
}

TEST_CASE_FIXTURE(PreferencesFixture, "a change of the file shows in the next reading")
{
    write("{ AutoBackup = 1; }");
    CHECK(value("AutoBackup"));
    write("{ }");
    CHECK_FALSE(value("AutoBackup"));
}

TEST_CASE_FIXTURE(PreferencesFixture, "preferences that are missing, damaged or no dictionary are nothing")
{
    CHECK_FALSE(value("AutoBackup"));
    for (const char* content :
         {"", "bplist00 not really", "<plist><dict><key>AutoBackup</key>", "( 1, 2 )", "AutoBackup"}) {
        CAPTURE(content);
        write(content);
        CHECK_FALSE(value("AutoBackup"));
    }
}
