#include "backupprogram/model/ProgramDraft.h"

#include "platform/Texts.h"
#include "protocol/BackupProgram.h"

#include <utility>

using platform::Dictionary;

namespace {

constexpr std::size_t mostEdits = 1000;

bool isEmpty(const platform::PropertyList& value)
{
    return value.string() ? value.string()->empty() : value.array() && value.array()->empty();
}

} // namespace

ProgramDraft ProgramDraft::of(const Dictionary& choice)
{
    ProgramDraft draft;
    if (const auto* const program = choice.stringForKey(BackupProgramKey::Program))
        draft.program = *program;
    if (const auto* const fields = choice.dictionaryForKey(BackupProgramKey::Fields)) {
        for (const auto& [key, value] : *fields) {
            if (!isEmpty(value))
                draft.fields.set(key, value);
        }
    }
    draft.preventsSleep = choice.boolForKey(BackupProgramKey::PreventSleep);
    return draft;
}

Dictionary ProgramDraft::dictionary() const
{
    return {{BackupProgramKey::Program, program},
            {BackupProgramKey::Fields, fields},
            {BackupProgramKey::PreventSleep, preventsSleep}};
}

Dictionary ProgramDraft::choice(const ProgramOffer& offer) const
{
    Dictionary choice{{BackupProgramKey::PreventSleep, preventsSleep}};
    if (program.empty())
        return choice;
    choice.set(BackupProgramKey::Program, program);
    Dictionary own;
    const auto* const offered = offer.program(program);
    for (const auto& [key, value] : fields) {
        if (!offered || offered->fieldOfKey(key))
            own.set(key, value);
    }
    if (!own.empty())
        choice.set(BackupProgramKey::Fields, std::move(own));
    return choice;
}

std::string ProgramDraft::text(std::string_view key) const
{
    return platform::textForKey(fields, key);
}

std::vector<std::string> ProgramDraft::texts(std::string_view key) const
{
    return platform::textsOf(fields.arrayForKey(key));
}

void ProgramDraft::setText(const std::string& key, const std::string& text)
{
    if (text.empty())
        fields.remove(key);
    else
        fields.set(key, text);
}

void ProgramDraft::setTexts(const std::string& key, const std::vector<std::string>& texts)
{
    if (texts.empty())
        fields.remove(key);
    else
        fields.set(key, platform::arrayOf(texts));
}

void DraftHistory::edit(ProgramDraft changed, std::string subject)
{
    if (changed == _draft)
        return;
    const bool goesOn = !subject.empty() && subject == _subject && canUndo();
    if (!goesOn)
        _before.push_back(_draft);
    if (_before.size() > mostEdits)
        _before.erase(_before.begin());
    _draft = std::move(changed);
    _subject = std::move(subject);
}

void DraftHistory::undo()
{
    if (!canUndo())
        return;
    _draft = std::move(_before.back());
    _before.pop_back();
    _subject.clear();
}
