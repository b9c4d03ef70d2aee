#include "backupprogram/ChoiceWords.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKError.h"
#include "platform/Format.h"
#include "platform/Localization.h"
#include "platform/Texts.h"
#include "protocol/BackupProgram.h"
#include "protocol/ErrorCodes.h"

#include <string_view>

using platform::localizedString;
using platform::textForKey;
namespace Expectation = BackupFieldExpectation;

namespace {

std::string filled(const std::string& format, const std::string& value)
{
    return platform::formatString(format, {value}).value_or(format);
}

std::string filled(const std::string& format, const std::string& first, const std::string& second)
{
    return platform::formatString(format, {first, second}).value_or(format);
}

std::string missingField(std::string_view kind)
{
    if (kind == BackupFieldKind::Folders)
        return localizedString("Add at least one folder that is to be backed up.");
    if (kind == BackupFieldKind::Destination)
        return localizedString("Enter the folder that the backups go to.");
    if (kind == BackupFieldKind::SecretFile)
        return localizedString("Enter the file that holds the password.");
    if (kind == BackupFieldKind::Unit)
        return localizedString("Enter the name of a system service, such as backup.service.");
    return localizedString("Enter one word of letters, digits, hyphens and underscores, such as daily.");
}

// Empty when it is not known what was expected.
std::string wrongField(std::string_view expected, const std::string& path)
{
    if (expected == Expectation::Folder || expected == Expectation::Folders)
        return localizedString("A folder is entered with its whole path, such as /home/anna, without braces, dots for "
                               "other folders or double slashes.");
    if (expected == Expectation::Patterns)
        return localizedString("What is left out is entered in one line without braces.");
    if (expected == Expectation::ForBackups)
        return localizedString("Backups cannot go to a folder of the system's own. Choose another one, best on another "
                               "disk.");
    if (expected == Expectation::OfAdministrator)
        return filled(localizedString("Others than the administrator can change \"%@\", so no backups go there. Choose "
                                      "a folder on another disk, or one that only the administrator can change."),
                      path);
    if (expected == Expectation::OnMountedDisk)
        return localizedString("The disk of this folder is not there. Connect it, or choose another folder.");
    if (expected == Expectation::WithPassword)
        return localizedString("Backups can go to a disk of your own only while changing the schedule requires a "
                               "password. That is set in the preferences.");
    if (expected == Expectation::Secret)
        return localizedString("The password file must be one that only the administrator can read and change.");
    if (expected == Expectation::Unit)
        return missingField(BackupFieldKind::Unit);
    return expected == Expectation::Word ? missingField(BackupFieldKind::Word) : std::string();
}

} // namespace

std::string ChoiceWords::title(const OfferedProgram& program)
{
    // A name of its own, but for the system's services.
    const auto name = program.package.empty() ? localizedString("A system service") : program.name;
    return program.isInstalled ? name : filled(localizedString("%@ (not installed)"), name);
}

std::string ChoiceWords::state(const OfferedProgram& program)
{
    if (!program.isInstalled && !program.install.empty())
        return filled(localizedString("%@ is not installed. This command installs it:"), program.name);
    if (!program.isInstalled && !program.package.empty())
        return filled(localizedString("%@ is not installed. Its package is called \"%@\"."), program.name,
                      program.package);
    if (!program.isInstalled)
        return localizedString("This computer has no system services that could be started.");
    if (!program.missing.empty())
        return filled(
            localizedString("%@ is installed but not set up: there is no file \"%@\" yet. It is made with the "
                            "program's own means."),
            program.name, program.missing);
    if (program.package.empty())
        return localizedString("Any service that makes a backup and ends can be started on schedule.");
    return filled(localizedString("%@ is installed."), program.name);
}

std::string ChoiceWords::stateOfNone(const OfferedProgram* suggested)
{
    if (!suggested)
        return localizedString("No backups are made while no backup program is chosen.");
    return filled(localizedString("No backup program is installed. %@ is a good choice; this command installs it:"),
                  suggested->name);
}

std::string ChoiceWords::fault(const platform::Error& error, const OfferedProgram* program)
{
    std::string text;
    const auto key = textForKey(error.userInfo, "key");
    const auto* const field = program ? program->fieldOfKey(key) : nullptr;
    if (error.domain == BRVErrorDomain && error.code == BRVErrorMissingValue && field)
        text = missingField(field->kind);
    else if (error.domain == BRVErrorDomain && error.code == BRVErrorWrongType)
        text = wrongField(textForKey(error.userInfo, Expectation::ExpectedKey),
                          textForKey(error.userInfo, Expectation::PathKey));
    return text.empty() ? ZRKError::localizedDescriptionForError(error) : text;
}

std::string ChoiceWords::unavailable(const platform::Error& error)
{
    if (helperDoesNotServeMessage(error))
        return localizedString("The background scheduler is of another version, which starts no backup programs.");
    return ZRKError::localizedDescriptionForError(error);
}

std::string ChoiceWords::outcome(const BackupTestOutcome& outcome)
{
    if (outcome.succeeded)
        return localizedString("The test succeeded: a backup was made.");
    const auto failed = localizedString("The test failed. The console shows what the program said.");
    return outcome.text.empty() ? failed : filled(localizedString("%@ %@"), failed, outcome.text);
}
