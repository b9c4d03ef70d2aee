#include "helper/linux/programs/ProgramFields.h"

#include "helper/linux/programs/SystemUnit.h"
#include "helper/linux/programs/TrustedPath.h"
#include "protocol/BackupProgram.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;

namespace {

namespace Expectation = BackupFieldExpectation;

using FieldFault = std::optional<SettingsFault>;

constexpr std::size_t maximumTextSize = 4096;
constexpr std::size_t maximumTexts = 1000;

FieldFault wrong(const std::string& key, const std::string& expected)
{
    return SettingsFault{BRVErrorWrongType, key, expected, {}};
}

bool isControl(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

// Braces are where fields are put in, here and in some of the programs.
bool isPlainText(std::string_view text)
{
    return !text.empty() && text.size() <= maximumTextSize && text.find_first_of("{}") == std::string_view::npos
        && std::ranges::none_of(text, isControl);
}

bool isPlainPath(std::string_view path)
{
    if (!isPlainText(path) || !path.starts_with('/'))
        return false;
    while (!path.empty()) {
        path.remove_prefix(1);
        const auto part = path.substr(0, path.find('/'));
        if (part == "." || part == ".." || (part.empty() && !path.empty()))
            return false;
        path.remove_prefix(part.size());
    }
    return true;
}

bool isIn(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// Where a file of any name may be run, read as a setting or taken for a device.
bool isOfSystem(std::string_view path)
{
    constexpr std::array folders{"/bin",       "/boot",         "/dev",       "/etc",     "/lib",
                                 "/lib32",     "/lib64",        "/libx32",    "/proc",    "/sbin",
                                 "/sys",       "/usr",          "/var/lib",   "/var/run", "/run",
                                 "/root/.ssh", "/root/.config", "/var/spool", "/var/log", "/opt/brevane"};
    if (path == "/" || path.empty() || path == "/root" || path == "/home" || path == "/var")
        return true;
    return !isIn(path, "/run/media") && !isIn(path, "/run/mount")
        && std::ranges::any_of(folders, [&](std::string_view folder) { return isIn(path, folder); });
}

FieldFault folder(const std::string& key, const PropertyList& value)
{
    return value.string() && isPlainPath(*value.string()) ? FieldFault() : wrong(key, Expectation::Folder);
}

FieldFault destination(const std::string& key, const PropertyList& value)
{
    if (auto fault = folder(key, value))
        return fault;
    const auto& path = *value.string();
    // Two colons come before an archive's name.
    if (path.find("::") != std::string::npos || path.ends_with('/') || isOfSystem(path)
        || isOfSystem(resolvedPath(path)))
        return wrong(key, Expectation::ForBackups);
    const auto trust = trustOfPath(path);
    if (trust.untrusted)
        return SettingsFault{BRVErrorWrongType, key, Expectation::OfAdministrator, *trust.untrusted};
    return trust.disk && trust.disk->empty() ? wrong(key, Expectation::OnMountedDisk) : std::nullopt;
}

FieldFault secretFile(const std::string& key, const PropertyList& value)
{
    if (auto fault = folder(key, value))
        return fault;
    struct stat status{};
    const auto& path = *value.string();
    const bool isPrivate = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid()
        && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
    return isPrivate && !untrustedPart(path) ? FieldFault() : wrong(key, Expectation::Secret);
}

FieldFault word(const std::string& key, const PropertyList& value)
{
    const auto isAllowed = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
            || (character >= '0' && character <= '9') || character == '-' || character == '_';
    };
    const auto* const text = value.string();
    const bool isWord = text && !text->empty() && text->size() <= 64 && !text->starts_with('-')
        && std::ranges::all_of(*text, isAllowed);
    return isWord ? FieldFault() : wrong(key, Expectation::Word);
}

FieldFault texts(const std::string& key, const PropertyList& value, bool areFolders)
{
    const auto* const array = value.array();
    const std::string expected = areFolders ? Expectation::Folders : Expectation::Patterns;
    if (!array || array->size() > maximumTexts || (areFolders && array->empty()))
        return wrong(key, expected);
    for (const auto& each : *array) {
        if (!each.string() || !(areFolders ? isPlainPath(*each.string()) : isPlainText(*each.string())))
            return wrong(key, expected);
    }
    return std::nullopt;
}

FieldFault unit(const std::string& key, const PropertyList& value)
{
    return value.string() && isBackupUnitName(*value.string()) ? FieldFault() : wrong(key, Expectation::Unit);
}

FieldFault faultInField(const ProgramField& field, const PropertyList& value)
{
    const std::string_view kind = field.kind;
    if (kind == BackupFieldKind::Folders)
        return texts(field.key, value, true);
    if (kind == BackupFieldKind::Patterns)
        return texts(field.key, value, false);
    if (kind == BackupFieldKind::Destination)
        return destination(field.key, value);
    if (kind == BackupFieldKind::SecretFile)
        return secretFile(field.key, value);
    return kind == BackupFieldKind::Unit ? unit(field.key, value) : word(field.key, value);
}

} // namespace

FieldFault ProgramFields::faultInFields(const Dictionary& fields, const ProgramDescription& program)
{
    for (const auto& [key, value] : fields) {
        const auto* const field = program.field(key);
        if (!field)
            return SettingsFault{BRVErrorUnknownKey, key, {}};
        if (auto fault = faultInField(*field, value))
            return fault;
    }
    for (const auto& field : program.fields) {
        if (field.isRequired && !fields.contains(field.key))
            return SettingsFault{BRVErrorMissingValue, field.key, {}};
    }
    return std::nullopt;
}

std::vector<std::string> ProgramFields::disks(const Dictionary& fields, const ProgramDescription& program)
{
    std::vector<std::string> disks;
    for (const auto& field : program.fields) {
        const auto* const path = fields.stringForKey(field.key);
        if (!path || field.kind != BackupFieldKind::Destination)
            continue;
        if (const auto disk = trustOfPath(*path).disk; disk && !disk->empty())
            disks.push_back(*disk);
    }
    return disks;
}

FieldFault ProgramFields::faultWithoutPassword(const Dictionary& choice, const ProgramCatalog& catalog)
{
    const auto* const identifier = choice.stringForKey(BackupProgramKey::Program);
    const auto* const fields = choice.dictionaryForKey(BackupProgramKey::Fields);
    const auto* const program = identifier && fields ? catalog.program(*identifier) : nullptr;
    if (!program || disks(*fields, *program).empty())
        return std::nullopt;
    const auto found = std::ranges::find(program->fields, BackupFieldKind::Destination, &ProgramField::kind);
    return wrong(found->key, Expectation::WithPassword);
}

FieldFault ProgramFields::faultInChoice(const Dictionary& choice, const ProgramCatalog& catalog)
{
    for (const auto& [key, value] : choice) {
        if (key != BackupProgramKey::Program && key != BackupProgramKey::Fields
            && key != BackupProgramKey::PreventSleep)
            return SettingsFault{BRVErrorUnknownKey, key, {}};
        if (key == BackupProgramKey::PreventSleep && !(value.isNumber() && (value == false || value == true)))
            return wrong(key, "boolean");
    }
    const auto* const chosen = choice.find(BackupProgramKey::Program);
    const auto* const fields = choice.find(BackupProgramKey::Fields);
    if (!chosen)
        return fields ? FieldFault(SettingsFault{BRVErrorMissingValue, BackupProgramKey::Program, {}}) : std::nullopt;
    const auto* const program = chosen->string() ? catalog.program(*chosen->string()) : nullptr;
    if (!program)
        return wrong(BackupProgramKey::Program, "backup program of the installation");
    if (fields && !fields->dictionary())
        return wrong(BackupProgramKey::Fields, "dictionary");
    return faultInFields(fields ? *fields->dictionary() : Dictionary(), *program);
}

} // namespace helper
