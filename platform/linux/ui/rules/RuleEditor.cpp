#include "platform/ui/RuleEditor.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/rules/RuleEditorBox.h"
#include "platform/linux/ui/windows/WrapControls.h"

namespace platform::ui {

namespace {

struct RuleEditorNative : ControlNative {
    using ControlNative::ControlNative;

    std::weak_ptr<RuleEditorDelegate> delegate;
};

RuleEditorBox& boxOf(const RuleEditor& editor)
{
    return widgetOf<RuleEditorBox>(editor);
}

RuleEditorNative& nativeOf(const RuleEditor& editor)
{
    return static_cast<RuleEditorNative&>(editor.native());
}

// A row of first children; empty without a delegate.
RuleEditorBox::Row defaultRow(RuleEditor& editor, int index)
{
    RuleEditorBox::Row row;
    const auto delegate = nativeOf(editor).delegate.lock();
    std::shared_ptr<RuleCriterion> criterion;
    while (delegate && delegate->numberOfChildrenForCriterion(editor, criterion) > 0) {
        criterion = delegate->childForCriterion(editor, 0, criterion);
        row.criteria.push_back(criterion);
        row.displayValues.push_back(delegate->displayValueForCriterion(editor, criterion, index));
    }
    return row;
}

bool insertDefaultRow(RuleEditor& editor, int index)
{
    auto row = defaultRow(editor, index);
    if (row.criteria.empty())
        return false;
    boxOf(editor).insertRow(index, std::move(row));
    return true;
}

} // namespace

std::shared_ptr<RuleEditor> wrapRuleEditor(RuleEditorBox& box)
{
    return wrapWidget<RuleEditor, RuleEditorNative>(&box);
}

RuleEditor::RuleEditor(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& box = boxOf(*this);
    auto& control = nativeOf(*this);
    QObject::connect(&box, &RuleEditorBox::addPressed, control.receiver(), [this, &box, &control](int row) {
        if (!insertDefaultRow(*this, row + 1))
            return;
        box.focusRow(row + 1);
        control.sendAction();
    });
    QObject::connect(&box, &RuleEditorBox::removePressed, control.receiver(), [&box, &control](int row) {
        box.removeRow(row);
        control.sendAction();
    });
}

void RuleEditor::setDelegate(std::weak_ptr<RuleEditorDelegate> delegate)
{
    nativeOf(*this).delegate = std::move(delegate);
}

int RuleEditor::numberOfRows() const
{
    return boxOf(*this).numberOfRows();
}

void RuleEditor::addRow()
{
    insertDefaultRow(*this, numberOfRows());
}

void RuleEditor::removeAllRows()
{
    boxOf(*this).removeAllRows();
}

void RuleEditor::setCriteria(Criteria criteria, DisplayValues displayValues, int row)
{
    RuleEditorBox::Row value{std::move(criteria), std::move(displayValues)};
    if (row == numberOfRows())
        boxOf(*this).insertRow(row, std::move(value));
    else
        boxOf(*this).setRow(row, std::move(value));
}

const RuleEditor::Criteria& RuleEditor::criteriaForRow(int row) const
{
    return boxOf(*this).row(row).criteria;
}

const RuleEditor::DisplayValues& RuleEditor::displayValuesForRow(int row) const
{
    return boxOf(*this).row(row).displayValues;
}

} // namespace platform::ui
