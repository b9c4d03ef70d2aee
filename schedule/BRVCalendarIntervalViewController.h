#pragma once

#include "platform/ui/CheckBox.h"
#include "platform/ui/RuleEditor.h"
#include "platform/ui/TextField.h"
#include "schedule/BRCriterion.h"
#include "schedule/BRVViewController.h"
#include "schedule/model/CalendarState.h"

#include <memory>

// The editor of times of day: a row for each, on every day or on one weekday, and whether a missed backup is caught up
// as soon as possible.
class BRVCalendarIntervalViewController : public BRVViewController,
                                          public platform::ui::RuleEditorDelegate,
                                          public std::enable_shared_from_this<BRVCalendarIntervalViewController> {
public:
    static std::shared_ptr<BRVCalendarIntervalViewController> create();

    platform::Dictionary settings() override;

    // Rebuilds the rows from the sub-record; edits are lost. Needs a loaded view.
    void updateView() override;

    int numberOfChildrenForCriterion(platform::ui::RuleEditor& editor,
                                     const std::shared_ptr<platform::ui::RuleCriterion>& criterion) override;
    std::shared_ptr<platform::ui::RuleCriterion>
    childForCriterion(platform::ui::RuleEditor& editor, int index,
                      const std::shared_ptr<platform::ui::RuleCriterion>& criterion) override;
    platform::ui::RuleDisplayValue
    displayValueForCriterion(platform::ui::RuleEditor& editor,
                             const std::shared_ptr<platform::ui::RuleCriterion>& criterion, int row) override;

protected:
    void connectOutlets(const platform::ui::Interface& interface) override;
    void awakeFromNib() override;

private:
    BRVCalendarIntervalViewController();
    void appendRow(const CalendarRow& row);
    CalendarState state() const;
    void changeRows();
    platform::ui::RuleDisplayValue newDisplayValue(BRCriterion& criterion);

    std::shared_ptr<platform::ui::RuleEditor> _ruleEditor;
    std::shared_ptr<platform::ui::CheckBox> _backUpASAPCheckBox;
    std::shared_ptr<platform::ui::TextField> _noteTextField; // more times than a schedule can hold
    std::shared_ptr<BRCriterion> _rootItem;
};
