#include "tests/shell/support/RowsUser.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/rules/RuleEditorBox.h"
#include "platform/linux/ui/rules/RuleRow.h"

#include <algorithm>
#include <QApplication>
#include <QScrollBar>
#include <QTest>
#include <stdexcept>

using namespace platform::ui;

namespace {

RuleEditorBox& box()
{
    for (auto* const window : QApplication::topLevelWidgets()) {
        auto* const found = window->isVisible() ? window->findChild<RuleEditorBox*>() : nullptr;
        if (found && found->isVisible())
            return *found;
    }
    throw std::logic_error("There is no list of rows to be seen");
}

QWidget& part(int row, std::string_view identifier)
{
    auto& list = box();
    auto& bar = *list.verticalScrollBar();
    user::runEvents();
    if (row < bar.value() || row >= bar.value() + bar.pageStep())
        bar.setValue(row);
    QList<RuleRow*> inSight;
    for (auto* const live : list.viewport()->findChildren<RuleRow*>()) {
        if (live->isVisible())
            inSight += live;
    }
    std::ranges::sort(inSight, {}, [](const QWidget* live) { return live->y(); });
    const auto name = QString::fromUtf8(identifier.data(), static_cast<qsizetype>(identifier.size()));
    auto* const found = inSight.at(row - bar.value())->findChild<QWidget*>(name);
    if (!found || !found->isVisible())
        throw std::logic_error("The row has no such part to be seen: " + std::string(identifier));
    return *found;
}

void click(int row, std::string_view button)
{
    auto& widget = part(row, button);
    if (!widget.isEnabled())
        throw std::logic_error("The button is disabled: " + std::string(button));
    QTest::mouseClick(&widget, Qt::LeftButton);
    user::runEvents();
}

} // namespace

std::shared_ptr<RuleEditor> RowsUser::ruleEditor() const
{
    return std::dynamic_pointer_cast<RuleEditor>(viewForWidget(&box()));
}

std::shared_ptr<View> RowsUser::control(int row, std::string_view identifier) const
{
    return viewForWidget(&part(row, identifier));
}

int RowsUser::count() const
{
    return ruleEditor()->numberOfRows();
}

int RowsUser::weekday(int row) const
{
    return dynamic_cast<PopUpButton&>(*control(row, "weekdayPopUp")).indexOfSelectedItem();
}

platform::TimeOfDay RowsUser::time(int row) const
{
    return dynamic_cast<DatePicker&>(*control(row, "timePicker")).timeOfDay();
}

void RowsUser::chooseWeekday(int row, int index)
{
    user::choose(dynamic_cast<PopUpButton&>(*control(row, "weekdayPopUp")), index);
}

void RowsUser::pickTime(int row, platform::TimeOfDay time)
{
    user::pick(dynamic_cast<DatePicker&>(*control(row, "timePicker")), time);
}

void RowsUser::setTime(int row, platform::TimeOfDay time)
{
    dynamic_cast<DatePicker&>(*control(row, "timePicker")).setTimeOfDay(time);
}

void RowsUser::add(int row)
{
    click(row, "addRowButton");
}

void RowsUser::remove(int row)
{
    click(row, "removeRowButton");
}

bool RowsUser::canRemove(int row) const
{
    return part(row, "removeRowButton").isEnabled();
}
