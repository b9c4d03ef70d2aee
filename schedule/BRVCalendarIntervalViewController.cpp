#include "schedule/BRVCalendarIntervalViewController.h"

#include "platform/Calendar.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/PopUpButton.h"
#include "protocol/ScheduleSettings.h"

#include <algorithm>

using namespace platform::ui;

namespace {

constexpr int everyDayIndex = 0;
constexpr int mondayIndex = 2; // the separator is between
constexpr int sundayIndex = 8;

// The place of the two controls among a row's display values.
constexpr std::size_t weekdayColumn = CriterionTypeWeekday;
constexpr std::size_t timeColumn = CriterionTypeTime;

bool hasNumber(const platform::Dictionary& entry, const char* key)
{
    const platform::PropertyList* value = entry.find(key);
    return value && value->isNumber();
}

bool isShown(const platform::Dictionary& entry)
{
    return !hasNumber(entry, ScheduleKey::Day)
        && (hasNumber(entry, ScheduleKey::Weekday) || hasNumber(entry, ScheduleKey::Hour));
}

// A weekday for which the pop-up has no item selects none: the row is then written back as one that the scheduler
// helper refuses by its key, rather than as another day.
int popUpIndexOfEntry(const platform::Dictionary& entry)
{
    if (!hasNumber(entry, ScheduleKey::Weekday))
        return everyDayIndex;
    const std::int64_t weekday = entry.integerForKey(ScheduleKey::Weekday);
    if (weekday == 0)
        return sundayIndex;
    constexpr std::int64_t beyond = sundayIndex + 1; // held in the range of an index
    return static_cast<int>(std::clamp(weekday, -beyond, beyond)) - 1 + mondayIndex;
}

template <class T>
std::shared_ptr<T> controlAt(const RuleEditor::DisplayValues& values, std::size_t column)
{
    const auto* view = column < values.size() ? std::get_if<std::shared_ptr<View>>(&values[column]) : nullptr;
    return view ? std::dynamic_pointer_cast<T>(*view) : nullptr;
}

platform::Dictionary entryOfRow(const RuleEditor::DisplayValues& values)
{
    const auto popUp = controlAt<PopUpButton>(values, weekdayColumn);
    const auto picker = controlAt<DatePicker>(values, timeColumn);
    const int index = popUp ? popUp->indexOfSelectedItem() : everyDayIndex;
    const platform::TimeOfDay time = picker ? picker->timeOfDay() : platform::TimeOfDay();

    platform::Dictionary entry;
    if (index != everyDayIndex)
        entry.set(ScheduleKey::Weekday, index - mondayIndex + 1);
    entry.set(ScheduleKey::Hour, time.hour);
    entry.set(ScheduleKey::Minute, time.minute);
    return entry;
}

} // namespace

std::shared_ptr<BRVCalendarIntervalViewController> BRVCalendarIntervalViewController::create()
{
    return std::shared_ptr<BRVCalendarIntervalViewController>(new BRVCalendarIntervalViewController);
}

BRVCalendarIntervalViewController::BRVCalendarIntervalViewController()
    : BRVViewController(BackupsModeCalendarIntervals, "BRVCalendarIntervalViewController")
{
}

void BRVCalendarIntervalViewController::connectOutlets(const Interface& interface)
{
    _ruleEditor = interface.outlet<RuleEditor>("ruleEditor");
    _backUpASAPCheckBox = interface.outlet<CheckBox>("asapCheckBox");
    _ruleEditor->setDelegate(weak_from_this());
}

void BRVCalendarIntervalViewController::awakeFromNib()
{
    _rootItem = std::make_shared<BRCriterion>(CriterionTypeBackUp);
    updateView();
}

platform::Dictionary BRVCalendarIntervalViewController::settings() const
{
    if (!isViewLoaded() && _settings)
        return *_settings;
    const int rows = isViewLoaded() ? _ruleEditor->numberOfRows() : 0;
    platform::Array intervals;
    intervals.reserve(static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row)
        intervals.emplace_back(entryOfRow(_ruleEditor->displayValuesForRow(row)));
    const bool asap = isViewLoaded() && _backUpASAPCheckBox->isOn();
    return {{ScheduleKey::Intervals, std::move(intervals)}, {ScheduleKey::ASAP, asap}};
}

void BRVCalendarIntervalViewController::setSettings(const platform::Dictionary* settings)
{
    _settings = settings ? std::optional(*settings) : std::nullopt;
    if (isViewLoaded())
        updateView();
}

void BRVCalendarIntervalViewController::updateView()
{
    _ruleEditor->removeAllRows();
    if (const platform::Array* intervals = _settings ? _settings->arrayForKey(ScheduleKey::Intervals) : nullptr) {
        for (const platform::PropertyList& interval : *intervals) {
            const platform::Dictionary* entry = interval.dictionary();
            if (entry && isShown(*entry))
                appendRowForEntry(*entry);
        }
    }
    if (_ruleEditor->numberOfRows() == 0)
        _ruleEditor->addRow();
    _backUpASAPCheckBox->setOn(_settings && _settings->boolForKey(ScheduleKey::ASAP));
}

void BRVCalendarIntervalViewController::appendRowForEntry(const platform::Dictionary& entry)
{
    RuleEditor::Criteria criteria;
    RuleEditor::DisplayValues values;
    for (auto criterion = _rootItem; criterion; criterion = criterion->child()) {
        criteria.push_back(criterion);
        values.push_back(criterion->displayValue());
    }
    controlAt<PopUpButton>(values, weekdayColumn)->selectItemAtIndex(popUpIndexOfEntry(entry));
    const auto time = platform::timeOfDayFromComponents(entry.integerForKey(ScheduleKey::Hour),
                                                        entry.integerForKey(ScheduleKey::Minute));
    if (time)
        controlAt<DatePicker>(values, timeColumn)->setTimeOfDay(*time);
    _ruleEditor->setCriteria(std::move(criteria), std::move(values), _ruleEditor->numberOfRows());
}

int BRVCalendarIntervalViewController::numberOfChildrenForCriterion(RuleEditor&,
                                                                    const std::shared_ptr<RuleCriterion>& criterion)
{
    if (!criterion)
        return 1;
    return std::static_pointer_cast<BRCriterion>(criterion)->child() ? 1 : 0;
}

std::shared_ptr<RuleCriterion>
BRVCalendarIntervalViewController::childForCriterion(RuleEditor&, int, const std::shared_ptr<RuleCriterion>& criterion)
{
    if (!criterion)
        return _rootItem;
    return std::static_pointer_cast<BRCriterion>(criterion)->child();
}

RuleDisplayValue
BRVCalendarIntervalViewController::displayValueForCriterion(RuleEditor&,
                                                            const std::shared_ptr<RuleCriterion>& criterion, int)
{
    return std::static_pointer_cast<BRCriterion>(criterion)->displayValue();
}
