#include "helper/programs/ProgramDescription.h"

#include "protocol/BackupProgram.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace helper {

using platform::Dictionary;

namespace {

std::string textForKey(const Dictionary& content, std::string_view key)
{
    const auto* const text = content.stringForKey(key);
    return text ? *text : std::string();
}

std::vector<std::string> textsForKey(const Dictionary& content, std::string_view key)
{
    std::vector<std::string> texts;
    const auto* const array = content.arrayForKey(key);
    for (const auto& each : array ? *array : platform::Array()) {
        if (const auto* const text = each.string())
            texts.push_back(*text);
    }
    return texts;
}

bool isKind(std::string_view text)
{
    constexpr std::array kinds{BackupFieldKind::Folders,    BackupFieldKind::Destination, BackupFieldKind::Patterns,
                               BackupFieldKind::SecretFile, BackupFieldKind::Word,        BackupFieldKind::Unit};
    return std::ranges::any_of(kinds, [&](const char* kind) { return text == kind; });
}

std::vector<ProgramField> fieldsOf(const Dictionary& content)
{
    std::vector<ProgramField> fields;
    const auto* const array = content.arrayForKey("Fields");
    for (const auto& each : array ? *array : platform::Array()) {
        if (const auto* const field = each.dictionary())
            fields.push_back({textForKey(*field, BackupProgramKey::Key), textForKey(*field, BackupProgramKey::Kind),
                              field->boolForKey(BackupProgramKey::Required)});
    }
    return fields;
}

} // namespace

const ProgramField* ProgramDescription::field(std::string_view key) const
{
    const auto found = std::ranges::find(fields, key, &ProgramField::key);
    return found == fields.end() ? nullptr : &*found;
}

bool ProgramDescription::isSuccess(std::optional<int> status) const
{
    return status && (*status == 0 || std::ranges::find(warnings, *status) != warnings.end());
}

std::optional<ProgramDescription> ProgramDescription::inDictionary(const std::string& identifier,
                                                                   const Dictionary& content)
{
    ProgramDescription program{.identifier = identifier,
                               .name = textForKey(content, "Name"),
                               .isRecommended = content.boolForKey("Recommended"),
                               .package = textForKey(content, "Package"),
                               .executables = textsForKey(content, "Executables"),
                               .arguments = textsForKey(content, "Arguments"),
                               .environment = textsForKey(content, "Environment"),
                               .needs = textsForKey(content, "Needs"),
                               .preparedPath = textForKey(content, "PreparedPath"),
                               .preparation = textsForKey(content, "Preparation"),
                               .warnings = {},
                               .fields = fieldsOf(content),
                               .place = textForKey(content, BackupProgramKey::Place),
                               .restore = textForKey(content, BackupProgramKey::Restore)};
    const auto* const warnings = content.arrayForKey("Warnings");
    for (const auto& each : warnings ? *warnings : platform::Array())
        program.warnings.push_back(static_cast<int>(each.integerValue()));
    const bool isAbsolute =
        std::ranges::all_of(program.executables, [](const auto& path) { return path.starts_with('/'); });
    const bool hasFields =
        std::ranges::all_of(program.fields, [](const auto& field) { return !field.key.empty() && isKind(field.kind); });
    if (program.name.empty() || program.executables.empty() || !isAbsolute || !hasFields)
        return std::nullopt;
    return program;
}

} // namespace helper
