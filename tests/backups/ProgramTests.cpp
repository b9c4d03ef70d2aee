#include "helper/linux/programs/BackupPlan.h"
#include "helper/linux/programs/ProgramFields.h"
#include "helper/linux/programs/ProgramStore.h"
#include "helper/linux/programs/SystemUnit.h"
#include "helper/linux/programs/TrustedPath.h"
#include "tests/backups/RunnerFixture.h"
#include "tests/support/ChildProcess.h"

#include <algorithm>
#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace helper;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;

namespace {

const ProgramCatalog& catalog()
{
    // The administrator's, whoever the source tree belongs to.
    static const ProgramCatalog programs = [] {
        const TemporaryDirectory folder;
        std::filesystem::copy(BREVANE_PROGRAMS, folder.path());
        return ProgramCatalog(folder.path());
    }();
    return programs;
}

Dictionary borg(const PropertyList& folders, const PropertyList& repository)
{
    return {{"Program", "borg"}, {"Fields", Dictionary{{"Folders", folders}, {"Repository", repository}}}};
}

Dictionary withField(const std::string& program, const std::string& key, const PropertyList& value)
{
    return {{"Program", program}, {"Fields", Dictionary{{key, value}}}};
}

std::optional<SettingsFault> fault(const Dictionary& choice)
{
    return ProgramFields::faultInChoice(choice, catalog());
}

bool isWrong(const Dictionary& choice, const std::string& key)
{
    const auto found = fault(choice);
    return found && found->code == BRVErrorWrongType && found->key == key;
}

} // namespace

TEST_CASE("the installation describes the programs that can be chosen")
{
    std::vector<std::string> identifiers;
    for (const auto& program : catalog().programs())
        identifiers.push_back(program.identifier);
    CHECK(identifiers
          == std::vector<std::string>{"backintime", "borg", "borgmatic", "btrbk", "restic", "rsnapshot", "service",
                                      "timeshift"});
    // Every field that is put in somewhere is there to be asked for.
    for (const auto& program : catalog().programs()) {
        for (const auto& field : program.fields)
            CHECK(std::ranges::any_of(program.arguments, [&](const auto& argument) {
                return argument.find("{" + field.key + "}") != std::string::npos;
            }));
        CHECK_FALSE(program.restore.empty());
        CHECK(program.place.ends_with('.'));
        // People are asked for one field of a kind.
        for (const auto& field : program.fields)
            CHECK(std::ranges::count(program.fields, field.kind, &ProgramField::kind) == 1);
        CHECK((program.package.empty()) == (program.identifier == "service"));
    }
}

TEST_CASE("a file that describes no program is left out")
{
    TemporaryDirectory folder;
    folder.write("a.plist", "{Name = A; Executables = (\"/bin/a\");}");
    folder.write("b.plist", "{Name = B; Executables = (\"b\");}");
    folder.write("c.plist", "{Name = C; Executables = (\"/bin/c\"); Fields = ({Key = K; Kind = Command;});}");
    folder.write("d.plist", "{Executables = (\"/bin/d\");}");
    folder.write("e.plist", "no list");
    folder.write("f.txt", "{Name = F; Executables = (\"/bin/f\");}");
    const ProgramCatalog programs(folder.path());
    REQUIRE(programs.programs().size() == 1);
    CHECK(programs.programs().front().identifier == "a");
    CHECK(programs.program("a"));
    CHECK_FALSE(programs.program("b"));
}

TEST_CASE("a choice with all that the program needs is taken, and so is none")
{
    TemporaryDirectory folder;
    CHECK(fault(borg(Array{"/home", "/srv/with space"}, folder.file("backups"))) == std::nullopt);
    CHECK(fault({}) == std::nullopt);
    CHECK(fault({{"PreventSleep", true}}) == std::nullopt);
    CHECK(fault({{"Program", "btrbk"}, {"PreventSleep", false}}) == std::nullopt);
    CHECK(fault(withField("rsnapshot", "Level", "daily")) == std::nullopt);
    CHECK(fault(withField("service", "Unit", "backup.service")) == std::nullopt);
}

TEST_CASE("a choice of nothing known is refused with what is wrong")
{
    CHECK(fault({{"Command", "/bin/sh"}}) == SettingsFault{BRVErrorUnknownKey, "Command", {}});
    CHECK(isWrong({{"Program", "sh"}}, "Program"));
    CHECK(isWrong({{"Program", "../../tmp/borg"}}, "Program"));
    CHECK(isWrong({{"Program", 1}}, "Program"));
    CHECK(isWrong({{"PreventSleep", "yes"}}, "PreventSleep"));
    CHECK(fault({{"Fields", Dictionary()}}) == SettingsFault{BRVErrorMissingValue, "Program", {}});
    CHECK(isWrong({{"Program", "borg"}, {"Fields", "all"}}, "Fields"));
    CHECK(fault({{"Program", "borg"}}) == SettingsFault{BRVErrorMissingValue, "Folders", {}});
    for (const auto& value : {PropertyList(2), PropertyList(-1), PropertyList(0.5)})
        CHECK(fault({{"PreventSleep", value}}) == SettingsFault{BRVErrorWrongType, "PreventSleep", "boolean", {}});
    CHECK(fault({{"PreventSleep", 1}}) == std::nullopt);
    CHECK(fault({{"Program", "sh"}})
          == SettingsFault{BRVErrorWrongType, "Program", "backup program of the installation", {}});
    CHECK(fault({{"Program", "borg"}, {"Fields", Array()}})
          == SettingsFault{BRVErrorWrongType, "Fields", "dictionary", {}});
    CHECK(fault(withField("borg", "Arguments", Array())) == SettingsFault{BRVErrorUnknownKey, "Arguments", {}});
}

TEST_CASE("a folder is absolute and plain")
{
    TemporaryDirectory folder;
    for (const auto* const path : {"", "home", "-x", "~", "/home/../etc", "/..", "/home/.", "//home", "/a//b", "/a\nb",
                                   "/a\x7f", "/{State}", "/a}"}) {
        CAPTURE(path);
        CHECK(isWrong(borg(Array{path}, folder.file("backups")), "Folders"));
        CHECK(isWrong(borg(Array{"/home"}, path), "Repository"));
    }
    CHECK(isWrong(borg(Array(), folder.file("backups")), "Folders"));
    CHECK(isWrong(borg("/home", folder.file("backups")), "Folders"));
    CHECK(isWrong(borg(Array{std::string(5000, 'a').insert(0, "/")}, folder.file("backups")), "Folders"));
    CHECK(isWrong(borg(Array{1}, folder.file("backups")), "Folders"));
    CHECK(fault(borg(Array{"/", "/home/"}, folder.file("backups"))) == std::nullopt);
}

TEST_CASE("backups are written to no folder of the system's, whichever way it is named")
{
    TemporaryDirectory folder;
    std::filesystem::create_symlink("/etc", folder.file("link"));
    for (const auto& path :
         {std::string("/"), std::string("/etc/cron.d"), std::string("/usr/local/backup"), std::string("/root"),
          std::string("/root/.ssh/x"), std::string("/proc/1"), std::string("/opt/brevane/backup"),
          std::string("/run/x"), folder.file("link/cron.d/new"), folder.file("a::b"), folder.file("a/")}) {
        CAPTURE(path);
        CHECK(isWrong(borg(Array{"/home"}, path), "Repository"));
    }
    for (const std::string path :
         {"/bin",    "/boot",      "/dev",          "/etc",       "/lib",     "/lib32",      "/lib64",
          "/libx32", "/proc",      "/sbin",         "/sys",       "/usr",     "/var/lib",    "/var/run",
          "/run",    "/root/.ssh", "/root/.config", "/var/spool", "/var/log", "/opt/brevane"}) {
        const SettingsFault expected{
            BRVErrorWrongType, "Repository", "folder for backups, outside of the system's own", {}};
        CHECK_MESSAGE(fault(borg(Array{"/home"}, path)) == expected, path);
        CHECK_MESSAGE(fault(borg(Array{"/home"}, path + "/x")) == expected, path);
    }
    for (const char* path : {"/", "/root", "/home", "/var"})
        CHECK_MESSAGE(isWrong(borg(Array{"/home"}, path), "Repository"), path);
    if (geteuid() == 0) { // who may write there is looked at
        for (const char* path : {"/binary", "/srv", "/root/backups", "/var/backups", "/opt/brevane-backups"})
            CHECK_MESSAGE(fault(borg(Array{"/home"}, path)) == std::nullopt, path);
    }
    CHECK(fault(borg(Array{"/home"}, folder.file("etc"))) == std::nullopt);
}

TEST_CASE("nothing is written to, read from or run that somebody but the administrator could exchange")
{
    if (geteuid() != 0) {
        std::puts("SKIPPED: this process is not the administrator's");
        return;
    }
    TemporaryDirectory folder;
    const auto own = folder.write("own/file", "secret");
    chmod(own.c_str(), 0600);
    CHECK(untrustedPart(own) == std::nullopt);
    CHECK(untrustedPart(folder.file("own/new/deeper")) == std::nullopt);

    std::filesystem::create_directory(folder.file("theirs"));
    REQUIRE(chown(folder.file("theirs").c_str(), 1000, 1000) == 0);
    CHECK(untrustedPart(folder.file("theirs/new")) == folder.file("theirs"));
    CHECK(isWrong(borg(Array{"/home"}, folder.file("theirs/backups")), "Repository"));
    CHECK(fault(borg(Array{folder.file("theirs")}, folder.file("own/backups"))) == std::nullopt);

    // A link that others may turn elsewhere, and a folder that they may fill, are theirs too.
    std::filesystem::create_symlink(folder.file("own"), folder.file("theirs/link"));
    REQUIRE(lchown(folder.file("theirs/link").c_str(), 0, 0) == 0);
    CHECK(untrustedPart(folder.file("theirs/link/file")) == folder.file("theirs"));
    std::filesystem::create_symlink(folder.file("theirs"), folder.file("own/link"));
    CHECK(untrustedPart(folder.file("own/link/new")) == folder.file("theirs"));
    std::filesystem::create_directory(folder.file("shared"));
    chmod(folder.file("shared").c_str(), 01777);
    CHECK(untrustedPart(folder.file("shared/new")) == folder.file("shared"));
    CHECK(untrustedPart(folder.file("shared")) == folder.file("shared"));

    const Dictionary restic{{"Folders", Array{"/home"}}, {"Repository", folder.file("own/r")}, {"PasswordFile", own}};
    const auto* const program = catalog().program("restic");
    CHECK(ProgramFields::faultInFields(restic, *program) == std::nullopt);
    chmod(own.c_str(), 0640);
    CHECK(ProgramFields::faultInFields(restic, *program)->key == "PasswordFile");

    ProgramDescription fake;
    fake.executables = {folder.write("theirs/run", "#!/bin/sh")};
    chmod(fake.executables.front().c_str(), 0755);
    CHECK(BackupPlan::executable(fake) == std::nullopt);
    fake.executables.push_back(folder.write("own/run", "#!/bin/sh"));
    CHECK(BackupPlan::executable(fake) == std::nullopt);
    chmod(fake.executables.back().c_str(), 0755);
    CHECK(BackupPlan::executable(fake) == folder.file("own/run"));
}

namespace {

// The characters with which a text is allowed.
std::string allowedIn(const std::function<bool(char)>& isAllowed)
{
    std::string allowed;
    for (int byte = 0; byte < 256; ++byte) {
        if (isAllowed(static_cast<char>(byte)))
            allowed += static_cast<char>(byte);
    }
    return allowed;
}

} // namespace

TEST_CASE("a word has up to 64 letters, digits, hyphens and underscores, and no hyphen first")
{
    const auto isWord = [](const PropertyList& value) {
        const auto found = fault(withField("rsnapshot", "Level", value));
        CHECK((!found || *found == SettingsFault{BRVErrorWrongType, "Level", "word", {}}));
        return !found;
    };
    CHECK(allowedIn([&](char character) { return isWord(std::string("a") + character); })
          == "-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
    CHECK(isWord("a"));
    CHECK(isWord("_-"));
    CHECK_FALSE(isWord(""));
    CHECK_FALSE(isWord("-a"));
    CHECK(isWord(std::string(64, 'a')));
    CHECK_FALSE(isWord(std::string(65, 'a')));
    CHECK_FALSE(isWord(1));
}

TEST_CASE(
    "a text is plain without braces and control characters, and has up to 4096 bytes; up to 1000 of them are taken")
{
    TemporaryDirectory folder;
    const auto areTaken = [&](const PropertyList& excludes) {
        auto fields = *borg(Array{"/home"}, folder.file("backups")).dictionaryForKey("Fields");
        fields.set("Excludes", excludes);
        const auto found = fault({{"Program", "borg"}, {"Fields", fields}});
        CHECK((!found || (found->code == BRVErrorWrongType && found->key == "Excludes")));
        return !found;
    };
    std::string expected;
    for (int byte = 0x20; byte < 256; ++byte) {
        if (byte != '{' && byte != '}' && byte != 0x7f)
            expected += static_cast<char>(byte);
    }
    CHECK(allowedIn([&](char character) { return areTaken(Array{std::string(1, character)}); }) == expected);
    CHECK_FALSE(areTaken(Array{""}));
    CHECK(areTaken(Array{std::string(4096, 'a')}));
    CHECK_FALSE(areTaken(Array{std::string(4097, 'a')}));
    CHECK(areTaken(Array()));
    CHECK(areTaken(Array(1000, "a")));
    CHECK_FALSE(areTaken(Array(1001, "a")));
    CHECK_FALSE(areTaken(Array{"a", 1}));
    CHECK_FALSE(areTaken("a"));
}

TEST_CASE("the name of a service has up to 255 letters, digits and few other characters")
{
    CHECK(allowedIn([](char character) { return isBackupUnitName(std::string("a") + character + ".service"); })
          == "-.0123456789:ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
    CHECK(isBackupUnitName(std::string(247, 'a') + ".service"));
    CHECK_FALSE(isBackupUnitName(std::string(248, 'a') + ".service"));
    for (const char* name :
         {"systemd.service", "systemdX.service", "com.zerkolin.service", "a-.service", "a.b.service"})
        CHECK_MESSAGE(isBackupUnitName(name), name);
    for (const char* name : {"", ".service", ".a.service", "-a.service", "a.services", "service", "systemd-a.service",
                             "com.zerkolin.brevane.service"})
        CHECK_FALSE_MESSAGE(isBackupUnitName(name), name);
}

TEST_CASE("a service is named as one, and is none that starts, stops or repairs the system")
{
    for (const auto* const name : {"backup", "a@b.service", "-x.service", "../a.service", "a b.service", ".service",
                                   "systemd-poweroff.service", "com.zerkolin.brevane.scheduler.service", "a.timer"}) {
        CAPTURE(name);
        CHECK(isWrong(withField("service", "Unit", name), "Unit"));
    }
    const std::string good = "LoadState=loaded\nType=oneshot\nDefaultDependencies=yes\nRefuseManualStart=no\n"
                             "FragmentPath=/lib/systemd/system/btrbk.service\n";
    const auto with = [&](const std::string& from, const std::string& to) {
        auto text = good;
        return text.replace(text.find(from), from.size(), to);
    };
    CHECK(isBackupUnit(good));
    CHECK_FALSE(isBackupUnit(with("loaded", "not-found")));
    CHECK_FALSE(isBackupUnit(with("oneshot", "simple")));
    CHECK_FALSE(isBackupUnit(with("Dependencies=yes", "Dependencies=no")));
    CHECK_FALSE(isBackupUnit(with("Start=no", "Start=yes")));
    CHECK_FALSE(isBackupUnit(with("/lib/systemd", "/run/user/1000/systemd")));
    for (const char* folder : {"/etc", "/usr/local/lib", "/usr/lib", "/lib"})
        CHECK_MESSAGE(isBackupUnit(with("/lib/", std::string(folder) + "/")), folder);
    CHECK_FALSE(isBackupUnit(with("/lib/systemd/system/", "/lib/systemd/user/")));
    CHECK_FALSE(isBackupUnit(with("FragmentPath=", "FragmentPath")));
    CHECK_FALSE(isBackupUnit(with("FragmentPath=", "OtherFragmentPath=")));
    CHECK_FALSE(isBackupUnit(with("Type=oneshot\n", "")));
    CHECK(isBackupUnit(with("Type=oneshot\n", "\nTypes=simple\nType=oneshot\nType=simple\n"))); // the first one
    CHECK(isBackupUnit(good.substr(0, good.size() - 1)));
    CHECK_FALSE(isBackupUnit(""));
}

TEST_CASE("fields are put into arguments once for each of their values, and never looked at again")
{
    const Dictionary fields{
        {"Folders", Array{"/a", "/b c"}}, {"Repository", "/r"}, {"Excludes", Array{"*.o", "{State}"}}};
    CHECK(
        BackupPlan::filledIn(
            {"create", "--exclude={Excludes}", "{Repository}::{Identifier}", "{Folders}", "{None}", "{"}, fields, "x-1")
        == std::vector<std::string>{"create", "--exclude=*.o", "--exclude={State}", "/r::x-1", "/a", "/b c", "{"});
}

TEST_CASE("which exit statuses are a success is the program's own")
{
    CHECK(catalog().program("borg")->isSuccess(0));
    CHECK(catalog().program("borg")->isSuccess(1));
    CHECK_FALSE(catalog().program("borg")->isSuccess(2));
    CHECK_FALSE(catalog().program("borg")->isSuccess(std::nullopt));
    CHECK_FALSE(catalog().program("timeshift")->isSuccess(1));
    CHECK(catalog().program("rsnapshot")->isSuccess(2));
}

TEST_CASE("the choice is kept on disk, and told with what can be chosen")
{
    TemporaryDirectory folder;
    const auto choice = borg(Array{"/home"}, folder.file("backups"));
    {
        ProgramStore store(folder.file("program.plist"));
        CHECK(store.choice().empty());
        REQUIRE(store.setChoice(choice));
        CHECK(store.choice() == choice);
    }
    const ProgramStore store(folder.file("program.plist"));
    CHECK(store.choice() == choice);
    const auto reply = store.reply(catalog());
    CHECK(*reply.stringForKey("Program") == "borg");
    REQUIRE(reply.arrayForKey("Programs"));
    const auto& listed = *(*reply.arrayForKey("Programs"))[0].dictionary();
    CHECK(*listed.stringForKey("Name") == "Borg");
    CHECK(*listed.stringForKey("Package") == "borgbackup");
    if (std::filesystem::exists("/usr/bin/apt"))
        CHECK(*listed.stringForKey("Install") == "sudo apt install borgbackup");
    CHECK(listed.stringForKey("Place")->contains("{Repository}"));
    CHECK(listed.boolForKey("Installed") == std::filesystem::exists("/usr/bin/borg"));
    CHECK(listed.arrayForKey("FieldList")->size() == 3);
}

TEST_CASE("a program that is not installed, or has no settings, is told in a sentence")
{
    ProgramDescription program;
    program.name = "Prog";
    program.executables = {"/nowhere/p"};
    CHECK(BackupPlan::job(program, {}, "a-1").error() == "The program Prog is not installed.");
    program.executables = {"/bin/true"};
    program.needs = {"/nowhere/p.conf", "/nowhere/p.d"};
    CHECK(BackupPlan::job(program, {}, "a-1").error()
          == "The program Prog has no settings: there is no file '/nowhere/p.conf'.");
    program.needs.clear();
    program.fields = {{"Level", "Word", true}};
    CHECK(BackupPlan::job(program, {}, "a-1").error() == "The value \"Level\" is missing.");
    CHECK(BackupPlan::job(program, {{"Level", "a b"}}, "a-1").error() == "The value \"Level\" is no word.");
    CHECK(BackupPlan::job(program, {{"Level", "daily"}}, "a-1")->commands
          == std::vector<std::vector<std::string>>{{"/bin/true"}});
    CHECK(BackupPlan::job(program, {{"Other", "daily"}}, "a-1").error() == "The value \"Other\" is not known.");
    program.fields = {{"Unit", "Unit", true}};
    CHECK(BackupPlan::job(program, {{"Unit", "brevane-test-none.service"}}, "a-1").error()
          == "The service \"brevane-test-none.service\" is not there, or none that makes a backup.");
}

TEST_CASE("a description is read with all that it says")
{
    const auto read = [](const Dictionary& content) { return ProgramDescription::inDictionary("prog", content); };
    Dictionary content{{"Name", "Prog"},
                       {"Recommended", true},
                       {"Package", "package"},
                       {"Executables", Array{"/a", "/b"}},
                       {"Arguments", Array{"c"}},
                       {"Environment", Array{"D=e"}},
                       {"Needs", Array{"/f"}},
                       {"PreparedPath", "/g"},
                       {"Preparation", Array{"h", "i"}},
                       {"Warnings", Array{1, 24}},
                       {"Fields",
                        Array{Dictionary{{"Key", "K"}, {"Kind", "Word"}, {"Required", true}},
                              Dictionary{{"Key", "L"}, {"Kind", "Unit"}}}},
                       {"Place", "Here."},
                       {"Restore", "prog restore"}};
    const auto program = read(content);
    REQUIRE(program);
    CHECK(program->identifier == "prog");
    CHECK(program->name == "Prog");
    CHECK(program->isRecommended);
    CHECK(program->package == "package");
    CHECK(program->executables == std::vector<std::string>{"/a", "/b"});
    CHECK(program->arguments == std::vector<std::string>{"c"});
    CHECK(program->environment == std::vector<std::string>{"D=e"});
    CHECK(program->needs == std::vector<std::string>{"/f"});
    CHECK(program->preparedPath == "/g");
    CHECK(program->preparation == std::vector<std::string>{"h", "i"});
    CHECK(program->warnings == std::vector<int>{1, 24});
    REQUIRE(program->fields.size() == 2);
    CHECK(program->field("K") == &program->fields[0]);
    CHECK(program->fields[0].kind == "Word");
    CHECK(program->fields[0].isRequired);
    CHECK_FALSE(program->fields[1].isRequired);
    CHECK_FALSE(program->field("M"));
    CHECK(program->place == "Here.");
    CHECK(program->restore == "prog restore");

    const auto isTaken = [&](const char* key, const PropertyList& value) {
        auto other = content;
        other.set(key, value);
        return read(other).has_value();
    };
    for (const char* kind : {"Folders", "Destination", "Patterns", "SecretFile", "Word", "Unit"})
        CHECK_MESSAGE(isTaken("Fields", Array{Dictionary{{"Key", "K"}, {"Kind", kind}}}), kind);
    CHECK_FALSE(isTaken("Fields", Array{Dictionary{{"Key", "K"}, {"Kind", "Command"}}}));
    CHECK_FALSE(isTaken("Fields", Array{Dictionary{{"Kind", "Word"}}}));
    CHECK_FALSE(isTaken("Executables", Array{"/a", "b"}));
    CHECK_FALSE(isTaken("Executables", Array()));
    CHECK_FALSE(isTaken("Name", ""));
    CHECK_FALSE(read({{"Name", "Prog"}, {"Executables", Array{"/a"}}})->isRecommended);
}

TEST_CASE_FIXTURE(RunnerFixture, "borg makes its repository, backs up twice, and gives the file back")
{
    const auto* const program = catalog().program("borg");
    if (!BackupPlan::executable(*program)) {
        std::puts("SKIPPED: borg is not installed");
        return;
    }
    TemporaryDirectory place;
    const auto file = place.write("home/letter", "one");
    place.write("home/cache/junk", "junk");
    const Dictionary fields{{"Folders", Array{place.file("home")}},
                            {"Repository", place.file("disk/backups")},
                            {"Excludes", Array{place.file("home/cache")}}};
    const auto runner = makeRunner();
    const auto first = BackupPlan::job(*program, fields, "a-1");
    REQUIRE(first);
    CHECK(first->commands.size() == 2);
    REQUIRE(runner->start(*first));
    CHECK(event(0, std::chrono::seconds(60)) == ended("a-1", 0));
    place.write("home/letter", "two");
    const auto second = BackupPlan::job(*program, fields, "a-2");
    REQUIRE(second);
    CHECK(second->commands.size() == 1);
    REQUIRE(runner->start(*second));
    CHECK(event(1, std::chrono::seconds(60)) == ended("a-2", 0));

    const ChildProcess::Environment environment{{"BORG_BASE_DIR", place.path()},
                                                {"BORG_UNKNOWN_UNENCRYPTED_REPO_ACCESS_IS_OK", "yes"}};
    const auto read = [&](const std::string& archive) {
        return ChildProcess({"borg", "extract", "--stdout", place.file("disk/backups") + "::" + archive,
                             place.file("home").substr(1)},
                            environment)
            .readAll();
    };
    CHECK(read("a-1") == "one");
    CHECK(read("a-2") == "two");
    struct stat status{};
    REQUIRE(stat(place.file("disk/backups/config").c_str(), &status) == 0);
    CHECK((status.st_mode & 0077) == 0);
    CHECK(log().find("Archive name: a-2") != std::string::npos);
}
