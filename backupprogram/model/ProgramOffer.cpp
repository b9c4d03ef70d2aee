#include "backupprogram/model/ProgramOffer.h"

#include "platform/Texts.h"
#include "protocol/BackupProgram.h"

#include <algorithm>
#include <cctype>
#include <functional>

using platform::Dictionary;
using platform::textForKey;

namespace {

std::vector<OfferedField> fieldsOf(const Dictionary& told)
{
    std::vector<OfferedField> fields;
    const auto* const list = told.arrayForKey(BackupProgramKey::FieldList);
    for (const auto& each : list ? *list : platform::Array()) {
        if (const auto* const field = each.dictionary())
            fields.push_back({textForKey(*field, BackupProgramKey::Key), textForKey(*field, BackupProgramKey::Kind),
                              field->boolForKey(BackupProgramKey::Required)});
    }
    return fields;
}

OfferedProgram programOf(const Dictionary& told)
{
    return {.identifier = textForKey(told, BackupProgramKey::Program),
            .name = textForKey(told, BackupProgramKey::Name),
            .package = textForKey(told, BackupProgramKey::Package),
            .install = textForKey(told, BackupProgramKey::Install),
            .missing = textForKey(told, BackupProgramKey::Missing),
            .place = textForKey(told, BackupProgramKey::Place),
            .restore = textForKey(told, BackupProgramKey::Restore),
            .isInstalled = told.boolForKey(BackupProgramKey::Installed),
            .fields = fieldsOf(told)};
}

// In single quotes where a shell would take it for more than a word.
std::string quoted(const std::string& text)
{
    const auto isPlain = [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0
            || std::string_view("/._-+:@%,").find(character) != std::string_view::npos;
    };
    if (!text.empty() && std::ranges::all_of(text, isPlain))
        return text;
    std::string result = "'";
    for (const char character : text)
        result += character == '\'' ? "'\\''" : std::string(1, character);
    return result + "'";
}

std::string inCapitals(std::string_view key)
{
    std::string text(key);
    std::ranges::transform(text, text.begin(), [](unsigned char character) { return std::toupper(character); });
    return text;
}

using Writing = std::function<std::string(const std::string&)>;

// A field of several values is no part of a text.
std::string filledIn(std::string_view text, const Dictionary& fields, const Writing& write)
{
    std::string filled;
    for (auto open = text.find('{'); open != std::string_view::npos; open = text.find('{')) {
        const auto close = text.find('}', open);
        if (close == std::string_view::npos)
            break;
        const auto key = text.substr(open + 1, close - open - 1);
        const auto* const value = fields.stringForKey(key);
        filled += text.substr(0, open);
        filled += value && !value->empty() ? write(*value) : inCapitals(key);
        text.remove_prefix(close + 1);
    }
    return filled + std::string(text);
}

} // namespace

const OfferedField* OfferedProgram::fieldOfKind(std::string_view kind) const
{
    const auto found = std::ranges::find(fields, kind, &OfferedField::kind);
    return found == fields.end() ? nullptr : &*found;
}

const OfferedField* OfferedProgram::fieldOfKey(std::string_view key) const
{
    const auto found = std::ranges::find(fields, key, &OfferedField::key);
    return found == fields.end() ? nullptr : &*found;
}

ProgramOffer ProgramOffer::inReply(const Dictionary& reply)
{
    ProgramOffer offer;
    const auto* const list = reply.arrayForKey(BackupProgramKey::Programs);
    for (const auto& each : list ? *list : platform::Array()) {
        if (const auto* const told = each.dictionary(); told && !textForKey(*told, BackupProgramKey::Program).empty())
            offer.programs.push_back(programOf(*told));
    }
    std::ranges::stable_partition(offer.programs, &OfferedProgram::isInstalled);
    for (const auto* const key :
         {BackupProgramKey::Program, BackupProgramKey::Fields, BackupProgramKey::PreventSleep}) {
        if (const auto* const value = reply.find(key))
            offer.chosen.set(key, *value);
    }
    return offer;
}

const OfferedProgram* ProgramOffer::program(std::string_view identifier) const
{
    const auto found = std::ranges::find(programs, identifier, &OfferedProgram::identifier);
    return found == programs.end() ? nullptr : &*found;
}

bool ProgramOffer::hasInstalledPackage() const
{
    return std::ranges::any_of(programs, [](const auto& each) { return each.isInstalled && !each.package.empty(); });
}

bool ProgramOffer::hasChoice() const
{
    return !textForKey(chosen, BackupProgramKey::Program).empty();
}

std::string withFields(std::string_view text, const Dictionary& fields)
{
    return filledIn(text, fields, [](const std::string& value) { return value; });
}

std::string commandWithFields(std::string_view text, const Dictionary& fields)
{
    return filledIn(text, fields, quoted);
}
