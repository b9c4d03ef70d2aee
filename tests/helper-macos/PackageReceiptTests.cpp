#include "helper/macos/packages/PackageReceipt.h"
#include "helper/macos/packages/PackageTools.h"
#include "helper/macos/packages/ReceiptRemoval.h"
#include "tests/helper-macos/StandInProgram.h"

#include <doctest/doctest.h>
#include <unistd.h>

using helper::PackageReceipt;
using helper::PackageTools;
using Paths = std::vector<std::string>;
using Signature = PackageTools::Signature;

namespace {

constexpr const char* information = "package-id: com.zerkolin.brevane\nversion: 1.2.3\nvolume: /\nlocation: /\n"
                                    "install-time: 1763800000\ngroups: com.example.group\n";

bool isThere(const std::string& path)
{
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

} // namespace

TEST_CASE("a receipt tells the version, where the package is and what it consists of")
{
    const auto receipt =
        PackageReceipt::inOutput(information, "Library\nLibrary/Brevane/b\nLibrary/Brevane\n\nLibrary/Brevane/a b\n");
    REQUIRE(receipt);
    CHECK(receipt->version == "1.2.3");
    CHECK(receipt->folder.empty());
    CHECK(receipt->paths == Paths{"Library", "Library/Brevane", "Library/Brevane/a b", "Library/Brevane/b"});
}

TEST_CASE("a receipt's paths are below its place on its volume")
{
    const auto folderOf = [](const std::string& volume, const std::string& location) {
        const auto receipt =
            PackageReceipt::inOutput("version: 1\nvolume: " + volume + "\nlocation: " + location + "\n", "a\n");
        REQUIRE(receipt);
        return receipt->folder;
    };
    CHECK(folderOf("/", "").empty());
    CHECK(folderOf("/", "Applications") == "/Applications");
    CHECK(folderOf("/", "/usr/local/") == "/usr/local");
    CHECK(folderOf("/Volumes/Data/", "Library") == "/Volumes/Data/Library");
    CHECK(folderOf("/", ".").empty());
    CHECK(PackageReceipt::inOutput("version: 1\nvolume: /\nlocation:\n", "a")->folder.empty());
}

TEST_CASE("a receipt that is not understood, or leads elsewhere, is none")
{
    for (const char* const text : {"", "version: 1\n", "version: 1\nvolume: /\n", "volume: /\nlocation: /\n",
                                   "version: \nvolume: /\nlocation: /\n", "version: 1\nvolume: x\nlocation: /\n",
                                   "version: 1\nvolume: /\nlocation: ../x\n", "inversion: 1\nvolume: /\nlocation: /\n"})
        CHECK_FALSE_MESSAGE(PackageReceipt::inOutput(text, "a").has_value(), text);
    for (const char* const files :
         {"/etc/passwd", "../etc", "a/../../b", "a//b", "a/", "./a", ".", "..", "a/.", "a/.."})
        CHECK_FALSE_MESSAGE(PackageReceipt::inOutput(information, files).has_value(), files);
    CHECK(PackageReceipt::inOutput(information, "a/..b\n...\n")->paths == Paths{"...", "a/..b"});
}

TEST_CASE("receipts are asked for and forgotten by the system's tool")
{
    const StandInProgram pkgutil("pkgutil");
    const PackageTools tools(pkgutil.path(), "/nowhere/installer");
    pkgutil.say("--pkg-info", information);
    pkgutil.say("--files", "Library\nLibrary/Brevane\n");
    const auto receipt = tools.receipt("com.zerkolin.brevane");
    REQUIRE(receipt);
    REQUIRE(*receipt);
    CHECK((*receipt)->paths == Paths{"Library", "Library/Brevane"});
    CHECK(tools.forget("com.zerkolin.brevane"));
    CHECK(pkgutil.calls()
          == "--pkg-info com.zerkolin.brevane\n--files com.zerkolin.brevane\n--forget com.zerkolin.brevane\n");

    pkgutil.complain("--forget", "No receipt for 'com.zerkolin.brevane' found at '/'.\n", 1);
    CHECK(tools.forget("com.zerkolin.brevane").error() == "No receipt for 'com.zerkolin.brevane' found at '/'");
    pkgutil.complain("--files", "The database is damaged.\n", 1);
    CHECK(tools.receipt("com.zerkolin.brevane").error() == "The database is damaged");
}

TEST_CASE("a package that is not installed has no receipt, which is no failure")
{
    const StandInProgram pkgutil("pkgutil");
    const PackageTools tools(pkgutil.path(), "/nowhere/installer");
    pkgutil.complain("--pkg-info", "No receipt for 'com.zerkolin.brevane' found at '/'.\n", 1);
    const auto receipt = tools.receipt("com.zerkolin.brevane");
    REQUIRE(receipt);
    CHECK_FALSE(*receipt);
    CHECK(PackageTools("/nowhere/pkgutil").receipt("x").error() == "there is no program '/nowhere/pkgutil'");
}

TEST_CASE("a package's signature is as good as the system says")
{
    const auto of = [](bool isSuccess, const std::string& status) {
        return PackageTools::signatureInOutput(isSuccess, "Package \"Brevane.pkg\":\n   Status: " + status + "\n");
    };
    CHECK(of(true, "signed by a developer certificate issued by Apple for distribution") == Signature::Good);
    CHECK(of(true, "signed by a certificate trusted by Mac OS X") == Signature::Good);
    CHECK(of(false, "signed by a certificate trusted by Mac OS X") == Signature::Bad);
    CHECK(of(true, "signed by untrusted certificate") == Signature::Bad);
    CHECK(of(true, "signed by a certificate that has since expired") == Signature::Bad);
    CHECK(of(false, "package is invalid (checksum did not verify)") == Signature::Bad);
    CHECK(of(false, "no signature") == Signature::Missing);
    CHECK(of(true, "no signature") == Signature::Missing);
    CHECK(PackageTools::signatureInOutput(true, "") == Signature::Bad);
}

TEST_CASE("a distribution tells the version of a package by its identifier")
{
    constexpr std::string_view text = "<installer-gui-script>\n<pkg-ref id=\"com.example\" version=\"9\"/>\n"
                                      "<pkg-ref id=\"com.zerkolin.brevane\"/>\n"
                                      "<pkg-ref id=\"com.zerkolin.brevane\" installKBytes=\"5\" version=\"1.2.4\" "
                                      "onConclusion=\"none\">#brevane.pkg</pkg-ref>\n</installer-gui-script>";
    CHECK(PackageTools::versionInDistribution(text, "com.zerkolin.brevane") == "1.2.4");
    CHECK(PackageTools::versionInDistribution(text, "com.example") == "9");
    CHECK_FALSE(PackageTools::versionInDistribution(text, "com.zerkolin"));
    CHECK_FALSE(PackageTools::versionInDistribution("<pkg-ref id=\"a\" version=\"\"/>", "a"));
    CHECK_FALSE(PackageTools::versionInDistribution("<pkg-ref id=\"a\" version=\"", "a"));
    CHECK_FALSE(PackageTools::versionInDistribution("<pkg-ref ", "a"));
    CHECK_FALSE(PackageTools::versionInDistribution("", "a"));
}

TEST_CASE("only folders of the product's own name, and those in them, are its own")
{
    CHECK(helper::isOwnFolder("Library/Brevane"));
    CHECK(helper::isOwnFolder("Applications/Brevane.app/Contents"));
    CHECK(helper::isOwnFolder("Library/Logs/com.zerkolin.brevane"));
    for (const char* const folder : {"Library", "Applications", "Library/LaunchDaemons", "usr/local",
                                     "Library/Brevane2", "Library/brevane", "Library/My Brevane"})
        CHECK_FALSE_MESSAGE(helper::isOwnFolder(folder), folder);
}

TEST_CASE("what a receipt names is removed, and nothing else")
{
    const TemporaryDirectory root;
    root.write("Applications/Brevane.app/Contents/Info.plist", "");
    root.write("Applications/Other.app/x", "");
    root.write("Library/Brevane/helper", "");
    root.write("Library/Brevane/mine", "");
    root.write("Library/LaunchDaemons/helper.plist", "");
    REQUIRE(::symlink("/nowhere", root.file("Library/link").c_str()) == 0);
    const PackageReceipt receipt{
        .version = "1",
        .folder = root.path(),
        .paths = {"Applications", "Applications/Brevane.app", "Applications/Brevane.app/Contents",
                  "Applications/Brevane.app/Contents/Info.plist", "Applications/Brevane.app/Contents/gone", "Library",
                  "Library/Brevane", "Library/Brevane/helper", "Library/LaunchDaemons",
                  "Library/LaunchDaemons/helper.plist", "Library/link"}};
    CHECK(helper::removeFilesOfReceipt(receipt, {"/helper"}));
    CHECK_FALSE(isThere(root.file("Applications/Brevane.app")));
    CHECK_FALSE(isThere(root.file("Library/Brevane/helper")));
    CHECK_FALSE(isThere(root.file("Library/LaunchDaemons/helper.plist")));
    CHECK_FALSE(isThere(root.file("Library/link")));
    CHECK(isThere(root.file("Library/Brevane/mine"))); // and so its folder
    CHECK(isThere(root.file("Applications/Other.app/x")));
    CHECK(isThere(root.file("Library/LaunchDaemons"))); // empty, but the system's
    CHECK(helper::removeFilesOfReceipt(receipt, {}));   // once more
}

TEST_CASE("nothing is removed through a link that somebody has put in the place of a folder")
{
    const TemporaryDirectory root;
    const TemporaryDirectory elsewhere;
    elsewhere.write("helper", "");
    root.write("Library/x", "");
    REQUIRE(::symlink(elsewhere.path().c_str(), root.file("Library/Brevane").c_str()) == 0);
    const PackageReceipt receipt{
        .version = "1", .folder = root.path(), .paths = {"Library", "Library/Brevane/helper", "Library/Brevane/y/z"}};
    CHECK(helper::removeFilesOfReceipt(receipt, {}));
    CHECK(isThere(elsewhere.file("helper")));
    CHECK(isThere(root.file("Library/Brevane")));
}

TEST_CASE("what cannot be removed is told, and what the next try needs stays")
{
    const TemporaryDirectory root;
    root.write("Library/Brevane/a", "");
    root.write("Library/Brevane/helper", "");
    root.write("Library/Brevane/z", "");
    const auto path = root.file("Library/Brevane/a");
    if (::system(("chattr +i '" + path + "' 2>/dev/null").c_str()) != 0) {
        MESSAGE("SKIPPED: no file can be made immutable here");
        return;
    }
    const PackageReceipt receipt{
        .version = "1",
        .folder = root.path(),
        .paths = {"Library/Brevane", "Library/Brevane/a", "Library/Brevane/helper", "Library/Brevane/z"}};
    const auto removed = helper::removeFilesOfReceipt(receipt, {"/helper"});
    CHECK(::system(("chattr -i '" + path + "'").c_str()) == 0);
    REQUIRE_FALSE(removed);
    CHECK(platform::localizedDescription(removed.error()).starts_with("'" + path + "' could not be removed."));
    CHECK_FALSE(isThere(root.file("Library/Brevane/z")));
    CHECK(isThere(root.file("Library/Brevane/helper")));
    CHECK(helper::removeFilesOfReceipt(receipt, {"/helper"}));
    CHECK_FALSE(isThere(root.file("Library/Brevane")));
}
