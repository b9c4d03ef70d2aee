#include "helper/AutoUpdatesStore.h"
#include "helper/SettingsStore.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"
#include "protocol/ScheduleRanges.h"
#include "tests/helper/SettingsRecords.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <random>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace helper;

using platform::Dictionary;
using platform::PropertyList;

namespace {

std::string asText(const platform::Data& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

std::string binaryText(const PropertyList& value)
{
    auto bytes = platform::binaryPropertyList(value);
    REQUIRE(bytes.has_value());
    return asText(*bytes);
}

std::optional<PropertyList> stored(const std::string& path)
{
    auto bytes = platform::readFile(path);
    if (!bytes)
        return std::nullopt;
    auto value = platform::propertyListWithData(*bytes);
    return value ? std::optional(*value) : std::nullopt;
}

void writeText(const std::string& path, const std::string& text)
{
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file) {
        std::fputs(text.c_str(), file);
        std::fclose(file);
    }
}

// A mount namespace of the calling process's own, with more than one way to get it.
bool enterMountNamespace()
{
    auto user = ::getuid();
    auto group = ::getgid();
    if (::unshare(CLONE_NEWNS) != 0) {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return false;
        writeText("/proc/self/setgroups", "deny");
        writeText("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        writeText("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool mountSmallDisk(const std::string& folder)
{
    return enterMountNamespace() && ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

void fillDisk(const std::string& folder)
{
    auto file = ::open((folder + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::array<char, 512> block{};
    while (::write(file, block.data(), block.size()) > 0) { }
    ::close(file);
}

std::string applyOnFullDisk(const std::string& folder)
{
    if (!mountSmallDisk(folder))
        return "no disk";
    auto path = folder + "/settings.plist";
    SettingsStore store(path);
    auto old = intervalSettings({{"Hours", 3}});
    if (!store.setSettings(old))
        return "the first record was not stored";
    fillDisk(folder);
    auto written = store.setSettings(intervalSettings({{"Hours", 4}}));
    if (written)
        return "the second record was stored";
    if (*store.settings() != old || stored(path) != PropertyList(old))
        return "the old record is not served";
    return written.error().domain + " " + std::to_string(written.error().code) + " "
        + platform::localizedDescription(written.error());
}

} // namespace

TEST_CASE("a fresh store serves the defaults and writes nothing")
{
    TemporaryDirectory folder;
    SettingsStore store(folder.file("settings.plist"));
    CHECK(*store.settings() == defaultScheduleSettings());
    CHECK_FALSE(stored(folder.file("settings.plist")));
}

TEST_CASE("a stored record is the whole file, a binary property list, and is served by the next store")
{
    TemporaryDirectory folder;
    auto path = folder.file("settings.plist");
    auto record = intervalSettings({{"Minutes", 90}});
    SettingsStore store(path);
    REQUIRE(store.setSettings(record).has_value());
    CHECK(*store.settings() == record);
    CHECK(stored(path) == PropertyList(record));
    auto bytes = platform::readFile(path);
    REQUIRE(bytes.has_value());
    CHECK(asText(*bytes).starts_with("bplist00"));
    CHECK(*SettingsStore(path).settings() == record);
}

TEST_CASE("a store knows whether a record was ever stored, over restarts and whatever the record says")
{
    TemporaryDirectory folder;
    auto path = folder.file("settings.plist");
    {
        SettingsStore store(path);
        CHECK_FALSE(store.wasApplied());
        CHECK_FALSE(SettingsStore(path).wasApplied());
        REQUIRE(store.setSettings(defaultScheduleSettings()).has_value());
        CHECK(store.wasApplied());
    }
    CHECK(SettingsStore(path).wasApplied());
}

TEST_CASE("a stored record that lacks values or is marked as disabled is served as it is")
{
    TemporaryDirectory folder;
    Dictionary record{{"Disabled", true}, {"Backups", true}, {"BackupsMode", "Interval"}};
    auto path = folder.write("settings.plist", binaryText(record));
    CHECK(*SettingsStore(path).settings() == record);
}

TEST_CASE("a stored record of a later version is served with the keys that this one does not know")
{
    TemporaryDirectory folder;
    auto record = intervalSettings({{"Minutes", 90}, {"Months", 2}});
    record.set("Colour", "blue");
    auto path = folder.write("settings.plist", binaryText(record));
    CHECK(*SettingsStore(path).settings() == record);
    CHECK(stored(path) == PropertyList(record));
}

TEST_CASE("the reply that is kept ready follows the settings")
{
    TemporaryDirectory folder;
    SettingsStore store(folder.file("settings.plist"));
    for (int minutes : {61, 62}) {
        auto record = intervalSettings({{"Minutes", minutes}});
        REQUIRE(store.setSettings(record).has_value());
        auto reply = store.reply();
        CHECK(platform::propertyListWithData(std::get<platform::Data>(reply.at("payload"))) == PropertyList(record));
    }
}

TEST_CASE("a damaged stored file is kept beside, and the defaults are served")
{
    auto whole = binaryText(defaultScheduleSettings());
    for (const auto& text : {std::string(), std::string("garbage \xff"), whole.substr(0, whole.size() / 2),
                             binaryText(platform::Array{1}), binaryText(settingsWith("Backups", "yes"))}) {
        TemporaryDirectory folder;
        auto path = folder.write("settings.plist", text);
        SettingsStore store(path);
        CHECK(*store.settings() == defaultScheduleSettings());
        CHECK(platform::readFile(path) == std::unexpected(ENOENT));
        auto kept = platform::readFile(path + ".damaged");
        REQUIRE(kept.has_value());
        CHECK(asText(*kept) == text);
    }
}

TEST_CASE("every damaged file is kept, and a good one can be stored after it")
{
    TemporaryDirectory folder;
    auto path = folder.file("settings.plist");
    for (const auto* text : {"first", "second", "third"}) {
        folder.write("settings.plist", std::string(text) + " \xff");
        SettingsStore store(path);
        REQUIRE(store.setSettings(intervalSettings({{"Days", 2}})).has_value());
    }
    CHECK(asText(platform::readFile(path + ".damaged").value()).starts_with("first"));
    CHECK(asText(platform::readFile(path + ".damaged-2").value()).starts_with("second"));
    CHECK(asText(platform::readFile(path + ".damaged-3").value()).starts_with("third"));
    CHECK(*SettingsStore(path).settings() == intervalSettings({{"Days", 2}}));
}

TEST_CASE("at most 99 damaged files are kept, and then the newest one takes the last one's place")
{
    TemporaryDirectory folder;
    const auto path = folder.write("settings.plist", "newest \xff");
    const auto kept = [&](int number) { return path + ".damaged" + (number > 1 ? "-" + std::to_string(number) : ""); };
    for (int number = 1; number < 99; ++number)
        folder.write(kept(number).substr(folder.path().size() + 1), "earlier");
    SUBCASE("with room for the last") { }
    SUBCASE("with none")
    {
        folder.write("settings.plist.damaged-99", "last");
    }
    const SettingsStore store(path);
    CHECK(asText(platform::readFile(kept(98)).value()) == "earlier");
    CHECK(asText(platform::readFile(kept(99)).value()) == "newest \xff");
    CHECK_FALSE(platform::fileExists(kept(100)));
    CHECK_FALSE(platform::fileExists(path));
}

TEST_CASE("what an interrupted write left behind goes when the store starts")
{
    TemporaryDirectory folder;
    auto left = folder.write(".settings.plist.AbCdEf", "half a rec");
    SettingsStore store(folder.file("settings.plist"));
    CHECK(platform::readFile(left) == std::unexpected(ENOENT));
}

TEST_CASE("a store killed at any moment leaves one record or the other")
{
    TemporaryDirectory folder;
    auto path = folder.file("settings.plist");
    auto first = intervalSettings({{"Hours", 1}});
    auto second = calendarSettings({Dictionary{{"Hour", 9}, {"Minute", 30}}});
    REQUIRE(SettingsStore(path).setSettings(first).has_value());
    std::mt19937 random(20'261'122);
    std::uniform_int_distribution<useconds_t> microseconds(0, 8'000);
    for (int round = 0; round < 200; ++round) {
        auto child = ::fork();
        if (child == 0) {
            SettingsStore store(path);
            while (store.setSettings(second) && store.setSettings(first)) { }
            ::_exit(1);
        }
        ::usleep(microseconds(random));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        auto found = stored(path);
        REQUIRE(found);
        CHECK((*found == PropertyList(first) || *found == PropertyList(second)));
    }
}

TEST_CASE("on a full disk a record is refused with the system's error, and the old one stays")
{
    TemporaryDirectory folder;
    auto observed = inForkedProcess([&] { return applyOnFullDisk(folder.path()); });
    if (observed == "no disk") {
        MESSAGE("SKIPPED: a small disk cannot be mounted here");
        return;
    }
    CHECK(observed
          == "NSPOSIXErrorDomain " + std::to_string(ENOSPC)
              + " The settings could not be saved. No space left on device.");
}

TEST_CASE("a record that cannot be written leaves what is served")
{
    TemporaryDirectory folder;
    SettingsStore store(folder.file("none/settings.plist"));
    auto written = store.setSettings(intervalSettings({{"Hours", 4}}));
    REQUIRE_FALSE(written.has_value());
    CHECK(written.error().domain == platform::POSIXErrorDomain);
    CHECK(written.error().code == ENOENT);
    CHECK(*store.settings() == defaultScheduleSettings());
}

TEST_CASE("automatic updates are off until they are turned on, and stay so over a restart")
{
    TemporaryDirectory folder;
    auto path = folder.file("updates.plist");
    CHECK_FALSE(AutoUpdatesStore(path).enabled());
    REQUIRE(AutoUpdatesStore(path).setEnabled(true).has_value());
    CHECK(stored(path) == PropertyList(Dictionary{{"Enabled", true}}));
    CHECK(AutoUpdatesStore(path).enabled());
    REQUIRE(AutoUpdatesStore(path).setEnabled(false).has_value());
    CHECK_FALSE(AutoUpdatesStore(path).enabled());
}

TEST_CASE("a damaged file of automatic updates reads as off and is kept")
{
    TemporaryDirectory folder;
    auto path = folder.write("updates.plist", "{ Enabled = maybe; }");
    CHECK_FALSE(AutoUpdatesStore(path).enabled());
    CHECK(platform::readFile(path + ".damaged").has_value());
}
