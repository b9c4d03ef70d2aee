#include "schedule/BRVIntervalViewController.h"

#include "platform/Localization.h"
#include "protocol/ScheduleRanges.h"
#include "protocol/ScheduleSettings.h"
#include "schedule/BRVNumberTextField.h"

#include <array>

using namespace platform::ui;

namespace {

struct Unit {
    const char* key; // in the sub-record
    const char* label;
    const char* singular;
    const char* plural;
};

// By IntervalUnit. Each unit has a label of its own, so that translations can agree with it.
constexpr std::array<Unit, 4> units{{
    {ScheduleKey::Minutes, "Back up every-minutes", "minute", "minutes"},
    {ScheduleKey::Hours, "Back up every-hours", "hour", "hours"},
    {ScheduleKey::Days, "Back up every-days", "day", "days"},
    {ScheduleKey::Weeks, "Back up every-weeks", "week", "weeks"},
}};

platform::Dictionary intervalSettings(IntervalUnit unit, std::int64_t count)
{
    if (unit == IntervalUnitMinutes && count % 60 == 0)
        return {{ScheduleKey::Hours, count / 60}};
    if (unit == IntervalUnitHours && count % 24 == 0)
        return {{ScheduleKey::Days, count / 24}};
    return {{units[unit].key, count}};
}

std::int64_t clampedCount(std::int64_t value)
{
    return ScheduleRanges::intervalCount.clamp(value);
}

} // namespace

std::shared_ptr<BRVIntervalViewController> BRVIntervalViewController::create()
{
    return std::shared_ptr<BRVIntervalViewController>(new BRVIntervalViewController);
}

BRVIntervalViewController::BRVIntervalViewController()
    : BRVViewController(BackupsModeInterval, "BRVIntervalViewController")
{
}

void BRVIntervalViewController::connectOutlets(const Interface& interface)
{
    _labelTextField = interface.outlet<TextField>("intervalLabel");
    _intervalTextField = interface.outlet<TextField>("intervalField");
    _stepper = interface.outlet<Stepper>("intervalStepper");
    _unitsPopup = interface.outlet<PopUpButton>("intervalUnitsPopUp");

    const std::weak_ptr<BRVIntervalViewController> weak = weak_from_this();
    _intervalTextField->setDelegate(weak);
    _stepper->setAction([weak] {
        if (const auto self = weak.lock())
            self->changeStepper();
    });
    _unitsPopup->setAction([weak] {
        if (const auto self = weak.lock())
            self->changeUnitsPopup();
    });
}

void BRVIntervalViewController::awakeFromNib()
{
    updateView();
}

platform::Dictionary BRVIntervalViewController::settings() const
{
    if (!isViewLoaded())
        return _settings.value_or(intervalSettings(IntervalUnitMinutes, clampedCount(0)));
    return intervalSettings(intervalMode(), intervalValue());
}

void BRVIntervalViewController::setSettings(const platform::Dictionary* settings)
{
    _settings = settings ? std::optional(*settings) : std::nullopt;
    if (isViewLoaded())
        updateView();
}

std::int64_t BRVIntervalViewController::intervalValue() const
{
    return clampedCount(_intervalTextField->integerValue());
}

void BRVIntervalViewController::setIntervalValue(std::int64_t value)
{
    _intervalTextField->setIntegerValue(clampedCount(value));
    updateStepper();
    updateUnitsPopup();
}

IntervalUnit BRVIntervalViewController::intervalMode() const
{
    const int index = _unitsPopup->indexOfSelectedItem();
    return index >= 1 && index <= 3 ? static_cast<IntervalUnit>(index) : IntervalUnitMinutes;
}

void BRVIntervalViewController::setIntervalMode(unsigned mode)
{
    if (mode < units.size())
        _unitsPopup->selectItemAtIndex(static_cast<int>(mode));
    updateLabelTextField();
}

void BRVIntervalViewController::updateView()
{
    const platform::Dictionary settings = _settings.value_or(platform::Dictionary());
    const auto interval = IntervalSchedule::fromRecord(settings);
    setIntervalMode(interval.unit);
    setIntervalValue(interval.count);
}

void BRVIntervalViewController::updateLabelTextField()
{
    _labelTextField->setStringValue(platform::localizedString(units[intervalMode()].label));
}

void BRVIntervalViewController::updateStepper()
{
    _stepper->setIntegerValue(intervalValue());
}

void BRVIntervalViewController::updateUnitsPopup()
{
    const bool singular = intervalValue() < 2;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char* title = singular ? units[i].singular : units[i].plural;
        _unitsPopup->setItemTitleAtIndex(static_cast<int>(i), platform::localizedString(title));
    }
}

void BRVIntervalViewController::changeUnitsPopup()
{
    updateLabelTextField();
}

void BRVIntervalViewController::changeStepper()
{
    setIntervalValue(_stepper->integerValue());
}

bool BRVIntervalViewController::shouldChangeText(TextField& field, TextRange range, std::string_view replacement)
{
    return BRVNumberTextField::shouldChangeText(field.length(), range, replacement);
}

void BRVIntervalViewController::controlTextDidChange(TextField&)
{
    // The field's own text is left alone while the user types in it.
    updateStepper();
    updateUnitsPopup();
}

bool BRVIntervalViewController::doCommand(TextField& field, TextCommand command)
{
    if (&field != _intervalTextField.get())
        return false;
    switch (command) {
    case TextCommand::MoveUp:
        setIntervalValue(intervalValue() + 1);
        return true;
    case TextCommand::MoveDown:
        setIntervalValue(intervalValue() - 1);
        return true;
    default:
        return false;
    }
}
