#include "platform/linux/ui/entry/TextEdit.h"

#include <algorithm>

namespace platform::ui {

namespace {

// Of `after`, what stands where `place` was in `before`.
TextEdit editAt(const TextEdit::Place& place, const QString& before, const QString& after)
{
    const auto growth = after.size() - before.size();
    return {place.location, place.length, after.mid(place.location, std::max<qsizetype>(place.length + growth, 0))};
}

bool leads(const TextEdit& edit, const QString& before, const QString& after)
{
    return edit.location + edit.length <= before.size()
        && QString(before).replace(edit.location, edit.length, edit.replacement) == after;
}

TextEdit::Place smallestPlace(const QString& before, const QString& after)
{
    const auto shorter = std::min(before.size(), after.size());
    qsizetype prefix = 0;
    while (prefix < shorter && after[prefix] == before[prefix])
        ++prefix;
    if (prefix > 0 && before[prefix - 1].isHighSurrogate())
        --prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix && after[after.size() - 1 - suffix] == before[before.size() - 1 - suffix])
        ++suffix;
    if (suffix > 0 && before[before.size() - suffix].isLowSurrogate())
        --suffix;
    return {prefix, before.size() - suffix - prefix};
}

} // namespace

TextEdit TextEdit::between(const QString& before, const QString& after, std::span<const Place> places)
{
    for (const auto& place : places) {
        auto edit = editAt(place, before, after);
        if (leads(edit, before, after))
            return edit;
    }
    return editAt(smallestPlace(before, after), before, after);
}

} // namespace platform::ui
