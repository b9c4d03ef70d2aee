#include "helper/linux/programs/ProgramStore.h"

#include "helper/linux/programs/BackupPlan.h"
#include "protocol/BackupProgram.h"

#include <unistd.h>
#include <utility>

namespace helper {

using platform::Dictionary;

namespace {

// The fields are checked again whenever they are used.
bool isStoredChoice(const Dictionary& stored)
{
    const auto* const program = stored.find(BackupProgramKey::Program);
    const auto* const fields = stored.find(BackupProgramKey::Fields);
    return (!program || program->string()) && (!fields || fields->dictionary());
}

// Of the package managers whose names for these packages are known.
std::string installation(const std::string& package)
{
    for (const auto* const manager : {"apt", "dnf"}) {
        if (!package.empty() && ::access(("/usr/bin/" + std::string(manager)).c_str(), X_OK) == 0)
            return "sudo " + std::string(manager) + " install " + package;
    }
    return {};
}

Dictionary described(const ProgramDescription& program)
{
    platform::Array fields;
    for (const auto& field : program.fields)
        fields.emplace_back(Dictionary{{BackupProgramKey::Key, field.key},
                                       {BackupProgramKey::Kind, field.kind},
                                       {BackupProgramKey::Required, field.isRequired}});
    Dictionary description{{BackupProgramKey::Program, program.identifier},
                           {BackupProgramKey::Name, program.name},
                           {BackupProgramKey::Installed, BackupPlan::executable(program).has_value()},
                           {BackupProgramKey::Place, program.place},
                           {BackupProgramKey::Restore, program.restore},
                           {BackupProgramKey::FieldList, std::move(fields)}};
    if (!program.package.empty())
        description.set(BackupProgramKey::Package, program.package);
    if (auto command = installation(program.package); !command.empty())
        description.set(BackupProgramKey::Install, std::move(command));
    if (const auto missing = BackupPlan::missingFile(program))
        description.set(BackupProgramKey::Missing, *missing);
    return description;
}

} // namespace

ProgramStore::ProgramStore(const std::string& path)
    : _file(path, isStoredChoice),
      _choice(_file.open().value_or(Dictionary()))
{
}

Dictionary ProgramStore::choice() const
{
    const std::lock_guard guard(_lock);
    return _choice;
}

platform::Result<void> ProgramStore::setChoice(const Dictionary& choice)
{
    auto written = _file.write(choice);
    // The failure may have come after the file was replaced.
    auto current = written ? choice : _file.read().value_or(this->choice());
    const std::lock_guard guard(_lock);
    _choice = std::move(current);
    return written;
}

Dictionary ProgramStore::reply(const ProgramCatalog& catalog) const
{
    auto reply = choice();
    platform::Array programs;
    for (const bool isRecommended : {true, false}) {
        for (const auto& program : catalog.programs()) {
            if (program.isRecommended == isRecommended)
                programs.emplace_back(described(program));
        }
    }
    reply.set(BackupProgramKey::Programs, std::move(programs));
    return reply;
}

} // namespace helper
