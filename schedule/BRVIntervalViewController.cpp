#include "schedule/BRVIntervalViewController.h"

#include "platform/Localization.h"
#include "protocol/ScheduleSettings.h"
#include "schedule/BRVNumberTextField.h"

using namespace platform::ui;

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

IntervalState BRVIntervalViewController::state() const
{
    return {intervalMode(), intervalValue()};
}

platform::Dictionary BRVIntervalViewController::settings()
{
    view();
    return state().record();
}

std::int64_t BRVIntervalViewController::intervalValue() const
{
    return IntervalState::clampedCount(_intervalTextField->integerValue());
}

void BRVIntervalViewController::setIntervalValue(std::int64_t value)
{
    _intervalTextField->setIntegerValue(IntervalState::clampedCount(value));
    updateStepper();
    updateUnitsPopup();
}

IntervalUnit BRVIntervalViewController::intervalMode() const
{
    return IntervalState::unitForIndex(_unitsPopup->indexOfSelectedItem());
}

void BRVIntervalViewController::setIntervalMode(unsigned mode)
{
    if (mode < IntervalState::unitCount)
        _unitsPopup->selectItemAtIndex(static_cast<int>(mode));
    updateLabelTextField();
}

void BRVIntervalViewController::updateView()
{
    const auto* const settings = keptSettings();
    const auto shown = IntervalState::showing(settings ? IntervalSchedule::fromRecord(*settings) : IntervalSchedule());
    setIntervalMode(shown.unit);
    setIntervalValue(shown.count);
}

void BRVIntervalViewController::updateLabelTextField()
{
    _labelTextField->setStringValue(platform::localizedString(state().label()));
}

void BRVIntervalViewController::updateStepper()
{
    _stepper->setIntegerValue(intervalValue());
}

void BRVIntervalViewController::updateUnitsPopup()
{
    int index = 0;
    for (const char* title : state().unitTitles())
        _unitsPopup->setItemTitleAtIndex(index++, platform::localizedString(title));
}

void BRVIntervalViewController::changeUnitsPopup()
{
    updateLabelTextField();
    didChange();
}

void BRVIntervalViewController::changeStepper()
{
    setIntervalValue(_stepper->integerValue());
    didChange();
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
    didChange();
}

bool BRVIntervalViewController::doCommand(TextField& field, TextCommand command)
{
    if (&field != _intervalTextField.get())
        return false;
    switch (command) {
    case TextCommand::MoveUp:
        setIntervalValue(intervalValue() + 1);
        didChange();
        return true;
    case TextCommand::MoveDown:
        setIntervalValue(intervalValue() - 1);
        didChange();
        return true;
    default:
        return false;
    }
}
