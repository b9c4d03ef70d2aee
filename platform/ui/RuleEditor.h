#pragma once

#include "platform/ui/Control.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace platform::ui {

// One link in the chain of choices that makes up a row. Its meaning is the delegate's.
class RuleCriterion {
public:
    virtual ~RuleCriterion() = default;
};

// What a criterion shows in a row: a text, or a control made for that row alone.
using RuleDisplayValue = std::variant<std::string, std::shared_ptr<View>>;

class RuleEditor;

class RuleEditorDelegate {
public:
    virtual ~RuleEditorDelegate() = default;
    // A null criterion stands for the start of a row.
    virtual int numberOfChildrenForCriterion(RuleEditor& editor, const std::shared_ptr<RuleCriterion>& criterion) = 0;
    virtual std::shared_ptr<RuleCriterion> childForCriterion(RuleEditor& editor, int index,
                                                             const std::shared_ptr<RuleCriterion>& criterion) = 0;
    virtual RuleDisplayValue displayValueForCriterion(RuleEditor& editor,
                                                      const std::shared_ptr<RuleCriterion>& criterion, int row) = 0;
};

// A list of rows of one height, each a chain of criteria, with buttons to add a row below and to remove the row. Rows
// count from 0. The action runs when the user added or removed one; the last one cannot be removed by the user.
class RuleEditor : public Control {
public:
    using Criteria = std::vector<std::shared_ptr<RuleCriterion>>;
    using DisplayValues = std::vector<RuleDisplayValue>;

    explicit RuleEditor(std::unique_ptr<Native> native);

    // Held weakly.
    void setDelegate(std::weak_ptr<RuleEditorDelegate> delegate);

    int numberOfRows() const;
    // Appends a row that follows the delegate's first children to the end of the chain. Nothing without a delegate.
    void addRow();
    void removeAllRows();

    // Replaces what a row is made of; both lists have the same length. `row` may be numberOfRows(), which appends.
    void setCriteria(Criteria criteria, DisplayValues displayValues, int row);
    const Criteria& criteriaForRow(int row) const;
    const DisplayValues& displayValuesForRow(int row) const;
};

} // namespace platform::ui
