#include "helper/linux/programs/ProgramDescription.h"

#include "platform/Texts.h"
#include "protocol/BackupProgram.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace helper {

using platform::Dictionary;
using platform::textForKey;

namespace {

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
                               .executables = textsOf(content.arrayForKey("Executables")),
                               .arguments = textsOf(content.arrayForKey("Arguments")),
                               .environment = textsOf(content.arrayForKey("Environment")),
                               .needs = textsOf(content.arrayForKey("Needs")),
                               .preparedPath = textForKey(content, "PreparedPath"),
                               .preparation = textsOf(content.arrayForKey("Preparation")),
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
