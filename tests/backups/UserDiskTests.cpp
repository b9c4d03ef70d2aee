#include "helper/linux/programs/BackupPlan.h"
#include "helper/linux/programs/ProgramCatalog.h"
#include "helper/linux/programs/ProgramFields.h"
#include "helper/linux/programs/TrustedPath.h"
#include "protocol/BackupProgram.h"
#include "tests/backups/RunnerFixture.h"
#include "tests/support/ChildProcess.h"

#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace helper;
using platform::Array;
using platform::Dictionary;

namespace {

constexpr uid_t user = 1000;
constexpr const char* disk = "/media/anna/Disk";

// From the first call on this process's mounts are its own, if it may mount and has no thread yet that would not see
// them.
bool hasOwnMounts()
{
    static const bool isPossible = [] {
        const auto threads = std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
        return threads == 1 && ::geteuid() == 0 && ::unshare(CLONE_NEWNS) == 0
            && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }();
    return isPossible;
}

class OwnMounts {
public:
    OwnMounts()
    {
        if (!hasOwnMounts()) {
            std::puts("SKIPPED: this process may not mount anything, or other cases ran in it");
            return;
        }
        ::mkdir("/media", 0755);
        isThere = ::mount("tmpfs", "/media", "tmpfs", 0, "mode=755") == 0;
        ::mkdir("/media/anna", 0750);
        ::mkdir(disk, 0755);
    }
    ~OwnMounts()
    {
        if (isThere)
            ::umount2("/media", MNT_DETACH);
    }
    OwnMounts(const OwnMounts&) = delete;
    OwnMounts& operator=(const OwnMounts&) = delete;

    bool isThere = false;
};

// A machine with a disk of a user's, as a desktop mounts it.
class UserDisk : public OwnMounts, public RunnerFixture {
public:
    static void plugIn(const char* options)
    {
        REQUIRE(::mount("tmpfs", disk, "tmpfs", MS_NOSUID | MS_NODEV, options) == 0);
    }

    static ProgramCatalog catalog()
    {
        const TemporaryDirectory folder;
        std::filesystem::copy(BREVANE_PROGRAMS, folder.path());
        return ProgramCatalog(folder.path());
    }

    static Dictionary choice(const std::string& folder, const std::string& repository)
    {
        return {{"Program", "borg"}, {"Fields", Dictionary{{"Folders", Array{folder}}, {"Repository", repository}}}};
    }

    std::optional<SettingsFault> fault(const std::string& repository) const
    {
        return ProgramFields::faultInChoice(choice("/home", repository), programs);
    }

    // A job that is kept to the disk.
    static platform::BackupJob confined(const std::string& identifier, const std::string& line)
    {
        auto made = job(identifier, {shell(line)});
        made.confinedTo = {disk};
        return made;
    }

    const ProgramCatalog programs = catalog();
};

} // namespace

TEST_CASE_FIXTURE(UserDisk, "a user's disk can be backed up to, though everything on it is the user's")
{
    if (!isThere)
        return;
    for (const auto* const options : {"uid=1000,mode=700", "uid=0,mode=755", "uid=1000,mode=777"}) {
        CAPTURE(options);
        plugIn(options);
        CHECK(fault(std::string(disk) + "/backups") == std::nullopt);
        CHECK(fault(std::string(disk) + "/of/this/computer") == std::nullopt);
        CHECK(fault(disk) == std::nullopt);
        REQUIRE(::umount(disk) == 0);
    }
}

TEST_CASE_FIXTURE(UserDisk, "a disk that is not there is told, and nothing is written where it would be")
{
    if (!isThere)
        return;
    const SettingsFault missing{BRVErrorWrongType, "Repository", BackupFieldExpectation::OnMountedDisk, {}};
    CHECK(fault(std::string(disk) + "/backups") == missing);
    CHECK(fault("/media/anna/Other/backups") == missing);
    plugIn("uid=1000");
    CHECK(fault(std::string(disk) + "/backups") == std::nullopt);
    const auto planned = [&] {
        return BackupPlan::job(*programs.program("borg"),
                               {{"Folders", Array{"/home"}}, {"Repository", std::string(disk) + "/backups"}}, "a-1");
    };
    if (const auto made = planned())
        CHECK(made->confinedTo == std::vector<std::string>{disk});
    else
        std::puts("SKIPPED: borg is not installed");
    REQUIRE(::umount(disk) == 0);
    CHECK(planned().error() == "The value \"Repository\" is no folder on a disk that is there.");
}

TEST_CASE_FIXTURE(UserDisk, "the way to a disk is the administrator's alone")
{
    if (!isThere)
        return;
    plugIn("uid=1000");
    REQUIRE(::chown("/media/anna", user, user) == 0);
    CHECK(fault(std::string(disk) + "/backups")
          == SettingsFault{BRVErrorWrongType, "Repository", BackupFieldExpectation::OfAdministrator, "/media/anna"});
}

TEST_CASE_FIXTURE(UserDisk, "what is on a user's disk is nobody's to trust, whoever seems to own it")
{
    if (!isThere)
        return;
    plugIn("uid=0,mode=755");
    const auto path = std::string(disk) + "/backups";
    REQUIRE(::mkdir(path.c_str(), 0700) == 0);
    CHECK(untrustedPart(path) == disk); // no program, secret or description is read there
    CHECK(trustOfPath(path).disk == disk);
    // A link of the administrator's that leads through a link on the disk ends at the disk.
    TemporaryDirectory own;
    std::filesystem::create_directory(own.file("target"));
    std::filesystem::create_symlink(own.file("target"), std::string(disk) + "/link");
    std::filesystem::create_symlink(std::string(disk) + "/link", own.file("backups"));
    CHECK(trustOfPath(own.file("backups")).disk == disk);
    CHECK(untrustedPart(own.file("backups")) == disk);
}

TEST_CASE_FIXTURE(UserDisk, "without a password nobody chooses a disk on which he could read what is not his")
{
    if (!isThere)
        return;
    plugIn("uid=1000");
    const auto onDisk = choice("/root", std::string(disk) + "/backups");
    const auto refused = ProgramFields::faultWithoutPassword(onDisk, programs);
    REQUIRE(refused);
    CHECK(refused->key == "Repository");
    CHECK(refused->expected == BackupFieldExpectation::WithPassword);
    CHECK(ProgramFields::faultWithoutPassword(choice("/root", root.file("backups")), programs) == std::nullopt);
    CHECK(ProgramFields::faultWithoutPassword({}, programs) == std::nullopt);
}

TEST_CASE_FIXTURE(UserDisk, "a backup on a user's disk changes nothing else, whatever links the user puts there")
{
    if (!isThere)
        return;
    plugIn("uid=1000,mode=700");
    // Programs may write to the folder for temporary files, where this test's root is.
    const std::string target = "/media/system/file";
    std::filesystem::create_directory("/media/system");
    std::ofstream(target) << "old";
    std::filesystem::create_symlink("/media/system", std::string(disk) + "/data");
    const auto runner = makeRunner();
    const std::string on = disk;
    REQUIRE(runner->start(confined("a-1",
                                   "echo new >" + on + "/data/file; echo new >" + on + "/data/17; cat " + on
                                       + "/data/file; echo new >" + target + "; echo kept >" + on + "/own && exit 5")));
    CHECK(event(0) == ended("a-1", 5));
    CHECK(contentOfFile(target) == "old");
    CHECK_FALSE(std::filesystem::exists("/media/system/17"));
    CHECK(log().find("Too many levels of symbolic links") != std::string::npos);
    CHECK(log().find("Read-only file system") != std::string::npos);
    CHECK(log().find("eventMessage\":\"old\"") == std::string::npos);
    CHECK(contentOfFile(on + "/own") == "kept\n");
    // What programs keep for themselves, and the next backup elsewhere, are as ever.
    REQUIRE(runner->start(confined("a-2", "echo kept >" + root.file("var/db/brevane/programs/cache"))));
    CHECK(event(1) == ended("a-2", 0));
    REQUIRE(runner->start(job("a-3", {shell("echo new >" + target)})));
    CHECK(event(2) == ended("a-3", 0));
    CHECK(contentOfFile(target) == "new\n");
}

TEST_CASE_FIXTURE(UserDisk, "a backup that cannot be kept to its disk is not made")
{
    if (!isThere)
        return;
    const auto runner = makeRunner();
    auto made = job("a-1", {shell("echo never >" + root.file("never"))});
    made.confinedTo = {"/media/anna/Gone"};
    REQUIRE(runner->start(made));
    CHECK(event(0) == ended("a-1", 126));
    CHECK_FALSE(std::filesystem::exists(root.file("never")));
    CHECK(log().find("it could not be kept to the disk. No such file or directory.") != std::string::npos);
}

TEST_CASE_FIXTURE(UserDisk, "borg backs up to a user's disk and gives the file back")
{
    const auto* const borg = programs.program("borg");
    if (!isThere || !BackupPlan::executable(*borg)) {
        std::puts("SKIPPED: borg is not installed, or nothing can be mounted");
        return;
    }
    plugIn("uid=1000,mode=700");
    TemporaryDirectory place;
    place.write("home/letter", "one");
    const Dictionary fields{{"Folders", Array{place.file("home")}},
                            {"Repository", std::string(disk) + "/this/backups"}};
    const auto runner = makeRunner();
    std::size_t number = 0;
    for (const auto* const identifier : {"a-1", "a-2"}) {
        const auto made = BackupPlan::job(*borg, fields, identifier);
        REQUIRE(made);
        CHECK(made->confinedTo == std::vector<std::string>{disk});
        REQUIRE(runner->start(*made));
        CHECK(event(number++, std::chrono::seconds(60)) == ended(identifier, 0));
    }
    CHECK(ChildProcess(
              {"borg", "extract", "--stdout", std::string(disk) + "/this/backups::a-2", place.file("home").substr(1)},
              {{"BORG_BASE_DIR", place.path()}, {"BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK", "yes"}})
              .readAll()
          == "one");
}
