#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Authorization.h"
#include "protocol/ErrorCodes.h"
#include "tests/support/FileContent.h"
#include "tests/update-integration/UpdateMachine.h"

#include <cerrno>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace files = std::filesystem;
using platform::Dictionary;
using Transport = UpdateMachine::Transport;

namespace {

platform::ServiceReply install(UpdateMachine& machine)
{
    return machine.send(BRVMessageInstallUpdate);
}

// An install that has begun and waits for the rest of its package.
std::future<platform::ServiceReply> beginInstall(UpdateMachine& machine)
{
    machine.offer("2.0");
    machine.answer("Brevane.pkg", "hold");
    auto reply = machine.sendLater(BRVMessageInstallUpdate);
    REQUIRE(waitUntil([&] { return machine.isStaging(); }));
    return reply;
}

void checkUntouched(UpdateMachine& machine)
{
    CHECK(machine.wholeVersion() == "1.0");
    CHECK_FALSE(machine.isStaging());
    CHECK_FALSE(files::exists(machine.file("climbed")));
    CHECK_FALSE(files::exists(machine.root() + "/climbed"));
}

// The failure of an install is the updater's, with the cause below it.
void checkFailure(const platform::ServiceReply& reply, std::int64_t code, const char* causeDomain,
                  std::int64_t causeCode)
{
    auto error = errorIn(reply);
    CHECK(error.domain == ZRKUpdaterErrorDomain);
    CHECK(error.code == code);
    REQUIRE(error.underlying);
    CHECK(error.underlying->domain == causeDomain);
    CHECK(error.underlying->code == causeCode);
}

// What the helper writes at any time: logs, and what it knows of backups.
std::map<std::string, std::string> withoutRecords(std::map<std::string, std::string> tree)
{
    std::erase_if(tree,
                  [](const auto& entry) { return entry.first.ends_with(".log") || entry.first.starts_with("/var"); });
    return tree;
}

void change(const std::string& path, std::streamoff offset, char byte)
{
    std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(offset, offset < 0 ? std::ios::end : std::ios::beg).put(byte);
    REQUIRE(stream.flush());
}

} // namespace

TEST_CASE("an update replaces the installation, and the helper goes on as the new version")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    REQUIRE(recordIn(machine.send(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}})).contains("Applied"));
    const auto process = machine.helperProcess();
    CHECK(recordIn(install(machine)) == Dictionary{{"Applied", true}});
    CHECK(machine.wholeVersion() == "2.0");
    CHECK_FALSE(files::exists(machine.product() + "/share/only-in-1.0"));
    CHECK(machine.waitForTrial());

    // The same process runs the new program, with the settings of before.
    const auto program = "/proc/" + std::to_string(process) + "/exe";
    REQUIRE(waitUntil([&] {
        std::error_code failure;
        auto path = files::read_symlink(program, failure);
        return !failure && contentOfFile(program).ends_with("version 2.0") && machine.helperProcess() == process;
    }));
    REQUIRE(waitUntil([&] { return machine.send(BRVMessageGetAutoUpdates).has_value(); }));
    CHECK(recordIn(machine.send(BRVMessageGetAutoUpdates)) == Dictionary{{"Enabled", true}});
    CHECK(machine.log().contains("Running version 1.0."));
    const auto log = machine.log();
    std::size_t at = 0;
    for (const char* text : {"Installing version 2.0.\n", "The new version is installed.\n",
                             "The new version takes over.\n", "Running version 2.0.\n"}) {
        at = log.find(text, at);
        CHECK_MESSAGE(at != std::string::npos, text);
    }
    checkError(machine.send(BRVMessageCheckForUpdates), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
    checkError(install(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);

    machine.offer("2.1");
    CHECK(recordIn(install(machine)).contains("Applied"));
    CHECK(machine.wholeVersion() == "2.1");
}

TEST_CASE("what is installed belongs to the helper's user, with plain modes, whatever the package says")
{
    UpdateMachine machine;
    machine.start();
    const auto layout = machine.layoutOf("2.0");
    REQUIRE(::chmod((layout + "/Library/Brevane/bin/brevane").c_str(), 06777) == 0);
    REQUIRE(::chmod((layout + "/Library/Brevane/share/text").c_str(), 0666) == 0);
    machine.offer("2.0");
    REQUIRE(recordIn(install(machine)).contains("Applied"));
    for (const auto& [name, mode] :
         {std::pair{"", 040755}, std::pair{"/bin", 040755}, std::pair{"/bin/brevane", 0100755},
          std::pair{"/share/text", 0100644}, std::pair{"/installation.plist", 0100644}}) {
        struct stat status{};
        REQUIRE(::lstat((machine.product() + name).c_str(), &status) == 0);
        CHECK(status.st_mode == static_cast<mode_t>(mode));
        CHECK(status.st_uid == ::geteuid());
    }
}

TEST_CASE("what somebody else had put beside the product's files is still there after an update")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    std::ofstream(machine.product() + "/share/mine") << "mine";
    REQUIRE(recordIn(install(machine)).contains("Applied"));
    REQUIRE(machine.waitForTrial());
    CHECK(contentOfFile(machine.product() + "/share/mine") == "mine");
    files::remove(machine.product() + "/share/mine");
    CHECK(machine.wholeVersion() == "2.0");
}

TEST_CASE("a download that fails leaves the installation as it was")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    for (std::int64_t status : {403, 404, 500}) {
        machine.answer("Brevane.pkg", "status " + std::to_string(status));
        auto error = errorIn(install(machine));
        CHECK(error.code == ZRKUpdaterErrorDownload);
        CHECK(error.userInfo == Dictionary{{"status-code", status}});
        checkUntouched(machine);
    }
    machine.answer("Brevane.pkg", "status 429");
    checkError(install(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorTooManyRequests);
    machine.answer("Brevane.pkg", "cut 5000");
    checkFailure(install(machine), ZRKUpdaterErrorDownload, "NSURLErrorDomain", -1005);
    machine.answer("Brevane.pkg", "silent");
    checkFailure(install(machine), ZRKUpdaterErrorDownload, "NSURLErrorDomain", -1001);
    // Longer than the feed says.
    machine.answer("Brevane.pkg", "endless");
    checkFailure(install(machine), ZRKUpdaterErrorDownload, "NSURLErrorDomain", -1103);
    machine.answer("update.plist", "status 404");
    checkError(install(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
    checkUntouched(machine);

    machine.serveAgain("update.plist");
    machine.serveAgain("Brevane.pkg");
    CHECK(recordIn(install(machine)).contains("Applied"));
    CHECK(machine.wholeVersion() == "2.0");
}

TEST_CASE("over TLS a package is taken from a server that is vouched for, and from no other")
{
    {
        UpdateMachine machine(Transport::Trusted);
        machine.start();
        machine.offer("2.0");
        CHECK(recordIn(install(machine)).contains("Applied"));
        CHECK(machine.wholeVersion() == "2.0");
    }
    UpdateMachine machine(Transport::Foreign);
    machine.start();
    machine.offer("2.0");
    checkFailure(install(machine), ZRKUpdaterErrorUntrustedServer, "NSURLErrorDomain", -1202);
    checkUntouched(machine);
    // Also when only the package is on that server.
    machine.serveFeed({{"Version", "2.0"}, {"HumanVersion", "2"}, {"Package", machine.url("Brevane.pkg")}});
    machine.writeConfiguration({{"Feed", "file://" + machine.served("update.plist")}});
    machine.start();
    checkFailure(install(machine), ZRKUpdaterErrorUntrustedServer, "NSURLErrorDomain", -1202);
    checkUntouched(machine);
}

TEST_CASE("a package without a signature, with a damaged one or with somebody else's is refused")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    const auto package = machine.served("Brevane.pkg");
    const auto good = contentOfFile(package);
    const auto unsignedPackage = good.substr(0, good.size() - 72);
    for (const auto& content : {unsignedPackage, std::string(), std::string("short"), good + "x"}) {
        machine.serveFeed({{"Version", "2.0"}, {"HumanVersion", "2"}, {"Package", "Brevane.pkg"}});
        machine.serve("Brevane.pkg", content);
        checkFailure(install(machine), ZRKUpdaterErrorValidate, ZRKInstallerPackageErrorDomain,
                     ZRKInstallerPackageErrorNotSigned);
        checkUntouched(machine);
    }
    for (std::streamoff offset : {0L, 1000L, static_cast<long>(good.size() / 2), -73L, -72L, -10L}) {
        machine.serve("Brevane.pkg", good);
        const auto at = static_cast<std::size_t>(offset < 0 ? static_cast<long>(good.size()) + offset : offset);
        change(package, offset, static_cast<char>(good[at] ^ 1));
        checkFailure(install(machine), ZRKUpdaterErrorValidate, ZRKInstallerPackageErrorDomain,
                     ZRKInstallerPackageErrorInvalidSignature);
        checkUntouched(machine);
    }
    machine.publish({"key", machine.file("other.pem")});
    machine.makePackage(machine.file("other.pem"), "2.0", "good");
    checkFailure(install(machine), ZRKUpdaterErrorValidate, ZRKInstallerPackageErrorDomain,
                 ZRKInstallerPackageErrorInvalidSignature);
    checkUntouched(machine);
    machine.serve("Brevane.pkg", good);
    CHECK(recordIn(install(machine)).contains("Applied"));
}

TEST_CASE(
    "a package of another key is refused, and a configuration that others may write or that has no key is not taken")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    const auto feed = "file://" + machine.served("update.plist");
    machine.writeConfiguration({{"PublicKey", platform::Data(32, 7)}, {"Feed", feed}});
    machine.start();
    checkFailure(install(machine), ZRKUpdaterErrorValidate, ZRKInstallerPackageErrorDomain,
                 ZRKInstallerPackageErrorInvalidSignature);
    checkUntouched(machine);
    REQUIRE(::chmod(machine.file("updates.plist").c_str(), 0666) == 0);
    CHECK_THROWS(machine.start());
    REQUIRE(::chmod(machine.file("updates.plist").c_str(), 0644) == 0);
    machine.writeConfiguration({{"PublicKey", platform::Data(31, 7)}});
    CHECK_THROWS(machine.start());
}

TEST_CASE("a signed package that leads outside, is damaged or is not newer is refused, and nothing of it is left")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed({{"Version", "2.0"}, {"HumanVersion", "2"}, {"Package", "Brevane.pkg"}});
    const auto before = treeBelow(machine.root());
    const auto path = [](const std::string& name) { return "The path '" + name + "' in the package leads "; };
    const std::string outside = "outside of it.";
    const std::string notAsListed = "The package does not hold what its list says.";
    const std::string noFile = "'evil' in the package is neither a file nor a folder nor a symbolic link.";
    std::string deep = "d";
    for (int depth = 1; depth < 100; ++depth)
        deep += "/d";
    using Row = std::pair<const char*, std::string>;
    for (const auto& [kind, text] : {Row{"dots", path("../climbed") + outside},
                                     Row{"dots-inside", path("share/../../climbed") + outside},
                                     Row{"absolute", path(machine.file("climbed")) + outside},
                                     Row{"link-up", "The link 'evil' in the package leads outside of it."},
                                     Row{"link-absolute", "The link 'evil' in the package leads outside of it."},
                                     Row{"link-chain", "The link 'm' in the package leads outside of it."},
                                     Row{"through-link", path("way/file") + "through something that is no folder."},
                                     Row{"hard-link", noFile},
                                     Row{"device", noFile},
                                     Row{"pipe", noFile},
                                     Row{"twice", "'bin/brevane' is in the package twice."},
                                     Row{"deep", path(deep) + outside},
                                     Row{"long-name", path(std::string(300, 'n')) + outside},
                                     Row{"unlisted", notAsListed},
                                     Row{"missing", notAsListed},
                                     Row{"list-dots", notAsListed},
                                     Row{"list-less", notAsListed},
                                     Row{"list-link-out", notAsListed},
                                     Row{"list-link-over-settings", notAsListed},
                                     Row{"list-link-beside-settings", notAsListed},
                                     Row{"list-link-changed", notAsListed},
                                     Row{"list-link-nowhere", notAsListed},
                                     Row{"list-older", "The package holds version 0.9, which is not newer."},
                                     Row{"list-same", "The package holds version 1.0, which is not newer."},
                                     Row{"cut", "The package is damaged: truncated gzip input."},
                                     Row{"list-link-place", notAsListed},
                                     Row{"list-no-version", notAsListed},
                                     Row{"no-archive", "The package is damaged: it is no archive."},
                                     Row{"empty", "The package is damaged: it is no archive."}}) {
        CAPTURE(kind);
        machine.makePackage(machine.keyPath(), "2.0", kind);
        const auto reply = install(machine);
        checkFailure(reply, ZRKUpdaterErrorValidate, platform::POSIXErrorDomain, EBADMSG);
        CHECK(platform::localizedDescription(*errorIn(reply).underlying) == text);
        checkUntouched(machine);
    }
    CHECK(withoutRecords(treeBelow(machine.root())) == withoutRecords(before));
    machine.makePackage(machine.keyPath(), "2.0", "good");
    CHECK(recordIn(install(machine)).contains("Applied"));
    CHECK(machine.wholeVersion() == "2.0");
}

TEST_CASE("what was not installed cannot be updated or uninstalled")
{
    UpdateMachine machine;
    machine.offer("2.0");
    files::remove(machine.product() + "/installation.plist");
    machine.start();
    const auto before = treeBelow(machine.product());
    checkError(install(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorCannotUpdateNow);
    const auto reply = machine.send(BRVMessageUninstall);
    checkError(reply, platform::POSIXErrorDomain, ENOENT);
    CHECK(platform::localizedDescription(errorIn(reply))
          == "There is no installation below '" + machine.root() + "'. No such file or directory.");
    CHECK(treeBelow(machine.product()) == before);
}

TEST_CASE("an install waits for the end of a trial no longer than a trial takes")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Trial", 1}});
    machine.start();
    machine.offer("2.0");
    const auto staging = machine.root() + "/Library/.com.zerkolin.brevane.update";
    files::create_directory(staging);
    {
        ChildProcess holder({"flock", staging, "sh", "-c", "echo held; read line"});
        REQUIRE(holder.readLine() == "held");
        const auto reply = install(machine);
        checkFailure(reply, ZRKUpdaterErrorInstall, platform::POSIXErrorDomain, EBUSY);
        CHECK(platform::localizedDescription(*errorIn(reply).underlying)
              == "The version in place is still on trial. Device or resource busy.");
        CHECK(machine.wholeVersion() == "1.0");
        CHECK(files::is_empty(staging));
    }
    CHECK(waitUntil([&] { return install(machine).has_value() && machine.wholeVersion() == "2.0"; }));
}

TEST_CASE("an install needs the right to change settings")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        machine.authority().setAnswer(right, PolkitAuthority::Answer::Denied);
    checkError(install(machine), ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorValidateRights);
    checkUntouched(machine);
    CHECK(machine.authority().calls().size() == 2);
}

TEST_CASE("while a backup runs nothing is installed or removed, but a check is made")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    const auto backup = machine.startBackup();
    for (auto message : {BRVMessageInstallUpdate, BRVMessageUninstall})
        checkError(machine.send(message), BRVErrorDomain, BRVErrorBackupRunning);
    CHECK(recordIn(machine.send(BRVMessageCheckForUpdates)).contains("Version"));
    checkUntouched(machine);
    SUBCASE("until it is over")
    {
        backup->signal(SIGTERM);
    }
    SUBCASE("or until its program is killed")
    {
        backup->kill();
    }
    backup->wait();
    CHECK(recordIn(install(machine)).contains("Applied"));
}

TEST_CASE("while an install is under way others are refused, and settings are served and changed")
{
    UpdateMachine machine;
    machine.start();
    auto first = beginInstall(machine);
    for (auto message : {BRVMessageCheckForUpdates, BRVMessageInstallUpdate, BRVMessageUninstall})
        checkError(machine.send(message), BRVErrorDomain, BRVErrorUpdateRunning);
    auto settings = recordIn(machine.send(BRVMessageGetSettings));
    settings.set("AllowBattery", true);
    CHECK(recordIn(machine.send(BRVMessageApplySettings, settings)).contains("Applied"));
    CHECK(recordIn(machine.send(BRVMessageGetSettings)) == settings);
    CHECK(first.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
    machine.serve("Brevane.pkg.go", "");
    CHECK(recordIn(first.get()).contains("Applied"));
    CHECK(machine.wholeVersion() == "2.0");
    REQUIRE(waitUntil([&] { return machine.send(BRVMessageGetSettings).has_value(); }));
    CHECK(recordIn(machine.send(BRVMessageGetSettings)) == settings);
}

TEST_CASE("a helper that is told to stop during an install stops, and the next one begins afresh")
{
    UpdateMachine machine;
    machine.start();
    auto first = beginInstall(machine);
    machine.helper().signal(SIGTERM);
    CHECK(machine.helper().wait() == 0);
    CHECK_FALSE(first.get().has_value());
    CHECK(machine.wholeVersion() == "1.0");
    machine.start();
    checkUntouched(machine);
    CHECK(machine.log().contains("An update was interrupted. Version 1.0 is in place."));
}

TEST_CASE("on a full disk an install fails with the system's error, and the old version stays")
{
    const std::vector<std::string> unshare =
        ::geteuid() == 0 ? std::vector<std::string>{"unshare", "-m"} : std::vector<std::string>{"unshare", "-Urm"};
    auto attempt = unshare;
    attempt.insert(attempt.end(), {"mount", "-t", "tmpfs", "-o", "size=64k", "none", "/mnt"});
    if (ChildProcess(attempt).wait() != 0) {
        MESSAGE("SKIPPED: a small disk cannot be mounted here");
        return;
    }
    UpdateMachine machine;
    machine.offer("2.0");
    // The root is a disk with room for one version and a little of another.
    auto size = std::to_string(files::file_size(machine.product() + "/com.zerkolin.brevane.scheduler") * 3 / 2);
    auto command = unshare;
    command.insert(command.end(),
                   {"sh", "-c",
                    "cp -a \"$0\" \"$0.copy\" && mount -t tmpfs -o size=" + size
                        + " none \"$0\" && cp -a \"$0.copy/.\" \"$0\" && exec \"$@\"",
                    machine.root()});
    machine.start(command);
    auto error = errorIn(install(machine));
    CHECK((error.code == ZRKUpdaterErrorDownload || error.code == ZRKUpdaterErrorInstall));
    REQUIRE(error.underlying);
    CHECK(error.underlying->domain == platform::POSIXErrorDomain);
    CHECK(error.underlying->code == ENOSPC);
    const auto seen = "/proc/" + std::to_string(machine.helperProcess()) + "/root" + machine.root();
    CHECK(treeBelow(seen + "/Library/Brevane") == treeBelow(machine.product()));
    CHECK_FALSE(files::exists(seen + "/Library/.com.zerkolin.brevane.update"));
}
