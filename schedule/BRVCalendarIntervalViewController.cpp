#include "schedule/BRVCalendarIntervalViewController.h"

#include "platform/Calendar.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/PopUpButton.h"
#include "protocol/ScheduleSettings.h"

using namespace platform::ui;

namespace {

// The place of the two controls among a row's display values.
constexpr std::size_t weekdayColumn = CriterionTypeWeekday;
constexpr std::size_t timeColumn = CriterionTypeTime;

template <class T>
std::shared_ptr<T> controlAt(const RuleEditor::DisplayValues& values, std::size_t column)
{
    const auto* view = column < values.size() ? std::get_if<std::shared_ptr<View>>(&values[column]) : nullptr;
    return view ? std::dynamic_pointer_cast<T>(*view) : nullptr;
}

CalendarRow rowOfControls(const RuleEditor::DisplayValues& values)
{
    CalendarRow row;
    if (const auto popUp = controlAt<PopUpButton>(values, weekdayColumn))
        row.weekdayIndex = popUp->indexOfSelectedItem();
    if (const auto picker = controlAt<DatePicker>(values, timeColumn))
        row.time = picker->timeOfDay();
    return row;
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
    _noteTextField = interface.outlet<TextField>("tooManyTimesLabel");
    _ruleEditor->setDelegate(weak_from_this());
    _ruleEditor->setAction([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->changeRows();
    });
    _backUpASAPCheckBox->setAction([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->didChange();
    });
}

void BRVCalendarIntervalViewController::awakeFromNib()
{
    _rootItem = std::make_shared<BRCriterion>(CriterionTypeBackUp);
    updateView();
}

CalendarState BRVCalendarIntervalViewController::state() const
{
    CalendarState state{.rows = {}, .asap = _backUpASAPCheckBox->isOn()};
    const int rows = _ruleEditor->numberOfRows();
    state.rows.reserve(static_cast<std::size_t>(rows));
    for (int row = 0; row < rows; ++row)
        state.rows.push_back(rowOfControls(_ruleEditor->displayValuesForRow(row)));
    return state;
}

platform::Dictionary BRVCalendarIntervalViewController::settings()
{
    view();
    return state().record();
}

void BRVCalendarIntervalViewController::updateView()
{
    const auto shown = CalendarState::showing(keptSettings(), platform::currentTimeOfDay());
    _ruleEditor->removeAllRows();
    for (const CalendarRow& row : shown.rows)
        appendRow(row);
    _backUpASAPCheckBox->setOn(shown.asap);
    _noteTextField->setHidden(!shown.hasMore);
}

void BRVCalendarIntervalViewController::appendRow(const CalendarRow& row)
{
    RuleEditor::Criteria criteria;
    RuleEditor::DisplayValues values;
    for (auto criterion = _rootItem; criterion; criterion = criterion->child()) {
        criteria.push_back(criterion);
        values.push_back(newDisplayValue(*criterion));
    }
    controlAt<PopUpButton>(values, weekdayColumn)->selectItemAtIndex(row.weekdayIndex);
    controlAt<DatePicker>(values, timeColumn)->setTimeOfDay(row.time);
    _ruleEditor->setCriteria(std::move(criteria), std::move(values), _ruleEditor->numberOfRows());
}

// A control in it tells of its changes.
RuleDisplayValue BRVCalendarIntervalViewController::newDisplayValue(BRCriterion& criterion)
{
    auto value = criterion.displayValue();
    const auto* const view = std::get_if<std::shared_ptr<View>>(&value);
    if (const auto control = view ? std::dynamic_pointer_cast<Control>(*view) : nullptr) {
        control->setAction([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->didChange();
        });
    }
    return value;
}

void BRVCalendarIntervalViewController::changeRows()
{
    didChange();
    _noteTextField->setHidden(!CalendarState::isTooMany(static_cast<std::size_t>(_ruleEditor->numberOfRows())));
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
    return newDisplayValue(static_cast<BRCriterion&>(*criterion));
}
