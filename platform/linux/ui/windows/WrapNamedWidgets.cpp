#include "platform/linux/ui/windows/WrapNamedWidgets.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/Spinner.h"
#include "platform/linux/ui/entry/StepperBox.h"
#include "platform/linux/ui/entry/TextFieldNative.h"
#include "platform/linux/ui/rules/RuleEditorBox.h"
#include "platform/linux/ui/styledtext/StyledTextView.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "platform/linux/ui/windows/WrapControls.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/ProgressIndicator.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTimeEdit>

namespace platform::ui {

namespace {

std::shared_ptr<View> wrap(QWidget& widget)
{
    if (qobject_cast<QCheckBox*>(&widget))
        return wrapWidget<CheckBox, ControlNative>(&widget);
    if (qobject_cast<QPushButton*>(&widget))
        return wrapWidget<Button, ControlNative>(&widget);
    if (auto* const box = qobject_cast<QComboBox*>(&widget))
        return wrapPopUpButton(*box);
    if (qobject_cast<StepperBox*>(&widget))
        return wrapWidget<Stepper, ControlNative>(&widget);
    if (auto* const edit = qobject_cast<QTimeEdit*>(&widget))
        return wrapDatePicker(*edit);
    if (auto* const box = qobject_cast<RuleEditorBox*>(&widget))
        return wrapRuleEditor(*box);
    if (auto* const table = qobject_cast<DataTable*>(&widget))
        return wrapTableView(*table);
    if (qobject_cast<LineEdit*>(&widget) || qobject_cast<QLabel*>(&widget))
        return wrapWidget<TextField, TextFieldNative>(&widget);
    if (qobject_cast<StyledTextView*>(&widget))
        return wrapWidget<TextView>(&widget);
    if (qobject_cast<Spinner*>(&widget))
        return wrapWidget<ProgressIndicator>(&widget);
    return wrapContainer(&widget);
}

// Parents first, and never into what a control is made of.
void wrapInside(QWidget& parent, NamedViews& views)
{
    for (auto* const widget : parent.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (widget->objectName().isEmpty()) {
            wrapInside(*widget, views);
            continue;
        }
        auto view = wrap(*widget);
        const bool isControl = dynamic_cast<Control*>(view.get()) || dynamic_cast<TextView*>(view.get());
        views.emplace(widget->objectName().toStdString(), std::move(view));
        if (!isControl)
            wrapInside(*widget, views);
    }
}

} // namespace

NamedViews wrapNamedWidgets(QWidget& top)
{
    NamedViews views;
    views.emplace(top.objectName().toStdString(), wrap(top));
    wrapInside(top, views);
    return views;
}

} // namespace platform::ui
