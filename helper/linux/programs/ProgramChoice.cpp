#include "helper/linux/programs/ProgramChoice.h"

#include "helper/linux/programs/BackupPlan.h"
#include "helper/linux/programs/ProgramFields.h"
#include "platform/Texts.h"
#include "protocol/BackupProgram.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace helper {

using platform::Dictionary;

ProgramChoice::ProgramChoice(const std::string& path, std::string catalogFolder)
    : _catalogFolder(std::move(catalogFolder)),
      _store(path)
{
    readCatalog();
}

std::shared_ptr<const ProgramCatalog> ProgramChoice::readCatalog()
{
    auto read = std::make_shared<const ProgramCatalog>(_catalogFolder);
    const std::lock_guard guard(_lock);
    _catalog = std::move(read);
    return _catalog;
}

std::shared_ptr<const ProgramCatalog> ProgramChoice::catalog() const
{
    const std::lock_guard guard(_lock);
    return _catalog;
}

Dictionary ProgramChoice::reply()
{
    return _store.reply(*readCatalog());
}

platform::Result<void> ProgramChoice::choose(const Dictionary& choice, bool isWithoutPassword)
{
    const auto known = readCatalog();
    auto fault = ProgramFields::faultInChoice(choice, *known);
    if (!fault && isWithoutPassword)
        fault = ProgramFields::faultWithoutPassword(choice, *known);
    if (fault)
        return std::unexpected(fault->error());
    return _store.setChoice(choice);
}

std::string ProgramChoice::identifier() const
{
    const auto choice = _store.choice();
    const auto* const program = choice.stringForKey(BackupProgramKey::Program);
    return program ? *program : std::string();
}

std::optional<ProgramDescription> ProgramChoice::chosen() const
{
    const auto known = catalog();
    const auto* const program = known->program(identifier());
    return program ? std::optional(*program) : std::nullopt;
}

bool ProgramChoice::isReady() const
{
    const auto program = chosen();
    return program && BackupPlan::executable(*program) && !BackupPlan::missingFile(*program);
}

std::string ProgramChoice::name() const
{
    const auto program = chosen();
    return program ? program->name : std::string();
}

bool ProgramChoice::preventsSleep() const
{
    return _store.choice().boolForKey(BackupProgramKey::PreventSleep);
}

std::vector<std::string> ProgramChoice::folders() const
{
    std::vector<std::string> folders;
    const auto program = chosen();
    const auto choice = _store.choice();
    const auto* const fields = choice.dictionaryForKey(BackupProgramKey::Fields);
    for (const auto& field : program&& fields ? program->fields : std::vector<ProgramField>()) {
        const auto* const values = field.kind == BackupFieldKind::Folders ? fields->arrayForKey(field.key) : nullptr;
        std::ranges::move(platform::textsOf(values), std::back_inserter(folders));
    }
    return folders;
}

std::expected<platform::BackupJob, std::string> ProgramChoice::job(const std::string& identifier) const
{
    const auto program = chosen();
    if (!program)
        return std::unexpected("No backup program is chosen.");
    const auto choice = _store.choice();
    const auto* const fields = choice.dictionaryForKey(BackupProgramKey::Fields);
    return BackupPlan::job(*program, fields ? *fields : Dictionary(), identifier);
}

bool ProgramChoice::isSuccess(const std::string& program, std::optional<int> status) const
{
    const auto known = catalog();
    const auto* const description = known->program(program);
    return description ? description->isSuccess(status) : status == 0;
}

} // namespace helper
