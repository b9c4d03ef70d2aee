#include "helper/linux/programs/BackupPlan.h"

#include "helper/linux/programs/ProgramFields.h"
#include "helper/linux/programs/SystemUnit.h"
#include "helper/linux/programs/TrustedPath.h"
#include "platform/SystemInformation.h"
#include "platform/Texts.h"
#include "protocol/BackupProgram.h"

#include <algorithm>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace helper {

using platform::Dictionary;

namespace {

using Values = std::vector<std::string>;

Values valuesOf(const Dictionary& fields, std::string_view key, const std::string& identifier)
{
    if (key == "Identifier")
        return {identifier};
    if (key == "State")
        return {platform::systemPath("/var/db/brevane/programs")};
    if (const auto* const value = fields.stringForKey(key))
        return {*value};
    return platform::textsOf(fields.arrayForKey(key));
}

// One argument for each value of the field in it, with the rest filled in; a field that is not there takes the argument
// with it. What was put in is not looked at again.
Values filledInArgument(std::string_view argument, const Dictionary& fields, const std::string& identifier)
{
    const auto open = argument.find('{');
    const auto close = argument.find('}', open == std::string_view::npos ? 0 : open);
    if (open == std::string_view::npos || close == std::string_view::npos)
        return {std::string(argument)};
    Values filled;
    const auto rest = filledInArgument(argument.substr(close + 1), fields, identifier);
    for (const auto& value : valuesOf(fields, argument.substr(open + 1, close - open - 1), identifier)) {
        for (const auto& end : rest)
            filled.push_back(std::string(argument.substr(0, open)) + value + end);
    }
    return filled;
}

std::string filledInPath(const std::string& path, const Dictionary& fields, const std::string& identifier)
{
    const auto filled = filledInArgument(path, fields, identifier);
    return filled.empty() ? std::string() : filled.front();
}

Values commandOf(const std::string& executable, const Values& arguments)
{
    Values command{executable};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

// The name of the unit that one of the fields holds, when there is one that may not be started.
std::optional<std::string> refusedUnit(const ProgramDescription& program, const Dictionary& fields)
{
    for (const auto& field : program.fields) {
        const auto* const name = field.kind == BackupFieldKind::Unit ? fields.stringForKey(field.key) : nullptr;
        if (name && !isBackupUnit(descriptionOfUnit(*name)))
            return *name;
    }
    return std::nullopt;
}

std::string sentence(const SettingsFault& fault)
{
    switch (fault.code) {
    case BRVErrorMissingValue:
        return "The value \"" + fault.key + "\" is missing.";
    case BRVErrorUnknownKey:
        return "The value \"" + fault.key + "\" is not known.";
    default:
        return "The value \"" + fault.key + "\" is no " + fault.expected
            + (fault.path.empty() ? "." : ": others can change '" + fault.path + "'.");
    }
}

} // namespace

std::optional<std::string> BackupPlan::executable(const ProgramDescription& program)
{
    const auto isUsable = [](const std::string& path) {
        struct stat status{};
        return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0
            && !untrustedPart(path);
    };
    const auto found = std::ranges::find_if(program.executables, isUsable);
    return found == program.executables.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::string> BackupPlan::missingFile(const ProgramDescription& program)
{
    const bool isComplete = program.needs.empty() || std::ranges::any_of(program.needs, platform::fileExists);
    return isComplete ? std::nullopt : std::optional(program.needs.front());
}

Values BackupPlan::filledIn(const Values& arguments, const Dictionary& fields, const std::string& identifier)
{
    Values filled;
    for (const auto& argument : arguments) {
        for (auto& each : filledInArgument(argument, fields, identifier))
            filled.push_back(std::move(each));
    }
    return filled;
}

std::expected<platform::BackupJob, std::string> BackupPlan::job(const ProgramDescription& program,
                                                                const Dictionary& fields, const std::string& identifier)
{
    if (const auto fault = ProgramFields::faultInFields(fields, program))
        return std::unexpected(sentence(*fault));
    const auto path = executable(program);
    if (!path)
        return std::unexpected("The program " + program.name + " is not installed.");
    if (const auto missing = missingFile(program))
        return std::unexpected("The program " + program.name + " has no settings: there is no file '" + *missing
                               + "'.");
    if (const auto unit = refusedUnit(program, fields))
        return std::unexpected("The service \"" + *unit + "\" is not there, or none that makes a backup.");

    platform::BackupJob job{.identifier = identifier,
                            .commands = {},
                            .environment = filledIn(program.environment, fields, identifier),
                            .overdueAfter = {},
                            .confinedTo = ProgramFields::disks(fields, program)};
    const auto prepared = filledInPath(program.preparedPath, fields, identifier);
    if (!program.preparation.empty() && !platform::fileExists(prepared))
        job.commands.push_back(commandOf(*path, filledIn(program.preparation, fields, identifier)));
    job.commands.push_back(commandOf(*path, filledIn(program.arguments, fields, identifier)));
    return job;
}

} // namespace helper
