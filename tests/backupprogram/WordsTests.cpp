#include "backupprogram/ChoiceWords.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"

#include <doctest/doctest.h>
#include <set>
#include <string>

using platform::Dictionary;
using platform::Error;
namespace Expectation = BackupFieldExpectation;

namespace {

OfferedProgram everything()
{
    OfferedProgram program{.identifier = "all",
                           .name = "Every",
                           .package = "every",
                           .install = {},
                           .missing = {},
                           .place = {},
                           .restore = {},
                           .isInstalled = true,
                           .fields = {}};
    for (const auto* const kind : {BackupFieldKind::Folders, BackupFieldKind::Destination, BackupFieldKind::Patterns,
                                   BackupFieldKind::SecretFile, BackupFieldKind::Word, BackupFieldKind::Unit})
        program.fields.push_back({std::string("The ") + kind, kind, true});
    return program;
}

std::string wrong(const char* expected, const char* path = nullptr)
{
    Dictionary info{{"key", "The Destination"}, {"expected", expected}};
    if (path)
        info.set("path", path);
    const auto program = everything();
    return ChoiceWords::fault({BRVErrorDomain, BRVErrorWrongType, info, nullptr}, &program);
}

std::string missing(const char* kind)
{
    const auto program = everything();
    return ChoiceWords::fault({BRVErrorDomain, BRVErrorMissingValue, {{"key", std::string("The ") + kind}}, nullptr},
                              &program);
}

} // namespace

TEST_CASE("each thing that the helper may expect of a field has a sentence of its own")
{
    std::set<std::string> sentences;
    for (const auto* const expected :
         {Expectation::Folder, Expectation::Patterns, Expectation::ForBackups, Expectation::OfAdministrator,
          Expectation::OnMountedDisk, Expectation::WithPassword, Expectation::Secret, Expectation::Word,
          Expectation::Unit}) {
        const auto sentence = wrong(expected, "/home");
        CHECK(sentence.ends_with('.'));
        CHECK(sentence.find("Wrong type") == std::string::npos);
        CHECK_MESSAGE(sentences.insert(sentence).second, sentence);
    }
    CHECK(wrong(Expectation::Folders) == wrong(Expectation::Folder));
    CHECK(wrong(Expectation::OfAdministrator, "/home/anna").find("\"/home/anna\"") != std::string::npos);
}

TEST_CASE("a missing field is asked for by what it is")
{
    CHECK(missing("Folders") == "Add at least one folder that is to be backed up.");
    CHECK(missing("Destination") == "Enter the folder that the backups go to.");
    CHECK(missing("SecretFile") == "Enter the file that holds the password.");
    CHECK(missing("Unit") == "Enter the name of a system service, such as backup.service.");
    CHECK(missing("Word").starts_with("Enter one word"));
}

TEST_CASE("what the window has no sentence for is told as every error is")
{
    CHECK(wrong("purple number") == "Wrong type for key: 'The Destination', expected: 'purple number'.");
    CHECK(ChoiceWords::fault({BRVErrorDomain, BRVErrorMissingValue, {{"key", "Speed"}}, nullptr}, nullptr)
          == "Missing value for key: 'Speed'.");
    CHECK(ChoiceWords::fault({BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr}, nullptr)
          == "An update operation is currently running.");
}

TEST_CASE("a program's state says what it lacks")
{
    auto program = everything();
    CHECK(ChoiceWords::state(program) == "Every is installed.");
    CHECK(ChoiceWords::title(program) == "Every");
    program.missing = "/etc/every.conf";
    CHECK(ChoiceWords::state(program).find("there is no file \"/etc/every.conf\" yet") != std::string::npos);
    program.isInstalled = false;
    CHECK(ChoiceWords::state(program) == "Every is not installed. Its package is called \"every\".");
    CHECK(ChoiceWords::title(program) == "Every (not installed)");
    program.install = "sudo apt install every";
    CHECK(ChoiceWords::state(program) == "Every is not installed. This command installs it:");
    program.package.clear();
    program.install.clear();
    CHECK(ChoiceWords::title(program) == "A system service (not installed)");
    CHECK(ChoiceWords::state(program) == "This computer has no system services that could be started.");
}

TEST_CASE("a helper that does not know the message is of another version")
{
    CHECK(ChoiceWords::unavailable({ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {}, nullptr})
          == "The background scheduler is of another version, which starts no backup programs.");
    CHECK(ChoiceWords::unavailable(
              {ZRKMessagerErrorDomain, ZRKMessagerErrorServiceDisappeared, {{"service", "s"}}, nullptr})
          == "The service disappeared (s).");
}

TEST_CASE("a test's outcome is said first, and then what the journal has of it")
{
    CHECK(ChoiceWords::outcome({true, "The backup succeeded; it took 3 seconds."})
          == "The test succeeded: a backup was made.");
    CHECK(ChoiceWords::outcome({false, "The backup failed: its program is not there."})
          == "The test failed. The console shows what the program said. The backup failed: its program is not there.");
    CHECK(ChoiceWords::outcome({false, ""}) == "The test failed. The console shows what the program said.");
}
