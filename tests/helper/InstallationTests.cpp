#include "helper/HelperOptions.h"
#include "helper/installation/FileTree.h"
#include "helper/installation/InstallationManifest.h"
#include "helper/update/Download.h"
#include "helper/update/UpdateFeed.h"
#include "helper/update/VersionNumber.h"
#include "platform/PropertyListCoding.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <set>

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
    CHECK_FALSE(isPathInside(std::string(300, 'n')));
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
