#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/update-integration/UpdateMachine.h"

#include <doctest/doctest.h>
#include <vector>

using platform::Dictionary;

namespace {

constexpr const char* newer = "GetUpdates=package brevane;1.1.0.2;amd64;debian-stable";
constexpr const char* installed = "Resolve=package brevane;1.0;amd64;installed:debian-stable";

// A machine whose installation belongs to the package "brevane", with the service that changes packages.
class PackagedMachine : public UpdateMachine {
public:
    explicit PackagedMachine(const std::vector<std::string>& behaviours)
    {
        ownInstallation();
        ChildProcess::Arguments arguments{"/usr/bin/python3", "-B",
                                          BREVANE_SOURCE "/tests/update-integration/packagekit.py"};
        arguments.insert(arguments.end(), behaviours.begin(), behaviours.end());
        _packageKit = std::make_unique<ChildProcess>(arguments);
        REQUIRE(_packageKit->readLine() == "ready");
        start();
    }
    // No such service.
    PackagedMachine()
    {
        ownInstallation();
        start();
    }

    // The next method that was called, with its arguments.
    std::string called() { return _packageKit->readLine().value_or("nothing"); }

private:
    void ownInstallation() const
    {
        outputOf({"/usr/bin/python3", "-B", "-c",
                  "import plistlib, sys\n"
                  "manifest = plistlib.load(open(sys.argv[1], 'rb'))\n"
                  "manifest['Package'] = 'brevane'\n"
                  "plistlib.dump(manifest, open(sys.argv[1], 'wb'))",
                  product() + "/installation.plist"});
    }

    std::unique_ptr<ChildProcess> _packageKit;
};

std::string textOf(const platform::ServiceReply& reply)
{
    return ZRKError::localizedDescriptionForError(errorIn(reply));
}

} // namespace

TEST_CASE("where a package owns the installation a check asks the package manager, and no feed")
{
    PackagedMachine machine({newer});
    CHECK(recordIn(machine.send(BRVMessageCheckForUpdates))
          == Dictionary{{"Version", "1.1.0.2"}, {"HumanVersion", "1.1.0.2"}});
    CHECK(machine.called() == "RefreshCache 0");
    CHECK(machine.called() == "GetUpdates 2");
    CHECK(machine.requestCount() == 0);
}

TEST_CASE("a package without a newer one is up to date, whatever else could be updated")
{
    PackagedMachine machine({"GetUpdates=package brevane-extra;3.0;amd64;debian-stable"});
    checkError(machine.send(BRVMessageCheckForUpdates), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
    checkError(machine.send(BRVMessageInstallUpdate), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
    CHECK(machine.wholeVersion() == "1.0");
}

TEST_CASE("an update is left to the package manager, of packages that it trusts, and the helper then starts anew")
{
    PackagedMachine machine({newer});
    CHECK(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    CHECK(machine.called() == "RefreshCache 0");
    CHECK(machine.called() == "GetUpdates 2");
    CHECK(machine.called() == "UpdatePackages 2 brevane;1.1.0.2;amd64;debian-stable");
    CHECK(waitUntil([&] { return machine.log().contains("The new version takes over."); }));
    CHECK_FALSE(machine.isStaging());
}

TEST_CASE("an update that ends the helper is answered before it ends")
{
    PackagedMachine machine({newer, "UpdatePackages=hang"});
    auto reply = machine.sendLater(BRVMessageInstallUpdate);
    for (const char* method : {"RefreshCache 0", "GetUpdates 2"})
        CHECK(machine.called() == method);
    CHECK(machine.called().starts_with("UpdatePackages"));
    machine.helper().signal(SIGTERM);
    CHECK(recordIn(reply.get()).contains("Applied"));
}

TEST_CASE("errors of the package manager become the updater's, with what it says")
{
    struct Case {
        const char* code;
        std::int64_t expected;
    };
    for (const auto& [code, expected] :
         {Case{"2", ZRKUpdaterErrorFetchInfo}, Case{"37", ZRKUpdaterErrorFetchInfo},
          Case{"64", ZRKUpdaterErrorFetchInfo}, Case{"10", ZRKUpdaterErrorDownload}, Case{"5", ZRKUpdaterErrorValidate},
          Case{"30", ZRKUpdaterErrorValidate}, Case{"31", ZRKUpdaterErrorValidate}, Case{"40", ZRKUpdaterErrorValidate},
          Case{"50", ZRKUpdaterErrorValidate}, Case{"51", ZRKUpdaterErrorValidate},
          Case{"26", ZRKUpdaterErrorCannotUpdateNow}, Case{"4", ZRKUpdaterErrorInstall}}) {
        CAPTURE(code);
        PackagedMachine machine({newer, std::string("UpdatePackages=error ") + code + " It said so. \n"});
        const auto reply = machine.send(BRVMessageInstallUpdate);
        checkError(reply, ZRKUpdaterErrorDomain, expected);
        CHECK(textOf(reply).ends_with("It said so."));
    }
}

TEST_CASE("a package manager that vanishes, or has no lists, fails a check")
{
    std::string behaviour;
    SUBCASE("gone")
    {
        behaviour = "GetUpdates=vanish";
    }
    SUBCASE("without lists")
    {
        behaviour = "RefreshCache=error 4 No lists.";
    }
    PackagedMachine machine({behaviour});
    checkError(machine.send(BRVMessageCheckForUpdates), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
}

TEST_CASE("an uninstallation removes the package alone, and no setting")
{
    PackagedMachine machine({installed});
    auto settings = recordIn(machine.send(BRVMessageGetSettings));
    REQUIRE(recordIn(machine.send(BRVMessageApplySettings, settings)).contains("Applied"));
    const auto before = treeBelow(machine.root() + "/Library/Preferences");
    CHECK(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK(machine.called() == "Resolve 4 brevane");
    CHECK(machine.called() == "RemovePackages 0 brevane;1.0;amd64;installed:debian-stable 0 0");
    CHECK(treeBelow(machine.root() + "/Library/Preferences") == before);
    CHECK(machine.wholeVersion() == "1.0"); // the files are the package manager's
    CHECK(machine.log().contains("The package is being removed.\n"));
    CHECK(machine.helper().wait() == 0);
}

TEST_CASE("a package that cannot be removed leaves the helper at work")
{
    PackagedMachine machine({installed, "RemovePackages=error 20 It is needed."});
    CHECK(textOf(machine.send(BRVMessageUninstall)) == "The package could not be removed. It is needed.");
    CHECK(recordIn(machine.send(BRVMessageGetSettings)).contains("Backups"));
}

TEST_CASE("without a service for packages the error names the command")
{
    PackagedMachine machine;
    for (const auto message : {BRVMessageCheckForUpdates, BRVMessageInstallUpdate}) {
        const auto reply = machine.send(message);
        checkError(reply, ZRKUpdaterErrorDomain, ZRKUpdaterErrorCannotUpdateNow);
        CHECK(textOf(reply)
              == "Update cannot be performed now. Brevane was installed as a package, and there is no PackageKit. "
                 "In a terminal, \"sudo apt install --only-upgrade brevane\" does it.");
    }
    CHECK(textOf(machine.send(BRVMessageUninstall))
          == "Brevane was installed as a package, and there is no PackageKit. In a terminal, \"sudo apt remove "
             "brevane\" does it.");
}
