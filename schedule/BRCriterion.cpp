#include "schedule/BRCriterion.h"

#include "platform/Calendar.h"
#include "platform/Localization.h"
#include "platform/ui/DatePicker.h"
#include "schedule/model/CalendarRow.h"

#include <cstdio>
#include <string_view>

using namespace platform::ui;
using platform::localizedString;

namespace {

PopUpButton::Items weekdayItems()
{
    std::vector<std::string> titles;
    for (const std::string_view title : CalendarRow::weekdayTitles)
        titles.push_back(title.empty() ? "" : localizedString(title));
    return std::make_shared<const std::vector<std::string>>(std::move(titles));
}

std::shared_ptr<View> newTimePicker()
{
    const auto picker = DatePicker::create();
    picker->setIdentifier("timePicker");
    picker->setAccessibleName(localizedString("time"));
    picker->setControlSize(ControlSize::Small);
    picker->setTimeOfDay(platform::currentTimeOfDay());
    picker->sizeToFit();
    return picker;
}

} // namespace

const std::shared_ptr<BRCriterion>& BRCriterion::child()
{
    if (!_child && _type < CriterionTypeTime)
        _child = std::make_shared<BRCriterion>(_type + 1);
    return _child;
}

RuleDisplayValue BRCriterion::displayValue()
{
    switch (_type) {
    case CriterionTypeBackUp:
        return localizedString("Back up");
    case CriterionTypeWeekday:
        return newWeekdayPopUp();
    case CriterionTypeAt:
        return localizedString("at");
    case CriterionTypeTime:
        return newTimePicker();
    default:
        return std::string();
    }
}

std::shared_ptr<View> BRCriterion::newWeekdayPopUp()
{
    if (!_weekdays)
        _weekdays = weekdayItems();
    const auto popUp = PopUpButton::create(_weekdays);
    popUp->setIdentifier("weekdayPopUp");
    popUp->setAccessibleName(localizedString("weekday"));
    popUp->setControlSize(ControlSize::Small);
    popUp->sizeToFit();
    return popUp;
}

std::string BRCriterion::description() const
{
    char text[64];
    std::snprintf(text, sizeof text, "<BRCriterion: %p, type %u>", static_cast<const void*>(this), _type);
    return text;
}
