#include "helper/HelperOptions.h"
#include "helper/linux/installation/FileTree.h"
#include "helper/linux/installation/InstallationManifest.h"
#include "helper/linux/installation/WrittenFiles.h"
#include "helper/update/Download.h"
#include "helper/update/UpdateConfiguration.h"
#include "helper/update/UpdateFeed.h"
#include "helper/update/VersionNumber.h"
#include "platform/PropertyListCoding.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <cstdint>
#include <doctest/doctest.h>
#include <expected>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace helper;

using platform::Array;
using platform::Dictionary;

TEST_CASE("versions are compared number by number, and zeros at the end do not count")
{
    const auto version = [](const char* text) { return VersionNumber::parse(text); };
    CHECK(version("1.0") == version("1"));
    CHECK(version("1.0.0.1") > version("1"));
    CHECK(version("1.10") > version("1.9"));
    CHECK(version("2") > version("1.999999"));
    CHECK(version("0.1") < version("0.1.1"));
    CHECK(version("1.2.3.4.5.6.7.8"));
    for (const char* text :
         {"", ".", "1.", ".1", "1..1", "1.x", "-1", "+1", " 1", "1 ", "4294967296", "1.2.3.4.5.6.7.8.9", "1.0b"})
        CHECK_FALSE(version(text));
}

TEST_CASE("a path inside is made of names alone")
{
    for (const char* path : {"a", "a/b", "..a", "a..", "...", ".a/b."})
        CHECK(isPathInside(path));
    for (const char* path : {"", "/", "/a", "a/", "a//b", ".", "..", "a/..", "a/../b", "../a", "./a", "a/."})
        CHECK_FALSE(isPathInside(path));
    CHECK(isPathInside(std::string(255, 'n')));
    CHECK_FALSE(isPathInside(std::string(256, 'n')));
    const auto deep = [](int depth) {
        std::string path = "d";
        for (int count = 1; count < depth; ++count)
            path += "/d";
        return path;
    };
    CHECK(isPathInside(deep(64)));
    CHECK_FALSE(isPathInside(deep(65)));
    std::string longest = std::string(255, 'n');
    while (longest.size() < 4095 - 256)
        longest += "/" + std::string(255, 'n');
    longest += "/" + std::string(100, 'n');
    longest += "/" + std::string(4094 - longest.size(), 'n');
    CHECK(isPathInside(longest));
    CHECK_FALSE(isPathInside(longest + "n"));
    CHECK_FALSE(isPathInside(std::string_view("a\0b", 3)));
}

TEST_CASE("a link inside goes up no further than the folder, and only at its beginning")
{
    CHECK(isLinkInside("a", "b"));
    CHECK(isLinkInside("a/b", "../c"));
    CHECK(isLinkInside("a/b/c", "../../d/e"));
    CHECK_FALSE(isLinkInside("a", "../b"));
    CHECK_FALSE(isLinkInside("a/b", "../../c"));
    CHECK_FALSE(isLinkInside("a/b", "c/../d"));
    CHECK_FALSE(isLinkInside("a/b", "/c"));
    CHECK_FALSE(isLinkInside("a/b", ".."));
    CHECK_FALSE(isLinkInside("a/b", ""));
}

TEST_CASE("an address means what it means beside the feed, and is never less trustworthy")
{
    const std::string feed = "https://updates.example/brevane/update.plist";
    CHECK(Download::resolve("Brevane.pkg", feed) == "https://updates.example/brevane/Brevane.pkg");
    CHECK(Download::resolve("/Brevane.pkg", feed) == "https://updates.example/Brevane.pkg");
    CHECK(Download::resolve("https://other.example/a", feed) == "https://other.example/a");
    CHECK_FALSE(Download::resolve("http://updates.example/a", feed));
    CHECK_FALSE(Download::resolve("file:///etc/passwd", feed));
    CHECK_FALSE(Download::resolve("gopher://updates.example/a", feed));
    CHECK_FALSE(Download::resolve("file:///etc/passwd", "http://updates.example/"));
    CHECK(Download::resolve("https://updates.example/a", "http://updates.example/") == "https://updates.example/a");
    CHECK(Download::resolve("Brevane.pkg", "file:///srv/update.plist") == "file:///srv/Brevane.pkg");
}

TEST_CASE("a feed's texts have up to 2048 bytes, and its numbers their ranges; what it does not say is usual")
{
    const auto read = [](const char* key, platform::PropertyList value) {
        Dictionary feed{{"Version", "2.0"}, {"HumanVersion", "Two"}, {"Package", "Brevane.pkg"}};
        feed.set(key, std::move(value));
        return UpdateFeed::informationInFeed(*platform::binaryPropertyList(feed), "https://updates.example/feed");
    };
    const auto usual = read("Unknown", 1);
    REQUIRE(usual);
    CHECK(usual->version == VersionNumber::parse("2"));
    CHECK(usual->package == "https://updates.example/Brevane.pkg");
    CHECK(usual->size == 0);
    CHECK(usual->share == 100);
    CHECK(usual->reply == Dictionary{{"Version", "2.0"}, {"HumanVersion", "Two"}});
    for (const char* key : {"HumanVersion", "Package"}) {
        CHECK(read(key, std::string(2048, 'x')));
        CHECK_FALSE(read(key, std::string(2049, 'x')));
        CHECK_FALSE(read(key, ""));
    }
    constexpr std::int64_t largest = std::int64_t(1) << 30;
    CHECK(read("Size", largest)->size == std::uint64_t(largest));
    CHECK_FALSE(read("Size", largest + 1));
    CHECK_FALSE(read("Size", -1));
    for (const int share : {0, 1, 100})
        CHECK(read("Share", share)->share == share);
    CHECK_FALSE(read("Share", 101));
    CHECK_FALSE(read("Share", -1));
    CHECK_FALSE(read("Share", "100"));
    CHECK(read("URL", "https://updates.example/by-hand")->reply.contains("URL"));
}

TEST_CASE("a machine keeps its place in a roll-out, and has another in the next one")
{
    std::set<int> places;
    for (int version = 0; version < 200; ++version) {
        auto text = std::to_string(version);
        auto place = UpdateFeed::placeOfMachine(text);
        CHECK((place >= 0 && place < 100));
        CHECK(place == UpdateFeed::placeOfMachine(text));
        places.insert(place);
    }
    CHECK(places.size() > 50);
}

TEST_CASE("a list of an installation is read as it was written, and one that names anything else is refused")
{
    const TemporaryDirectory folder;
    InstallationManifest manifest{"1.0", "One", {"a", "b/c/d", "b/e"}, {}, {"."}};
    manifest.links = {{"usr/bin/log", "../../Library/Brevane/bin/log"},
                      {"Library/LaunchDaemons/x", "../Brevane/LaunchDaemons/x"}};
    REQUIRE(manifest.writeToFolder(folder.path()).has_value());
    auto read = InstallationManifest::inFolder(folder.path());
    REQUIRE(read);
    CHECK(read->version == "1.0");
    CHECK(read->files == manifest.files);
    CHECK(read->links == manifest.links);
    CHECK(read->folders == manifest.folders);
    CHECK(read->innerFolders() == std::vector<std::string>{"b/c", "b"});

    const auto isTaken = [&](const char* key, platform::PropertyList value) {
        Dictionary record{{"Version", "1"}, {"HumanVersion", "1"}};
        record.set(key, std::move(value));
        auto bytes = *platform::binaryPropertyList(record);
        folder.write("installation.plist", std::string(bytes.begin(), bytes.end()));
        return InstallationManifest::inFolder(folder.path()).has_value();
    };
    CHECK(isTaken("Files", Array{"a"}));
    for (const char* path : {"../a", "/a", ".", "", "a/../b"})
        CHECK_FALSE(isTaken("Files", Array{path}));
    CHECK_FALSE(isTaken("Files", Array{1}));
    CHECK_FALSE(isTaken("Folders", Array{"../a"}));
    for (const auto& [link, target] :
         {std::pair{"usr/bin/x", "/etc/passwd"}, std::pair{"usr/bin/x", "../../etc/passwd"},
          std::pair{"../x", "Library/Brevane/a"}, std::pair{"usr/bin/log", "../../Library/Brevane/bin/other"},
          std::pair{"usr", "Library/Brevane/usr"}, std::pair{"Library/Preferences/x", "../Brevane/Preferences/x"},
          std::pair{"var/db/x", "../../Library/Brevane/db/x"}, std::pair{"usr/bin/x", "../../Library/Brevane/../a"},
          std::pair{"usr/bin/x", "../../../Library/Brevane/a"}, std::pair{"Library/Brevane/x", "../Brevane/a"}})
        CHECK_FALSE(isTaken("Links", Dictionary{{link, target}}));
    CHECK_FALSE(isTaken("Version", "new"));
    CHECK_FALSE(InstallationManifest::inFolder(folder.file("none")));
}

TEST_CASE("only an edition in its own place writes the system's rules by itself")
{
    const auto options = [](std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "helper");
        return HelperOptions::inArguments(static_cast<int>(arguments.size()), arguments.data());
    };
    CHECK(options({})->root == "/opt/brevane");
    CHECK(options({})->rulesFolder == "/etc/polkit-1/rules.d");
    CHECK(options({"--root", "/opt/brevane"})->rulesFolder == "/etc/polkit-1/rules.d");
    CHECK(options({"--root", "/srv"})->rulesFolder.empty());
    CHECK(options({"--root", "/srv", "--rules", "/srv/rules"})->rulesFolder == "/srv/rules");
    CHECK(options({})->updates.feed.starts_with("https://"));
    CHECK(options({"--updates", "/nonexistent"}).error()
          == "The file '/nonexistent' is missing, or others may write it.");
    for (const auto& arguments : std::vector<std::vector<const char*>>{{"--root"}, {"--other", "x"}, {"x"}})
        CHECK(options(arguments).error().empty());
}

TEST_CASE("the files that the product writes are known with what was kept and left of them, and no others")
{
    const TemporaryDirectory root;
    const EnvironmentVariable variable("BREVANE_ROOT", root.path());
    const EnvironmentVariable home("HOME", root.file("home"));
    std::set<std::string> expected;
    const auto write = [&](const std::string& folder, const std::string& name) {
        return root.write(folder + "/" + name, "");
    };
    const auto writeWithRemainders = [&](const std::string& folder, const std::string& name) {
        for (const auto& file : {name, name + ".damaged", name + ".damaged-2", "." + name + ".AbCdEf"})
            expected.insert(write(folder, file));
    };
    for (const char* name : {"scheduler", "updates", "rights", "program"})
        writeWithRemainders("Library/Preferences", std::string("com.zerkolin.brevane.") + name + ".plist");
    for (const char* name : {"state.plist", "snapshots.plist", "backup-job.plist", "backup-run.plist"})
        writeWithRemainders("var/db/brevane", name);
    for (const char* program : {"scheduler", "application", "post-update"}) {
        for (const char* end : {".log", ".0.log", ".4.log"})
            expected.insert(write("Library/Logs/Brevane", std::string(program) + end));
    }
    for (const char* name : {"com.zerkolin.other.plist", "com.zerkolin.brevane.scheduler.plist2", "state.plist"})
        write("Library/Preferences", name);
    for (const char* name : {"other.plist", "state.plist.bak", "scheduler.log"})
        write("var/db/brevane", name);
    for (const char* name : {"other.log", "scheduler.5.log", "scheduler.00.log", "scheduler.log.gz"})
        write("Library/Logs/Brevane", name);
    write("home/Library/Logs/Brevane", "application.log");
    const auto own = write("home/Library/Logs/Brevane", "scheduler.log");
    if (::geteuid() != 0)
        expected.insert(own);

    const auto files = writtenFiles();
    CHECK(std::set<std::string>(files.begin(), files.end()) == expected);
    CHECK(files.size() == expected.size());
}

namespace {

Dictionary updatesWith(const char* key, platform::PropertyList value)
{
    Dictionary record{{"Feed", "https://updates.example/update.plist"}, {"PublicKey", platform::Data(32, 7)}};
    record.set(key, std::move(value));
    return record;
}

std::expected<UpdateConfiguration, std::string> updatesIn(const std::string& text, mode_t mode = 0600)
{
    const TemporaryDirectory folder;
    const auto path = folder.write("updates.plist", text);
    REQUIRE(::chmod(path.c_str(), mode) == 0);
    auto configuration = UpdateConfiguration::inFile(path);
    if (!configuration) // the folder has a new name each time
        configuration.error().replace(configuration.error().find(path), path.size(), "FILE");
    return configuration;
}

std::expected<UpdateConfiguration, std::string> updatesIn(const platform::PropertyList& list, mode_t mode = 0600)
{
    const auto bytes = platform::binaryPropertyList(list);
    REQUIRE(bytes.has_value());
    return updatesIn(std::string(bytes->begin(), bytes->end()), mode);
}

} // namespace

TEST_CASE("a file that names a feed and a key of 32 bytes says where updates come from")
{
    const auto plain = updatesIn(updatesWith("Unknown", 1), 0644);
    REQUIRE(plain.has_value());
    CHECK(plain->feed == "https://updates.example/update.plist");
    CHECK(plain->key == UpdateConfiguration::PublicKey{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7,
                                                       7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7});
    CHECK(plain->authorities.empty());
    CHECK(updatesIn(updatesWith("Authorities", "/etc/ca.pem"))->authorities == "/etc/ca.pem");

    const std::string nothingNamed = "The file 'FILE' does not name a feed and a public key of 32 bytes.";
    const platform::Data shortKey(31, 7);
    const platform::Data longKey(33, 7);
    for (const auto& list : std::vector<platform::PropertyList>{
             Array{1}, Dictionary(), Dictionary{{"Feed", "https://updates.example"}},
             Dictionary{{"PublicKey", platform::Data(32, 7)}}, updatesWith("Feed", 1), updatesWith("PublicKey", "text"),
             updatesWith("PublicKey", shortKey), updatesWith("PublicKey", longKey),
             updatesWith("PublicKey", platform::Data()), updatesWith("Unknown", std::string(65536, 'x'))})
        CHECK(updatesIn(list).error() == nothingNamed);
    for (const char* text : {"", "bplist00", "<plist>"})
        CHECK(updatesIn(std::string(text)).error() == nothingNamed);
}

TEST_CASE("a file that others may write says nothing of updates")
{
    for (const mode_t mode : {0620, 0602, 0666, 0777})
        CHECK(updatesIn(updatesWith("Unknown", 1), mode).error()
              == "The file 'FILE' is missing, or others may write it.");
    CHECK(updatesIn(updatesWith("Unknown", 1), 0755).has_value());
}

TEST_CASE("times of updates are taken within their bounds, and are the usual ones otherwise")
{
    struct Row {
        const char* key;
        std::chrono::seconds UpdateConfiguration::* time;
        std::int64_t least;
        std::int64_t most;
        std::int64_t usual;
    };
    constexpr std::int64_t day = 86'400;
    for (const auto& [key, time, least, most, usual] :
         {Row{"Patience", &UpdateConfiguration::patience, 1, 3600, 30},
          Row{"Interval", &UpdateConfiguration::interval, 1, 366 * day, day},
          Row{"Keeping", &UpdateConfiguration::keeping, 0, 3600, 60},
          Row{"Trial", &UpdateConfiguration::trial, 1, 3600, 60}}) {
        INFO(std::string(key));
        const auto taken = [&](platform::PropertyList value) {
            const auto read = updatesIn(updatesWith(key, std::move(value)));
            return read ? (*read.*time).count() : -1;
        };
        CHECK((*updatesIn(updatesWith("Unknown", 1)).*time).count() == usual);
        CHECK(taken(least) == least);
        CHECK(taken(least + 1) == least + 1);
        CHECK(taken(most) == most);
        for (const auto value : {least - 1, most + 1, std::int64_t(-100), std::int64_t(1) << 60})
            CHECK(taken(value) == usual);
    }
}
